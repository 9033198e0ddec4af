#pragma once
// The balloon valve and its hold timer, stepped once per frame period.
#include <cstdint>

namespace zelsim {

enum BalloonState : uint8_t {
    standby = 1,
    armed_on_inhalation = 2,
    armed_on_exhalation = 3,
    inflated = 4,
    deflating = 5,
};

// How long the module reports a deflation after a fault before it is back in standby.
constexpr int deflating_frames = 25;

struct BalloonInputs {
    int volume_units = 0;  // the volume of this frame period
    bool switch_closed = true;
    bool fault = false;
    int threshold_units = 0;
    int duration_frames = 0;
};

class Balloon {
  public:
    // "A" and "B": ignored during a hold, a deflation or a fault.
    void arm(bool on_inhalation, bool fault);
    // "X": an armed state or a hold ends at once.
    void let_go();

    // One frame period; the time left counts down one frame per period.
    void step(const BalloonInputs& in);

    BalloonState state() const { return current; }
    // Frames left on the hold timer; 0 but in a hold.
    int time_left_frames() const { return current == inflated ? remaining : 0; }

  private:
    BalloonState current = standby;
    int remaining = 0;
    int deflate_left = 0;
    int previous_units = 0;
    bool have_previous = false;
};

}  // namespace zelsim
