// The search for the module over the serial ports, and the heartbeat that notices its loss.
#include "app/form1.h"
#include "language/messages.h"
#include "link/port_permission.h"

namespace zel {

namespace {
// Runs one step with errors suppressed: an error goes on to the next step. Returns whether
// the step went through.
template <class Step>
bool suppressed(Step&& step) {
    try {
        step();
        return true;
    } catch (const ZelError&) {
        return false;
    }
}
}  // namespace

void Form1::start_module_search() {
    Timer_module_connect->set_Enabled(true);
    zel_detect = false;
    settings_confirm = true;
    settings_confirm_counter = 0;
    port_index = 0;
    num_ports = 0;
}

void Form1::enumerate_com_ports() {
    SerialPort& port = platform.serial;
    num_ports = 0;
    for (int16_t number = 1; number <= 20; ++number) {
        bool ok = true;
        if (port.PortOpen()) ok &= suppressed([&] { port.set_PortOpen(false); });
        ok &= suppressed([&] { port.set_CommPort(number); });
        // A port in use by another program fails here and is not listed. So does one that
        // this user may not open; where the files tell why, the operator is told that once,
        // beside the search.
        ok &= suppressed([&] {
            try {
                port.set_PortOpen(true);
            } catch (const ZelError&) {
                const QString why = port_refusal_text(port.refusal());
                if (!why.isEmpty() && !ports_denied_told.contains(why)) {
                    ports_denied_told.append(why);
                    platform.boxes.notice(why);
                }
                throw;
            }
            port.set_PortOpen(false);
        });
        if (ok) {
            port_list[static_cast<size_t>(num_ports)] = number;
            ++num_ports;
        }
    }
}

void Form1::Timer_module_connect_Timer() {
    // The whole tick runs with errors suppressed: a failing statement goes on to the next.
    if (zel_detect) {
        if (form13_open) suppressed([&] { form13.show_rows(true); });
        if (line_check && battery_check && turbine_check && pneumatics_check) {
            if (form13_open) {
                Timer_form13_close_delay->set_Interval(2000);
                Timer_form13_close_delay->set_Enabled(true);
                system_check_result = true;
            }
            if (settings_confirm) {
                suppressed([&] { upload_settings(); });
            } else {
                Timer_module_connect->set_Enabled(false);
                Timer_HeartBeat->set_Enabled(true);
                if (b_state != 4) {
                    suppressed([&] { send_command("X"); });
                    Recover_Comm_During_Gated_Treatment = false;
                }
                suppressed([&] { send_command("E"); });
            }
        } else {
            suppressed([&] { send_command("V"); });
            sw_state = 2;
            // A failure without a line fault starts with a blank.
            QString text;
            if (!line_check) text = message_text(143);
            if (!battery_check) text += QLatin1Char(' ') + message_text(354);
            if (!turbine_check) text += QLatin1Char(' ') + message_text(144);
            if (!pneumatics_check) text += QLatin1Char(' ') + message_text(280);
            if (fault_mode_enabled)
                Label2.Caption = text;
            else
                suppressed([&] { enter_fault_mode(text); });
            zel_detect = false;
        }
        return;
    }

    if (fault_mode_enabled) {
        Label2.Caption = message_text(319);
    } else {
        suppressed([&] { enter_fault_mode(message_text(319)); });
        sw_state = 2;
    }
    form13.show_connected(false);
    if (form13_open) form13.show_rows(false);
    // The ports are scanned afresh at each pass, so a port plugged in later is found.
    if (port_index == num_ports) {
        port_index = 0;
        num_ports = 0;
        enumerate_com_ports();
    }
    if (num_ports > 0) {
        SerialPort& port = platform.serial;
        if (port.PortOpen()) suppressed([&] { port.set_PortOpen(false); });
        ComPort = port_list[static_cast<size_t>(port_index)];
        form13.show_connected(false);
        zel_detect = false;
        suppressed([&] { port.set_CommPort(ComPort); });
        suppressed([&] { port.set_PortOpen(true); });
        suppressed([&] { send_command("V"); });
        ++port_index;
    }
}

void Form1::Timer_HeartBeat_Timer() {
    module_heartbeat_counter = add_i16(module_heartbeat_counter, 1, "module_heartbeat_counter");
    // One silent tick is tolerated.
    if (module_heartbeat_counter <= 1) return;
    lose_module_link();
}

void Form1::lose_module_link() {
    if (platform.serial.PortOpen()) platform.serial.set_PortOpen(false);
    data_packet = false;
    transducer_fault = false;
    line_fault = false;
    battery_fault = false;
    zel_detect = false;
    settings_confirm = true;
    port_index = 0;
    num_ports = 0;
    Timer_module_connect->set_Enabled(true);
    Timer_HeartBeat->set_Enabled(false);
    countdown2.Caption.clear();
    if (Gated_Treatment && !Gating_OverRide) Recover_Comm_During_Gated_Treatment = true;
    if (b_state == 4) {
        if (Gated_Treatment && !Gating_OverRide) {
            // The beam must stop at once when the module is lost during a hold.
            _Tarrow_SetRelayState(0);
            Image_Gating_Fault.Visible = false;
            Image_Gating_Closed.Visible = false;
            Image_Gating_Ready.Visible = true;
        } else {
            start_pause_cue();
            pauseBeamTimer->set_Enabled(true);
        }
    }
    b_state = 1;
    draw_chart();
}

void Form1::Timer_form13_close_delay_Timer() {
    form13_open = false;
    platform.windows.unload(Window::Form13);
    Timer_form13_close_delay->set_Enabled(false);
}

}  // namespace zel
