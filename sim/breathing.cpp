#include "breathing.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zelsim {

namespace {
constexpr double inhale_end = 0.38;
constexpr double exhale_end = 0.88;
}  // namespace

Breathing::Breathing(uint32_t seed) : random(seed) { measured = lung_volume(); }

double Breathing::shape(double p) const {
    using std::numbers::pi;
    if (p < inhale_end) return (1 - std::cos(pi * p / inhale_end)) / 2;
    if (p < exhale_end)
        return (1 + std::cos(pi * (p - inhale_end) / (exhale_end - inhale_end))) / 2;
    return 0.0;
}

double Breathing::lung_volume() const {
    if (played) return played->volume_at(played_seconds);
    return pattern.rest_litres + pattern.amplitude_litres * depth_scale * shape(phase);
}

void Breathing::start_next_breath() {
    std::normal_distribution<double> variation(1.0, 0.05);
    depth_scale = std::clamp(variation(random), 0.85, 1.15);
    length_scale = std::clamp(variation(random), 0.85, 1.15);
}

void Breathing::replay(std::shared_ptr<const CurveReplay> curve) {
    played = std::move(curve);
    played_seconds = 0.0;
}

int Breathing::step(double dt, bool airway_closed) {
    if (airway_closed) return 0;
    double now = 0.0;
    if (played) {
        // The recording holds its own noise.
        played_seconds += dt;
        now = lung_volume();
    } else {
        const double period = std::max(0.5, pattern.period_seconds) * length_scale;
        phase += dt / period;
        if (phase >= 1.0) {
            phase -= std::floor(phase);
            // A new breath begins at rest, so its depth can change without a jump.
            start_next_breath();
        }
        std::normal_distribution<double> noise(0.0, std::max(0.0, pattern.noise_litres));
        now = lung_volume() + noise(random);
    }
    pulses_owed += (now - measured) / litres_per_pulse;
    measured = now;
    const int whole = static_cast<int>(std::trunc(pulses_owed));
    pulses_owed -= whole;
    return whole;
}

void VolumeIntegrator::add(int pulses) {
    litres += pulses * (pulses >= 0 ? forward_factor : reverse_factor);
}

int VolumeIntegrator::volume_units() const {
    return static_cast<int>(std::lround(std::clamp(litres / 0.004, -32767.0, 32767.0)));
}

}  // namespace zelsim
