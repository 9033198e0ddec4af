#pragma once
// State of the breath-hold cycle.
#include <QString>
#include <cstdint>

namespace zel {

struct CycleState {
    int16_t b_state = 0;
    int16_t sw_state = 1;
    bool patient_switch = false;
    int16_t patient_switch_toggles = 0;
    double time_of_last_switch_toggle = 0;
    bool distress_fault = false;
    int16_t breath_holds = 0;
    QString abort_message;
    QString abort_by;
    bool pause_cue_visible = false;
    bool pauseRecordDisabled = false;
    bool Recover_Comm_During_Gated_Treatment = false;
    // The locked display of the fault state.
    bool fault_mode_enabled = false;
    bool deviceIsInFaultMode = false;
};

}  // namespace zel
