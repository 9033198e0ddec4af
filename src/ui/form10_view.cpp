#include "ui/form10_view.h"

#include "app/form1.h"
#include <QGroupBox>

#include "ui/control_dialog.h"

namespace zel {

QDialog* make_form10_view(Form1& form, QWidget* parent) {
    Form10& m = *form.form10;
    auto* view = new ControlDialog(
        m.Caption, m.Width, m.Height,
        [&form](const char* source, const std::function<void()>& f) { form.run_event(source, f); },
        parent);
    for (Control* c :
         {&m.Label2,  &m.Label1,         &m.software_version, &m.Label3,        &m.firmware_version,
          &m.Label20, &m.line_label,     &m.line_voltage,     &m.battery_label, &m.battery_voltage,
          &m.Label9,  &m.Label_pressure, &m.Label10,          &m.Label_vacuum,  &m.Label4,
          &m.Label5,  &m.Label6,         &m.Label7,           &m.Label8,        &m.Label11,
          &m.WARNING})
        view->label(*c);
    QWidget* gating = view->frame(m.Frame_gating);
    for (Control* c : {&m.Label12, &m.Label_tarrow_dll, &m.Label13, &m.Label_tarrow_control,
                       &m.Label14, &m.Label_tarrow_relay})
        view->label(*c, gating);
    view->button(m.Done, [&form] { if (form.form10) form.form10->Done_Click(form); });
    view->on_close([&form] { if (form.form10) form.form10->Done_Click(form); },
                   [&form] { return !form.form10 || form.form10->unloaded; });
    view->sync();
    return view;
}

}  // namespace zel
