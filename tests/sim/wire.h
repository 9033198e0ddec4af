#pragma once
// Reading the simulated module's output in tests, and running it through time.
#include <QByteArray>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "control_module.h"

namespace zelsim::test {

struct SeenFrame { uint8_t flags = 0, balloon = 0; int volume_units = 0, time_left = 0; };

// The data frames in the bytes, by their start byte and length; anything else is skipped.
std::vector<SeenFrame> data_frames(const std::vector<uint8_t>& bytes);

QByteArray to_bytes(const std::vector<uint8_t>& bytes);

// A control applied at a moment of the module's time.
struct Step { double time; std::function<void(ControlModule&, double now)> act; };
Step send(double time, const std::string& commands);

// Runs the module from 0 to `until` seconds in frame periods, applying the steps on the way;
// gives all it sent.
std::vector<uint8_t> run(ControlModule& module, const std::vector<Step>& steps, double until);

}  // namespace zelsim::test
