// The first half of a data frame's handling: count it, show the time, read the fault lines,
// decode and show the volume, draw it; and the time left once the cycle has run.
#include <cmath>

#include "app/form1.h"
#include "app/helpers.h"
#include "gating/tarrow_texts.h"
#include "language/messages.h"
#include "link/data_packet.h"

namespace zel {

QString elapsed_text(double total_counts, float count_frequency) {
    const double t = total_counts / count_frequency;
    const long long hours = static_cast<long long>(t / 60 / 60);
    const long long minutes = static_cast<long long>(t / 60) % 60;
    // Seconds round (ties to even) while minutes truncate: 59.6 s reads 0:0:0.
    const long long seconds = round_to_integer(t) % 60;
    return QStringLiteral("%1:%2:%3").arg(hours).arg(minutes).arg(seconds);
}

double decode_volume(uint8_t high, uint8_t low) {
    if (high & 0x80) {
        const int16_t magnitude =
            checked_i16(static_cast<long long>(static_cast<uint8_t>(~high)) * 256 +
                            static_cast<uint8_t>(~low) + 1,
                        "process_data_packet");
        return magnitude * -0.004;
    }
    return (high * 256 + low) * 0.004;
}

double decode_time_left(uint8_t high, uint8_t low) { return (high * 256 + low) * 0.02; }

namespace {

// Sets or clears one fault flag; a new fault puts the console in the fault state.
void read_fault_line(bool condition, bool& flag, int16_t& sw_state) {
    if (condition) {
        if (!flag) {
            flag = true;
            sw_state = 2;
        }
    } else {
        flag = false;
    }
}

}  // namespace

void Form1::process_data_packet() {
    if (about_visible && static_cast<long long>(total_counts) % 50 == 0) send_command("V");
    total_counts += 1;
    counts += 1;
    elapsed_label.Caption = elapsed_text(total_counts, count_frequency);

    const uint8_t flags = packet[1];
    read_fault_line(flags & 0x20, line_fault, sw_state);
    read_fault_line(flags & 0x10, battery_fault, sw_state);
    read_fault_line(flags & 0x40, pneumatic_fault, sw_state);
    read_fault_line((flags & 0x0C) != 0x04, transducer_fault, sw_state);

    volume = decode_volume(packet[3], packet[4]);
    const QChar separator = platform.locale.decimal_separator();
    volume_label.Caption = message_text(245) + QStringLiteral(":   ") +
                           format_number(volume, "###0.00", separator);

    v0 = v1;
    v1 = volume;
    plot_sample();

    read_patient_switch();
    process_balloon_state();
    if (bRecord) write_recording_line();
    if (sw_state == 2) fault_summary();

    // The state machine has read the time left of the frame before; now this frame's.
    ZEL_CM_duration = decode_time_left(packet[5], packet[6]);
    countdown2.Caption = format_number(ZEL_CM_duration + 0.49, "###0", separator);

    if ((!Gated_Treatment || Gating_OverRide) && b_state == 4 && ZEL_CM_duration < 4.0 &&
        !pause_cue_visible)
        start_pause_cue();
    if (static_cast<long long>(counts) % 25 == 0 && Gated_Treatment) poll_tarrow_status();
}

void Form1::write_recording_line() {
    // No routine handles a failed write here: it ends the program through the event's report,
    // rather than a recording going on with lines silently missing.
    if (!curve_file || !curve_file->isOpen())
        throw ZelError(err_bad_file_number, QStringLiteral("write_recording_line"),
                       QStringLiteral("Bad file name or number"));
    // Each line is handed to the system in one call as it is written: a crash of the console
    // loses nothing already shown. It is not synchronised with the disk line by line
    // (fdatasync): that costs about 2 ms a line, at times 10 ms and more, on the thread that
    // also handles the frame ending a hold; the system writes the lines out within seconds.
    curve_file->source = "write_recording_line";
    curve_file->append((recording_line() + QStringLiteral("\r\n")).toLatin1());
    tarrowNewData = false;
}

QString Form1::recording_line() const {
    const QChar separator = platform.locale.decimal_separator();
    const double t = total_counts / count_frequency;
    QString line = format_number(t, "###0.00", separator) + QLatin1Char(';') +
                   number_text(volume, separator) + QLatin1Char(';') + QString::number(b_state) +
                   QLatin1Char(';') + (patient_switch ? QStringLiteral("1") : QStringLiteral("0")) +
                   QLatin1Char(';');
    if (!tarrowNewData) return line + QStringLiteral(" - ; - ; - ");

    QString mode = !Gated_Treatment ? message_text(269)
                   : Gating_OverRide ? message_text(316)
                                     : message_text(268);
    QString enable = QStringLiteral("-"), relay = QStringLiteral("-");
    if (Gated_Treatment) {
        enable = enable_state_text(tarrow_status.enable_state);
        relay = relay_state_text(tarrow_status.relay_state);
    }
    return line + mode + QLatin1Char(';') + enable + QLatin1Char(';') + relay;
}

}  // namespace zel
