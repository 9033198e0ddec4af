#include "ui/form12_view.h"

#include <QAbstractButton>
#include <QGroupBox>

#include "app/form1.h"

namespace zel {

Form12View::Form12View(Form1& form_, Form12& model_, QWidget* parent)
    : EntryDialogView(form_, parent), model(model_) {
    Form12& m = model;
    setFixedSize(qRound(m.Width / twips_per_pixel), qRound(m.Height / twips_per_pixel));

    label(m.Label_Title, this);
    label(m.Label_warning2, this, true);
    QWidget* gating = frame(m.Frame_gating);
    tick(m.Check_automatic, gating, false);
    tick(m.Check_manual, gating, false);
    tick(m.Check_overide, gating, false);
    QWidget* hold = frame(m.Frame5);
    label(m.Label2, hold);
    field(m.BreathHold_Text, hold, true);
    bar(m.BreathHold_Scroll, hold);
    label(m.Label3, hold);
    field(m.Threshold_Text, hold, true);
    bar(m.Threshold_Scroll, hold);
    tick(m.Inhalation_button, hold, true);
    tick(m.Exhalation_button, hold, true);
    label(m.Label_warningA, this, true);
    label(m.Label_warningB, this, true);
    button(m.Button_Save);
    opening_focus = button(m.Cancel);

    sync();
}

int Form12View::closing_result() const {
    return model.form.patient_settings_cancel ? Rejected : Accepted;
}

void Form12View::reject() {
    if (model.Cancel.Enabled) run("Click", [&] { model.click(model.Cancel); });
}

}  // namespace zel
