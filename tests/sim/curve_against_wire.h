#pragma once
// A recorded curve file held against the simulated module's wire log: every good data frame
// that reached the console is a line of the file, once and in order, and no corrupt frame is.
#include <QString>
#include <vector>

namespace zel::test {

// A data frame as the wire log has it.
struct WireFrame {
    double time;  // the simulator's seconds
    int units;    // volume, in units of 0.004 L
    int balloon;
    bool switch_closed;
    bool corrupt;  // its checksum spoiled on purpose
};

// A sample line of the curve file.
struct Sample {
    long count;  // the console's frame count, from the line's session time
    int units, balloon;
    bool switch_closed;
};

std::vector<WireFrame> wire_frames(const QString& wire_log);
// Times the console started the stream ("E" in the command log): each ends a search that
// found the module and confirmed its settings.
std::vector<double> stream_starts(const QString& command_log);
// The sample lines behind the header; `well_formed` false when a line is not a sample or the
// file does not end with a line end.
std::vector<Sample> curve_samples(const QString& curve_file, bool& well_formed);

struct Comparison {
    long expected = 0;    // good frames that had to be recorded
    long missing = 0;     // of those, not in the file
    long duplicated = 0;  // lines that repeat a frame already written
    long foreign = 0;     // lines that stand for no good frame on the wire (a corrupt one's)
    long unread = 0;      // good frames that reached the line before the module was found again
    long count_gaps = 0;  // frames the console took in and did not write (by its own count)
    std::vector<double> missing_times;  // the wire's times of the missing frames
};

// `first_count`: the console's frame count when recording began; `last_count`: when it ended.
Comparison compare(const std::vector<WireFrame>& wire, const std::vector<double>& starts,
                   const std::vector<Sample>& samples, long first_count, long last_count);

}  // namespace zel::test
