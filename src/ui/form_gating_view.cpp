#include "ui/form_gating_view.h"

#include "app/form1.h"
#include "ui/control_dialog.h"

namespace zel {

QDialog* make_form_gating_view(Form1& form, QWidget* parent) {
    FormGating& m = *form.form_gating;
    auto* view = new ControlDialog(
        m.Caption, m.Width, m.Height,
        [&form](const char* source, const std::function<void()>& f) { form.run_event(source, f); },
        parent);
    for (Control* c : {&m.Label_Comm, &m.Label5, &m.Label_DLL_version, &m.Label3,
                       &m.Label_Control_Firmware, &m.Label4, &m.Label_Relay_Firmware, &m.Label1,
                       &m.Label_Fast_Gating, &m.Label2, &m.Label_Permission, &m.Label_Mode,
                       &m.Label_Relay_Comm, &m.Label_Relay_State})
        view->label(*c);
    view->button(m.Done_Button, [&form] { if (form.form_gating) form.form_gating->Done_Button_Click(); });
    // The frame's close button stops the ticks only; Done also closes the gating link.
    view->on_close([&form] { if (form.form_gating) form.form_gating->Timer_Tarrow_Diagnostics->set_Enabled(false); },
                   [&form] { return !form.form_gating || form.form_gating->unloaded; });
    view->sync();
    return view;
}

}  // namespace zel
