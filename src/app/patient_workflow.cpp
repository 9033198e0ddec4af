// The File menu's patient entries. No patient can be changed during a breath hold.
#include "app/form1.h"

namespace zel {

// Loading a patient's parameter file, creating a patient and saving the session history
// come with the patient files; until then these entries change nothing.
void Form1::load_existing_patient_Click() {
    if (b_state > 1) return;
}

void Form1::create_new_patient_Click() {
    if (b_state > 1) return;
}

void Form1::save_session_history() {}

}  // namespace zel
