// The Help menu: the About box and the gating system's service view, both at any balloon state.
#include "app/form1.h"

namespace zel {

void Form1::About_Click() {
    form10 = std::make_unique<Form10>();
    form10->Form_Load(*this);
    platform.windows.show_modal(Window::Form10);
    // Closed by its frame as well as by Done: the levels stop going to it either way.
    about_visible = false;
}

void Form1::Gating_Diagnostics_Click() {
    form_gating = std::make_unique<FormGating>(platform.tarrow, platform.timers);
    form_gating->Timer_Tarrow_Diagnostics->on_tick = [this] {
        run_event("Timer_Tarrow_Diagnostics_Timer",
                  [this] { if (form_gating) form_gating->Timer_Tarrow_Diagnostics_Timer(); });
    };
    form_gating->Form_Load();
    platform.windows.show_modal(Window::Form_Gating);
    // A window closed by its frame takes its timer with it.
    form_gating->Timer_Tarrow_Diagnostics->set_Enabled(false);
}

}  // namespace zel
