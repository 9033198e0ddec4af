#pragma once
// Breath-hold statistics of recorded curves, for the physicist who signs a treatment off: is
// each hold steady while the beam is on (its spread and its drift), and do the holds repeat,
// from hold to hold within a session and from one session to the next.
//
// A hold is a run of balloon state 4 that starts where the review's Align Curves counts one,
// so that hold k here is hold k there. Frames lost within a hold (a gap in the session time)
// have no volume: they count in the hold's length and are counted apart. Standard deviations
// are those of a sample (divided by n - 1); below two values there is none (NaN).
#include <QChar>
#include <QString>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "data/curve_file_reader.h"

namespace zel {

constexpr double no_value = std::numeric_limits<double>::quiet_NaN();

// The samples of one curve, as the reader returns them or the review holds them.
struct CurveSamples {
    std::span<const double> time;  // the review's time axis: frames from the first line
    std::span<const double> volume;
    std::span<const uint8_t> balloon;
    std::span<const uint8_t> patient_switch;
    std::span<const double> session_time;
    double threshold = 0;
    double count_frequency = 50;
};
CurveSamples samples_of(const CurveData& curve);

struct HoldFigures {
    int number = 0;                    // from 1, as Align Curves offers it
    double start = 0;                  // s, on the review's time axis
    double length = 0;                 // s: the hold's frames, lost ones too, at the file's rate
    long long frames_read = 0;         // the frames whose volumes the figures below are made of
    long long frames_lost = 0;         // frames missing from the file within the hold
    double mean = no_value;            // L
    double sd = no_value;              // L, of the volume within the hold
    double min = no_value;             // L
    double max = no_value;             // L
    double drift = no_value;           // L: mean of the last second minus mean of the first
    double from_threshold = no_value;  // L: mean minus the file's threshold
};

// Figures over a group of holds: a curve's or a session's.
struct HoldSummary {
    int holds = 0;
    double mean_length = no_value;     // s
    double mean_level = no_value;      // L: the mean of the holds' means
    double level_sd = no_value;        // L: how the holds' means spread, hold to hold
    double min = no_value;             // L: the lowest volume of any hold
    double max = no_value;             // L: the highest
    double largest_drift = no_value;   // L: the drift largest in size, with its sign
    double from_threshold = no_value;  // L: the mean of the holds' differences from threshold
    long long frames_lost = 0;
};

// Across groups: the mean of the groups' levels and how they spread, group to group. Groups
// without holds take no part.
struct LevelSpread {
    int groups = 0;
    int holds = 0;
    double mean_level = no_value;
    double level_sd = no_value;
};

std::vector<HoldFigures> breath_holds(const CurveSamples& curve);
HoldSummary summarise(const std::vector<const HoldFigures*>& holds);
HoldSummary summarise(const std::vector<HoldFigures>& holds);
LevelSpread spread_of(const std::vector<HoldSummary>& groups);

// One curve file read and measured; its samples are not kept.
struct CurveStatistics {
    QString path;
    QString title;  // the file's name without its folder and ending, as the review lists it
    QString session, date, time_of_day;  // from the file's header
    double threshold = 0;
    std::vector<HoldFigures> holds;
    HoldSummary summary;
};
CurveStatistics curve_statistics(const QString& path, const CurveData& curve);

struct StatisticsFailure {
    QString path;
    QString reason;  // the reader's own words and number
};

struct SessionStatistics {
    QString session;
    std::vector<size_t> curves;  // into PatientStatistics::curves, in the order recorded
    HoldSummary summary;
};

// A patient's folder: every curve file in it, by session, and the spread between sessions.
struct PatientStatistics {
    QString folder;
    std::vector<CurveStatistics> curves;  // the files read, by name
    std::vector<StatisticsFailure> failures;
    std::vector<SessionStatistics> sessions;  // in the order recorded
    LevelSpread between_sessions;
};

// Reads the curve files ("*.dat") of `folder` on `threads` threads, each file read and
// measured by itself, numbers in the machine's form (`separator`).
PatientStatistics patient_statistics(const QString& folder, QChar separator, int threads);

// Reads and measures one file; a file that can't be read fails with the reader's failure.
CurveStatistics read_curve_statistics(const QString& path, QChar separator);

}  // namespace zel
