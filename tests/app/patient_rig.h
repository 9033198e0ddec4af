#pragma once
// The patient the console's tests work with, and what the main window shows of a patient.
#include "fakes/rig.h"

namespace zel::test {

inline QString doe_folder(const Rig& rig) { return rig.app_data.path() + "/Doe_Jane_A1"; }

// Doe, Jane, A1 in force, session 1, with her folder.
inline void define_patient(Rig& rig) {
    as_patient(rig.form, rig.app_data.path(), QStringLiteral("1"));
    rig.form.cmdRecord.Enabled = false;
    rig.form.number_format = QStringLiteral("dot");
}

// The operator fills the new-patient dialog for Doe, Jane, A1 with threshold 1.5 and presses
// Done; the recording question is answered No.
inline void create_doe(Rig& rig, bool automated = false) {
    rig.fakes.windows.during(Window::Form5, [&rig, automated] {
        Form5& f = *rig.form.form5;
        for (auto [box, text] : {std::pair{&f.Text_last_name, "Doe"}, {&f.Text_first_name, "Jane"},
                                 {&f.Text_medical_id, "A1"}, {&f.Threshold_Text, "1.5"}})
            f.type_text(*box, QString::fromLatin1(text), static_cast<int>(strlen(text)));
        f.click(automated ? f.Check_automatic : f.Check_manual);
        f.key_press(f.Threshold_Text, 13);
        f.click(f.button_done);
    });
    rig.fakes.windows.answer(1);
    rig.form.create_new_patient_Click();
}

// Names, session, ID, the gating captions, and the entries that a patient opens.
inline QStringList patient_view(const Form1& f) {
    return {f.Label_last_name.Caption, f.label_session.Caption, f.label_patient_ID.Caption,
            f.gating_label.Caption, f.Label4.Caption,
            QStringLiteral("record %1 settings %2 history %3 diagnostics %4")
                .arg(int(f.cmdRecord.Enabled)).arg(int(f.Patient_Settings.Enabled))
                .arg(int(f.mnuSessionHistory.Enabled)).arg(int(f.Gating_Diagnostics.Enabled))};
}

}  // namespace zel::test
