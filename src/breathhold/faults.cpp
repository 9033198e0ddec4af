// The fault state: entered from many places, left only when every fault line is clear.
#include "app/form1.h"
#include "language/messages.h"

namespace zel {

namespace {
constexpr Rgb fault_red{255, 0, 0};
}  // namespace

void Form1::enter_fault_mode(const QString& text) {
    fault_mode_enabled = true;
    Timer1->set_Enabled(true);
    disable_menus();
    zel_exit.Enabled = true;  // the program can always be left
    Label2.Caption = text;
    Label2.BackColor = fault_red;
    draw_chart();
}

void Form1::leave_fault_mode() {
    fault_mode_enabled = false;
    deviceIsInFaultMode = false;
    Timer1->set_Enabled(false);
    Label2.BackColor = window_background;
    if (patient_defined)
        show_key_prompt();
    else
        Label2.Caption.clear();
    // The module's settings are sent again at the end of every fault.
    upload_settings();
}

void Form1::Timer1_Timer() {
    Label2.BackColor = Label2.BackColor == fault_red ? window_background : fault_red;
}

void Form1::fault_summary() {
    if (!transducer_fault && !line_fault && !battery_fault && !distress_fault &&
        !pneumatic_fault) {
        sw_state = 1;
        leave_fault_mode();
        enable_menus();
        return;
    }
    QString text = abort_message;
    const struct {
        bool standing;
        int message;
    } reasons[] = {{line_fault, 143},
                   {battery_fault, 354},
                   {transducer_fault, 144},
                   {pneumatic_fault, 280},
                   {distress_fault, 138}};
    for (const auto& reason : reasons)
        if (reason.standing) text += QLatin1Char(' ') + message_text(reason.message);
    if (fault_mode_enabled)
        Label2.Caption = text;
    else
        enter_fault_mode(text);
}

}  // namespace zel
