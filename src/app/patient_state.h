#pragma once
// The patient and session as the rest of the console reads them.
#include <QString>

namespace zel {

struct PatientState {
    bool patient_defined = false;
    QString patient_last_name;
    QString patient_medical_id;
    bool bRecord = false;
};

}  // namespace zel
