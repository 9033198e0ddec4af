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

struct Recording {
    std::vector<WireFrame> wire;
    std::vector<int> written;       // the wire frames with a line, in the file's order
    std::set<int> taken_unwritten;  // frames the console counted and wrote no line for
    std::vector<double> starts;
};

Recording every_frame_recorded() {
    Recording r;
    for (int k = 0; k < frames_sent; ++k) {
        const double time = 1.0 + 0.02 * k + (k > cut_after ? 3.0 : 0.0);
        // Distinct volumes, so that a line can stand for one frame only.
        r.wire.push_back({time, k * 7 % 1000 - 500, k % 40 < 20 ? 1 : 4, true, false});
    }
    for (int k = first_recorded; k < frames_sent; ++k) r.written.push_back(k);
    r.starts = {0.5, r.wire[202].time + 0.01};
    return r;
}

// The lines as the console writes them: a frame's count is its place among the frames it took
// in, so a line written twice repeats its count.
std::vector<Sample> lines_of(const Recording& r, long& last_count) {
    std::set<int> taken(r.written.begin(), r.written.end());
    taken.insert(r.taken_unwritten.begin(), r.taken_unwritten.end());
    std::vector<Sample> samples;
    for (int frame : r.written) {
        const long count = std::distance(taken.begin(), taken.find(frame)) + 1;
        const WireFrame& w = r.wire[static_cast<size_t>(frame)];
        samples.push_back({count, w.units, w.balloon, w.switch_closed});
    }
    last_count = static_cast<long>(taken.size());
    return samples;
}

TEST(CurveAgainstWire, finds_each_fault_and_excuses_only_frames_before_the_module_is_found) {
    // The frames lost (no line), taken in without a line, written twice and corrupt; the frames
    // [from, to) over which the volume stands still, as in a breath hold.
    struct Case {
        const char* what;
        std::vector<int> lost, taken, twice, corrupt;
        std::pair<int, int> still;
        std::array<long, 6> counts;  // expected, missing, duplicated, foreign, unread, count gaps
    };
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
    for (const Case& c : cases) {
        Recording r = every_frame_recorded();
        for (int k = c.still.first; k < c.still.second; ++k) r.wire[static_cast<size_t>(k)].units = 700;
        for (int k : c.corrupt) r.wire[static_cast<size_t>(k)].corrupt = true;
        for (int k : c.lost) r.written.erase(std::find(r.written.begin(), r.written.end(), k));
        for (int k : c.twice) r.written.insert(std::find(r.written.begin(), r.written.end(), k), k);
        r.taken_unwritten.insert(c.taken.begin(), c.taken.end());
        long last_count = 0;
        const std::vector<Sample> samples = lines_of(r, last_count);
        const Comparison found = compare(r.wire, r.starts, samples, 0, last_count);
        EXPECT_EQ((std::array{found.expected, found.missing, found.duplicated, found.foreign, found.unread,
                              found.count_gaps}), c.counts) << c.what;
    }
}

}  // namespace
}  // namespace zel::test
