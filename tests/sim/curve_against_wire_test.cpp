// The soak's check of a curve file against the wire log finds each kind of fault it is there
// for, on a made-up recording: 300 frames with a cut of the line after frame 199, the module
// found again (the stream started) between frames 202 and 203.
#include "sim/curve_against_wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>

namespace zel::test {
namespace {

constexpr int frames_sent = 300;
constexpr int first_recorded = 10;
constexpr int cut_after = 199;

TEST(CurveAgainstWire, finds_each_fault_and_excuses_only_frames_before_the_module_is_found) {
    // The frames lost (no line), taken in without a line, written twice and corrupt; the frames
    // [from, to) over which the volume stands still, as in a breath hold.
    // The counts: expected, missing, duplicated, foreign, unread, count gaps.
    struct Case { const char* what; std::vector<int> lost, taken, twice, corrupt; std::pair<int, int> still;
                  std::array<long, 6> counts; };
    const Case cases[] = {
        {"every frame once", {}, {}, {}, {}, {}, {290, 0, 0, 0, 0, 0}},
        {"a frame lost before the console took it in", {100}, {}, {}, {}, {}, {290, 1, 0, 0, 0, 0}},
        {"a frame taken in and not written", {100}, {100}, {}, {}, {}, {290, 1, 0, 0, 0, 1}},
        {"a frame written twice", {}, {}, {100}, {}, {}, {290, 0, 1, 0, 0, 0}},
        {"a corrupt frame written", {}, {}, {}, {150}, {}, {289, 0, 0, 1, 0, 0}},
        {"a corrupt frame left out", {150}, {}, {}, {150}, {}, {289, 0, 0, 0, 0, 0}},
        {"a frame lost while the volume stands still", {130}, {}, {}, {}, {120, 140}, {290, 1, 0, 0, 0, 0}},
        {"a corrupt frame written while the volume stands still", {}, {}, {}, {130}, {120, 140},
         {289, 0, 0, 1, 0, 0}},
        {"frames after the cut, before the module was found, unread", {200, 202}, {}, {}, {}, {},
         {288, 0, 0, 0, 2, 0}},
        {"frames after the cut unread, and one lost once the module was found", {200, 201, 202, 206}, {}, {},
         {}, {}, {287, 1, 0, 0, 3, 0}},
        {"a hold over the moment the module is found, its first frames unread", {200, 201}, {}, {}, {},
         {200, 211}, {288, 0, 0, 0, 2, 0}},
        {"a hold over the moment the module is found, more frames lost than were sent before",
         {200, 201, 202, 203, 204}, {}, {}, {}, {200, 211}, {287, 2, 0, 0, 3, 0}},
        {"frames lost once the module was found", {204, 205}, {}, {}, {}, {}, {290, 2, 0, 0, 0, 0}},
    };
    const auto has = [](const std::vector<int>& frames, int k) { return std::ranges::count(frames, k) > 0; };
    for (const Case& c : cases) {
        std::vector<WireFrame> wire;
        for (int k = 0; k < frames_sent; ++k) {
            // Distinct volumes, so that a line can stand for one frame only.
            const bool still = k >= c.still.first && k < c.still.second;
            wire.push_back({1.0 + 0.02 * k + (k > cut_after ? 3.0 : 0.0), still ? 700 : k * 7 % 1000 - 500,
                            k % 40 < 20 ? 1 : 4, true, has(c.corrupt, k)});
        }
        std::vector<int> written;  // the wire frames with a line, in the file's order
        for (int k = first_recorded; k < frames_sent; ++k)
            if (!has(c.lost, k)) written.insert(written.end(), has(c.twice, k) ? 2 : 1, k);
        // A line's count is its frame's place among the frames the console took in, so a line
        // written twice repeats its count.
        std::set<int> taken(written.begin(), written.end());
        taken.insert(c.taken.begin(), c.taken.end());
        std::vector<Sample> samples;
        for (int frame : written) {
            const WireFrame& w = wire[static_cast<size_t>(frame)];
            const long count = std::distance(taken.begin(), taken.find(frame)) + 1;
            samples.push_back({count, w.units, w.balloon, w.switch_closed});
        }
        const Comparison found =
            compare(wire, {0.5, wire[202].time + 0.01}, samples, 0, static_cast<long>(taken.size()));
        EXPECT_EQ((std::array{found.expected, found.missing, found.duplicated, found.foreign, found.unread,
                              found.count_gaps}), c.counts) << c.what;
    }
}

}  // namespace
}  // namespace zel::test
