// A status frame: the module's version, its checks and levels, and the confirmation of the
// settings it echoes.
#include "app/form1.h"
#include "language/messages.h"
#include "link/data_packet.h"

namespace zel {

float reservoir_psi(uint8_t raw) {
    const float volts = static_cast<float>(raw * 5.0 / 255.0);
    return static_cast<float>(volts * 15.0 / 4.0 - 7.5 / 4.0);
}

void Form1::process_status_packet() {
    if (form13_open) form13.show_connected(true);

    // The first character is always taken, even a 0.
    QString version;
    int index = 1;
    do {
        version += QChar::fromLatin1(static_cast<char>(packet[static_cast<size_t>(index)]));
        ++index;
    } while (packet[static_cast<size_t>(index)] != 0 && index != 16);
    zel_version_id = version;

    turbine_check = packet[18] == 1;
    battery_level = static_cast<float>(packet[19] * battery_level_conversion_factor);
    battery_check = battery_level > battery_cutoff_level;
    line_level = static_cast<float>(packet[20] * line_level_conversion_factor);
    line_check = line_level > line_cutoff_level;
    pressure_level = reservoir_psi(packet[21]);
    vacuum_level = reservoir_psi(packet[22]);
    pneumatics_check = pressure_level > pressure_cutoff_level && vacuum_level > vacuum_cutoff_level;
    if (form13_open)
        form13.show_status(turbine_check, battery_check, line_check, pneumatics_check);
    if (about_visible && form10)
        form10->show_levels(line_level, battery_level, pressure_level, vacuum_level,
                            platform.locale.decimal_separator());

    echo_thresh = static_cast<float>(decode_volume(packet[24], packet[25]));
    echo_forward = static_cast<float>((packet[26] * 256 + packet[27]) / 8192000.0);
    echo_reverse = static_cast<float>((packet[28] * 256 + packet[29]) / 8192000.0);
    echo_duration = packet[23];

    if (!settings_confirm) return;
    if (echo_thresh == thresh && echo_duration == duration &&
        echo_forward == forward_calibration_factor && echo_reverse == reverse_calibration_factor) {
        settings_confirm = false;
        draw_chart();
        update_chart_labels();
        return;
    }
    settings_confirm_counter = add_i16(settings_confirm_counter, 1, "settings_confirm_counter");
    if (settings_confirm_counter > 3 && sw_state == 1) {
        // The module does not take its settings: treatments must stop here.
        enter_fault_mode(message_text(294));
        sw_state = 2;
        enable_menus();
        Timer_HeartBeat->set_Enabled(false);
        Timer_module_connect->set_Enabled(false);
    }
    settings_confirm = true;
}

}  // namespace zel
