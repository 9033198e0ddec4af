#pragma once
// The gating system's service view: the link, the versions and each status letter in words,
// read afresh five times a second.
#include <memory>

#include "app/control.h"
#include "platform/gating_library.h"
#include "platform/timer.h"

namespace zel {

class FormGating {
public:
    FormGating(GatingLibrary& tarrow, TimerFactory& timers);

    Control Label1, Label2, Label3, Label4, Label5;
    Control Done_Button;
    Control Label_Comm;
    Control Label_Relay_Firmware, Label_Control_Firmware, Label_DLL_version;
    Control Label_Fast_Gating, Label_Permission, Label_Mode, Label_Relay_Comm, Label_Relay_State;
    QString Caption;
    double Width = 0, Height = 0;
    std::unique_ptr<Timer> Timer_Tarrow_Diagnostics;
    bool unloaded = false;

    void Form_Load();
    void Timer_Tarrow_Diagnostics_Timer();
    void Done_Button_Click();

private:
    GatingLibrary& tarrow;
    TarrowStatus status{};  // its own: the half-second poll keeps another
};

}  // namespace zel
