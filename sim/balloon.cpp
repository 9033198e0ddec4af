#include "balloon.h"

namespace zelsim {

void Balloon::arm(bool on_inhalation, bool fault) {
    if (current == inflated || current == deflating || fault) return;
    current = on_inhalation ? armed_on_inhalation : armed_on_exhalation;
}

void Balloon::let_go() {
    if (current == armed_on_inhalation || current == armed_on_exhalation || current == inflated)
        current = standby;
}

void Balloon::step(const BalloonInputs& in) {
    switch (current) {
        case inflated:
            if (in.fault) {
                current = deflating;
                deflate_left = deflating_frames;
            } else if (!in.switch_closed || remaining == 0) {
                // The patient let go of the switch, or the hold ran its full time.
                current = standby;
            } else {
                --remaining;
            }
            break;
        case deflating:
            if (--deflate_left <= 0) current = standby;
            break;
        case armed_on_inhalation:
        case armed_on_exhalation: {
            if (in.fault) {
                current = standby;
                break;
            }
            const bool rising = current == armed_on_inhalation;
            const bool crossed =
                have_previous && (rising ? previous_units < in.threshold_units &&
                                               in.volume_units >= in.threshold_units
                                         : previous_units > in.threshold_units &&
                                               in.volume_units <= in.threshold_units);
            // The valve closes only on a patient who holds the switch.
            if (crossed && in.switch_closed) {
                current = inflated;
                remaining = in.duration_frames > 0 ? in.duration_frames - 1 : 0;
            }
            break;
        }
        case standby:
            break;
    }
    previous_units = in.volume_units;
    have_previous = true;
}

}  // namespace zelsim
