#include "gating/form_gating.h"

#include "gating/tarrow_texts.h"
#include "language/messages.h"

namespace zel {

namespace {


// A letter's words, or the label as it was for a letter it does not know.
void show_letter(Control& label, const QString& text) {
    if (!text.isEmpty()) label.Caption = text;
}

}  // namespace

FormGating::FormGating(GatingLibrary& tarrow_, TimerFactory& timers)
    : Timer_Tarrow_Diagnostics(timers.create("Timer_Tarrow_Diagnostics")), tarrow(tarrow_) {
    Timer_Tarrow_Diagnostics->set_Interval(200);
    Timer_Tarrow_Diagnostics->on_tick = [this] { Timer_Tarrow_Diagnostics_Timer(); };
    Width = 6600;
    Height = 5400;
    // Captions on the left, values on the right, one row each.
    Control* rows[][2] = {
        {nullptr, &Label_Comm},          {&Label5, &Label_DLL_version},
        {&Label3, &Label_Control_Firmware}, {&Label4, &Label_Relay_Firmware},
        {&Label1, &Label_Fast_Gating},   {&Label2, &Label_Permission},
        {nullptr, &Label_Mode},          {nullptr, &Label_Relay_Comm},
        {nullptr, &Label_Relay_State},
    };
    double top = 240;
    for (auto& row : rows) {
        if (row[0]) place_twips(*row[0], 240, top, 2760, 300);
        place_twips(*row[1], row[0] ? 3120 : 240, top, row[0] ? 3240 : 6120, 300);
        row[1]->font.bold = true;
        top += 420;
    }
    place_twips(Done_Button, 4920, top + 60, 1440, 420);
}

void FormGating::Form_Load() {
    Caption = message_text(337).remove(QLatin1Char('&'));
    Label1.Caption = message_text(335);
    Label2.Caption = message_text(336);
    Label3.Caption = message_text(299);
    Label4.Caption = message_text(298);
    Label5.Caption = message_text(297);
    Done_Button.Caption = message_text(113);
    Timer_Tarrow_Diagnostics->set_Enabled(true);
}

void FormGating::Timer_Tarrow_Diagnostics_Timer() {
    if (tarrow.Connected() == 0) {
        Label_Comm.Caption = message_text(333);
        TarrowFirmware firmware{};
        tarrow.GetFirmwareVersions(firmware);
        Label_Relay_Firmware.Caption = fixed_text(firmware.relay_firmware, sizeof firmware.relay_firmware);
        Label_Control_Firmware.Caption =
            fixed_text(firmware.control_firmware, sizeof firmware.control_firmware);
        TarrowDllVersion version{};
        tarrow.GetDLLVersion(version);
        Label_DLL_version.Caption = fixed_text(version.dll_version, sizeof version.dll_version);
        tarrow.GetStatus(status);
        const char fast = status.fast_gating;
        show_letter(Label_Fast_Gating, fast == '!' ? message_text(182)
                                       : fast == ':' ? message_text(320)
                                                     : QString());
        const char permission = status.permission_to_disable;
        show_letter(Label_Permission, permission == 'L' ? message_text(321)
                                      : permission == 'U' ? message_text(322)
                                                          : QString());
        show_letter(Label_Mode, enable_state_text(status.enable_state));
        const char link = status.relay_link;
        show_letter(Label_Relay_Comm, link == '^' ? message_text(324)
                                      : link == '_' ? message_text(325)
                                                    : QString());
        show_letter(Label_Relay_State, relay_state_text(status.relay_state));
        return;
    }
    // No link: say so, and try it afresh on the next tick.
    Label_Comm.Caption = message_text(334);
    tarrow.Close();
    for (Control* c : {&Label_Relay_Firmware, &Label_Control_Firmware, &Label_DLL_version,
                       &Label_Fast_Gating, &Label_Permission, &Label_Mode, &Label_Relay_Comm,
                       &Label_Relay_State})
        c->Caption.clear();
    tarrow.Open();
}

void FormGating::Done_Button_Click() {
    Timer_Tarrow_Diagnostics->set_Enabled(false);
    // The poll of a gated treatment opens it again by itself.
    tarrow.Close();
    unloaded = true;
}

}  // namespace zel
