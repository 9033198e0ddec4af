// The soak's check of a curve file against the wire log finds each kind of fault it is there
// for, on a made-up recording: 300 frames with a cut of the line after frame 199, the module
// found again (the stream started) between frames 202 and 203.
#include "sim/curve_against_wire.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
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

// A breath hold: the volume stands still over frames 120 to 139.
void hold(Recording& r) {
    for (int k = 120; k < 140; ++k) r.wire[static_cast<size_t>(k)].units = 700;
}

void erase(std::vector<int>& frames, int frame) {
    frames.erase(std::find(frames.begin(), frames.end(), frame));
}

TEST(CurveAgainstWire, finds_each_fault_and_excuses_only_frames_before_the_module_is_found) {
    struct Case { const char* what; std::function<void(Recording&)> change; std::array<long, 6> counts; };
    // counts: expected, missing, duplicated, foreign, unread, count gaps
    const Case cases[] = {
        {"every frame once", [](Recording&) {}, 290, 0, 0, 0, 0, 0},
        {"a frame lost before the console took it in", [](Recording& r) { erase(r.written, 100); },
         290, 1, 0, 0, 0, 0},
        {"a frame taken in and not written",
         [](Recording& r) { erase(r.written, 100); r.taken_unwritten.insert(100); }, 290, 1, 0, 0, 0, 1},
        {"a frame written twice",
         [](Recording& r) { r.written.insert(std::find(r.written.begin(), r.written.end(), 100), 100); },
         290, 0, 1, 0, 0, 0},
        {"a corrupt frame written", [](Recording& r) { r.wire[150].corrupt = true; }, 289, 0, 0, 1,
         0, 0},
        {"a corrupt frame left out", [](Recording& r) { r.wire[150].corrupt = true; erase(r.written, 150); },
         289, 0, 0, 0, 0, 0},
        {"a frame lost while the volume stands still", [](Recording& r) { hold(r); erase(r.written, 130); },
         290, 1, 0, 0, 0, 0},
        {"a corrupt frame written while the volume stands still",
         [](Recording& r) { hold(r); r.wire[130].corrupt = true; }, 289, 0, 0, 1, 0, 0},
        {"frames after the cut, before the module was found, unread",
         [](Recording& r) { erase(r.written, 200); erase(r.written, 202); }, 288, 0, 0, 0, 2, 0},
        {"frames after the cut unread, and one lost once the module was found",
         [](Recording& r) {
             for (int k = 200; k < 203; ++k) erase(r.written, k);
             erase(r.written, 206);
         },
         287, 1, 0, 0, 3, 0},
        {"a hold over the moment the module is found, its first frames unread",
         [](Recording& r) {
             for (int k = 200; k < 211; ++k) r.wire[static_cast<size_t>(k)].units = 700;
             erase(r.written, 200);
             erase(r.written, 201);
         },
         288, 0, 0, 0, 2, 0},
        {"a hold over the moment the module is found, more frames lost than were sent before",
         [](Recording& r) {
             for (int k = 200; k < 211; ++k) r.wire[static_cast<size_t>(k)].units = 700;
             for (int k = 200; k < 205; ++k) erase(r.written, k);
         },
         287, 2, 0, 0, 3, 0},
        {"frames lost once the module was found",
         [](Recording& r) { erase(r.written, 204); erase(r.written, 205); }, 290, 2, 0, 0, 0, 0},
    };
    for (const Case& c : cases) {
        Recording r = every_frame_recorded();
        c.change(r);
        long last_count = 0;
        const std::vector<Sample> samples = lines_of(r, last_count);
        const Comparison found = compare(r.wire, r.starts, samples, 0, last_count);
        EXPECT_EQ((std::array{found.expected, found.missing, found.duplicated, found.foreign,
                              found.unread, found.count_gaps}),
                  c.counts)
            << c.what;
    }
}

}  // namespace
}  // namespace zel::test
