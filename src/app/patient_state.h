#pragma once
// The patient and session as the rest of the console reads them, and the holding area that a
// patient's parameter file is read into before it is taken over.
#include <QString>
#include <cstdint>

namespace zel {

struct PatientState {
    bool patient_defined = false;
    // True while an existing patient is loaded, false while a new one is created: the
    // new-patient dialog takes its mode from it.
    bool new_patient_loading = false;
    bool confirm_cancel = false;
    QString patient_last_name;
    QString patient_first_name;
    QString patient_medical_id;
    QString patient_parameter_filename;
    QString session;
    // The history file's path followed by the session, at the last entry written: a second
    // save of the same session replaces its entry.
    QString session_id_saved;
    bool bRecord = false;

    // Holding area filled while a parameter file is read.
    QString temp_patient_last_name;
    QString temp_patient_first_name;
    QString temp_patient_medical_id;
    float temp_thresh = 0;
    int16_t temp_duration = 0;
    float temp_max_y = 0;
    QString temp_trigger;
    QString temp_gating;
    float temp_x_scale_factor = 0;
    double temp_max_x = 0;
};

}  // namespace zel
