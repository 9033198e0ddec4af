#pragma once
// The patient's breathing as the module's turbine sees it, and the module's integration of
// the turbine's pulses into a volume.
#include <cstdint>
#include <memory>
#include <random>

#include "curve_replay.h"

namespace zelsim {

struct BreathingPattern {
    double rest_litres = 1.0;       // the level at the end of a quiet exhalation
    double amplitude_litres = 0.8;  // tidal volume
    double period_seconds = 4.0;
    double noise_litres = 0.008;  // measurement noise, standard deviation
};

// Litres per turbine pulse of the transducer.
constexpr double litres_per_pulse = 0.004;

// A regular cycle with a slightly varying depth and length from breath to breath: a quick
// inhalation, a slower exhalation and a short pause at rest.
class Breathing {
  public:
    explicit Breathing(uint32_t seed);

    BreathingPattern pattern;

    // Advances by dt seconds and returns the turbine's pulses in that time, positive while
    // inhaling. With the airway closed nothing flows and the breath waits where it stands.
    int step(double dt, bool airway_closed);

    // The lung volume of the model without noise, in litres.
    double lung_volume() const;

    // A recorded curve breathes in place of the model, from its start; null: the model again.
    void replay(std::shared_ptr<const CurveReplay> curve);
    const CurveReplay* replaying() const { return played.get(); }

  private:
    double shape(double phase) const;
    void start_next_breath();

    std::mt19937 random;
    double phase = 0.0;  // 0 to 1 within the present breath
    double depth_scale = 1.0;
    double length_scale = 1.0;
    double measured = 0.0;  // litres, as the turbine has turned so far
    double pulses_owed = 0.0;
    std::shared_ptr<const CurveReplay> played;
    double played_seconds = 0.0;  // stands still while the airway is closed
};

// The module's integrator: pulses times the uploaded calibration factor for their direction.
class VolumeIntegrator {
  public:
    explicit VolumeIntegrator(double start_litres) : litres(start_litres) {}

    double forward_factor = 0.004;  // litres per pulse while inhaling
    double reverse_factor = 0.004;  // litres per pulse while exhaling

    void add(int pulses);
    double volume() const { return litres; }
    // The volume on the wire, in units of 0.004 L.
    int volume_units() const;

  private:
    double litres;
};

}  // namespace zelsim
