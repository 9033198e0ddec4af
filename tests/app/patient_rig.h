#pragma once
// The patient the console's tests work with, and what the main window shows of a patient.
#include <QDir>

#include "fakes/rig.h"

namespace zel::test {

inline QString doe_folder(const Rig& rig) { return rig.app_data.path() + "/Doe_Jane_A1"; }

// Doe, Jane, A1 in force, session 1, with her folder.
inline void define_patient(Rig& rig) {
    rig.form.patient_defined = true;
    rig.form.data_directory = rig.app_data.path();
    rig.form.number_format = QStringLiteral("dot");
    rig.form.patient_last_name = QStringLiteral("Doe");
    rig.form.patient_first_name = QStringLiteral("Jane");
    rig.form.patient_medical_id = QStringLiteral("A1");
    rig.form.session = QStringLiteral("1");
    QDir().mkpath(doe_folder(rig));
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
