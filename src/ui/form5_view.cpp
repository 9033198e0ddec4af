#include "ui/form5_view.h"

#include <QGroupBox>
#include <QLineEdit>

#include "app/form1.h"

namespace zel {

Form5View::Form5View(Form1& form_, Form5& model_, QWidget* parent)
    : EntryDialogView(form_, parent), model(model_) {
    Form5& m = model;
    setFixedSize(qRound(m.Width / twips_per_pixel), qRound(m.Height / twips_per_pixel));

    QWidget* patient = frame(m.Frame_Patient_Info);
    label(m.Label_last_name, patient);
    field(m.Text_last_name, patient, false);
    label(m.Label_first_name, patient);
    field(m.Text_first_name, patient, false);
    label(m.Label_medical_ID, patient);
    field(m.Text_medical_id, patient, false);
    QWidget* session = frame(m.Frame_Session);
    label(m.Label_Session_ID, session);
    field(m.Text_session, session, false);
    QWidget* gating = frame(m.Frame_Gating_Options);
    tick(m.Check_automatic, gating, false);
    tick(m.Check_manual, gating, false);
    label(m.Label_gating_warning, gating);
    QWidget* hold = frame(m.Frame_Breath_Hold);
    label(m.Label_duration, hold);
    field(m.BreathHold_Text, hold, true);
    bar(m.BreathHold_Scroll, hold);
    label(m.Label_threshold, hold);
    field(m.Threshold_Text, hold, true);
    bar(m.Threshold_Scroll, hold);
    tick(m.Check_Inhalation, hold, true);
    tick(m.check_Exhalation, hold, true);
    label(m.Label_message, this);
    button(m.button_done);
    button(m.button_cancel);

    sync();
}

void Form5View::setVisible(bool visible) {
    TextBox& first = model.form.new_patient_loading ? model.Text_session : model.Text_last_name;
    QLineEdit* edit = line_edit_of(first);
    if (visible && edit) edit->setFocus(Qt::OtherFocusReason);
    QDialog::setVisible(visible);
    // Showing hands the focus to the field as a tab would, which selects its text; the caret
    // stays where the model put it instead, so that the suggested session is not overtyped.
    if (visible && edit) {
        edit->deselect();
        edit->setCursorPosition(first.SelStart);
    }
}

void Form5View::reject() {
    if (model.button_cancel.Enabled) run("Click", [&] { model.click(model.button_cancel); });
}

}  // namespace zel
