#include "review/hold_statistics.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <optional>
#include <thread>

#include "app/zel_error.h"
#include "review/patient_curves.h"

namespace zel {

namespace {

// The frames a gap in the session time stands for, at the review's fixed frame period.
long long frames_missing(double step) {
    if (follows_by_one_frame(step) || !(step > 0.02)) return 0;
    return std::max(0LL, std::llround(std::min(step / 0.02, 1e9)) - 1);
}

double sample_sd(double sum_of_squares, long long n) {
    return n < 2 ? no_value : std::sqrt(sum_of_squares / static_cast<double>(n - 1));
}

// Mean and sample standard deviation of the values given, NaN ones left out.
std::pair<double, double> mean_and_sd(const std::vector<double>& values) {
    double sum = 0;
    long long n = 0;
    for (double v : values)
        if (!std::isnan(v)) sum += v, ++n;
    if (n == 0) return {no_value, no_value};
    const double mean = sum / static_cast<double>(n);
    double squares = 0;
    for (double v : values)
        if (!std::isnan(v)) squares += (v - mean) * (v - mean);
    return {mean, sample_sd(squares, n)};
}

// The hold that starts at sample `first` and lasts while the balloon stays inflated.
HoldFigures measure_hold(const CurveSamples& c, size_t first, int number, long long per_second) {
    HoldFigures hold;
    hold.number = number;
    hold.start = c.time[first];
    size_t end = first + 1;
    while (end < c.balloon.size() && c.balloon[end] == 4) ++end;
    // Each frame's place in the hold, lost frames counted: the seconds at each end are those
    // of the hold, whatever the file lost.
    auto each_frame = [&](auto&& take) {
        long long offset = 0;
        for (size_t j = first; j < end; ++j) {
            if (j > first) offset += 1 + frames_missing(c.session_time[j] - c.session_time[j - 1]);
            take(offset, c.volume[j]);
        }
        return offset + 1;
    };
    double sum = 0;
    hold.min = hold.max = c.volume[first];
    const long long frames = each_frame([&](long long, double v) {
        sum += v;
        hold.min = std::min(hold.min, v);
        hold.max = std::max(hold.max, v);
    });
    const auto read = static_cast<long long>(end - first);
    hold.frames_read = read;
    hold.frames_lost = frames - read;
    hold.length = static_cast<double>(frames) / c.count_frequency;
    hold.mean = sum / static_cast<double>(read);
    double squares = 0, head = 0, tail = 0;
    long long in_head = 0, in_tail = 0;
    each_frame([&](long long offset, double v) {
        squares += (v - hold.mean) * (v - hold.mean);
        if (offset < per_second) head += v, ++in_head;
        if (offset >= frames - per_second) tail += v, ++in_tail;
    });
    hold.sd = sample_sd(squares, read);
    if (in_head > 0 && in_tail > 0)
        hold.drift = tail / static_cast<double>(in_tail) - head / static_cast<double>(in_head);
    hold.from_threshold = hold.mean - c.threshold;
    return hold;
}

// Sessions in the order recorded: by the date and time in their headers, then by number.
struct Recorded {
    QDateTime when;
    QString session, title;
};

Recorded recorded(const CurveStatistics& curve) {
    const QDate date = QDate::fromString(curve.date, QStringLiteral("MM-dd-yyyy"));
    const QTime time = QTime::fromString(curve.time_of_day, QStringLiteral("hh:mm:ss"));
    return {QDateTime(date, time.isValid() ? time : QTime(0, 0)), curve.session, curve.title};
}

bool before(const Recorded& a, const Recorded& b) {
    // Files without a date come last.
    if (a.when.isValid() != b.when.isValid()) return a.when.isValid();
    if (a.when != b.when) return a.when < b.when;
    bool numbered_a = false, numbered_b = false;
    const qlonglong na = a.session.toLongLong(&numbered_a), nb = b.session.toLongLong(&numbered_b);
    if (numbered_a && numbered_b && na != nb) return na < nb;
    if (a.session != b.session) return a.session < b.session;
    return a.title < b.title;
}

QString failure_text(const ZelError& e) {
    return e.description + QStringLiteral(" (") + QString::number(e.number) + QLatin1Char(')');
}

}  // namespace

CurveSamples samples_of(const CurveData& curve) {
    return {curve.time,         curve.volume,    curve.balloon,        curve.patient_switch,
            curve.session_time, curve.threshold, curve.count_frequency};
}

std::vector<HoldFigures> breath_holds(const CurveSamples& c) {
    std::vector<HoldFigures> holds;
    const size_t n = std::min({c.time.size(), c.volume.size(), c.balloon.size(),
                               c.patient_switch.size(), c.session_time.size()});
    if (n < 2) return holds;
    const CurveSamples curve{c.time.first(n),           c.volume.first(n),       c.balloon.first(n),
                             c.patient_switch.first(n), c.session_time.first(n), c.threshold,
                             c.count_frequency};
    const long long per_second =
        c.count_frequency >= 1 ? std::llround(std::min(c.count_frequency, 1e6)) : 1;
    // The holds where the review finds them: a breath-hold sample after free breathing, with
    // no frame lost before it; the first sample of a file is drawn as lost.
    int last_state = 255;
    double last_stamp = curve.session_time[0] - 0.02;
    for (size_t i = 1; i < n; ++i) {
        int state = sample_line_state(curve.balloon[i], curve.patient_switch[i]);
        if (!follows_by_one_frame(curve.session_time[i] - last_stamp)) state = 3;
        last_stamp = curve.session_time[i];
        if (state == 0 && last_state == 1)
            holds.push_back(measure_hold(curve, i, static_cast<int>(holds.size()) + 1, per_second));
        last_state = state;
    }
    return holds;
}

HoldSummary summarise(const std::vector<const HoldFigures*>& holds) {
    HoldSummary s;
    s.holds = static_cast<int>(holds.size());
    if (holds.empty()) return s;
    std::vector<double> lengths, means, differences;
    for (const HoldFigures* h : holds) {
        lengths.push_back(h->length);
        means.push_back(h->mean);
        differences.push_back(h->from_threshold);
        s.frames_lost += h->frames_lost;
        if (std::isnan(s.min) || h->min < s.min) s.min = h->min;
        if (std::isnan(s.max) || h->max > s.max) s.max = h->max;
        if (!std::isnan(h->drift) &&
            (std::isnan(s.largest_drift) || std::fabs(h->drift) > std::fabs(s.largest_drift)))
            s.largest_drift = h->drift;
    }
    s.mean_length = mean_and_sd(lengths).first;
    std::tie(s.mean_level, s.level_sd) = mean_and_sd(means);
    s.from_threshold = mean_and_sd(differences).first;
    return s;
}

HoldSummary summarise(const std::vector<HoldFigures>& holds) {
    std::vector<const HoldFigures*> all;
    for (const HoldFigures& h : holds) all.push_back(&h);
    return summarise(all);
}

LevelSpread spread_of(const std::vector<HoldSummary>& groups) {
    LevelSpread spread;
    std::vector<double> levels;
    for (const HoldSummary& g : groups) {
        if (g.holds == 0) continue;
        ++spread.groups;
        spread.holds += g.holds;
        levels.push_back(g.mean_level);
    }
    std::tie(spread.mean_level, spread.level_sd) = mean_and_sd(levels);
    return spread;
}

CurveStatistics curve_statistics(const QString& path, const CurveData& curve) {
    CurveStatistics s;
    s.path = path;
    s.title = QFileInfo(path).completeBaseName();
    s.session = curve.session;
    s.date = curve.date;
    s.time_of_day = curve.time_of_day;
    s.threshold = curve.threshold;
    s.holds = breath_holds(samples_of(curve));
    s.summary = summarise(s.holds);
    return s;
}

CurveStatistics read_curve_statistics(const QString& path, QChar separator) {
    // The reader takes a missing file for nothing to do; here it is a file that can't be read.
    if (!QFileInfo(path).isFile())
        throw ZelError(err_file_not_found, QStringLiteral("LoadCurveData2"),
                       QStringLiteral("File not found"));
    CurveData curve;
    LoadCurveData2(path, curve, separator);
    return curve_statistics(path, curve);
}

PatientStatistics patient_statistics(const QString& folder, QChar separator, int threads) {
    PatientStatistics patient;
    patient.folder = folder;
    const QDir dir(folder);
    const QStringList names =
        dir.entryList({QStringLiteral("*.dat")}, QDir::Files, QDir::Name | QDir::IgnoreCase);
    const auto count = static_cast<size_t>(names.size());
    std::vector<std::optional<CurveStatistics>> read(count);
    std::vector<QString> reasons(count);
    // Each thread takes the next file until none is left; a file's samples are let go as soon
    // as it is measured, so that a long history is not held in memory at once.
    std::atomic<size_t> next{0};
    const auto work = [&] {
        for (size_t k; (k = next++) < count;) {
            const QString path = dir.filePath(names[static_cast<qsizetype>(k)]);
            try {
                read[k] = read_curve_statistics(path, separator);
            } catch (const ZelError& e) {
                reasons[k] = failure_text(e);
            } catch (const std::exception& e) {
                reasons[k] = QString::fromLocal8Bit(e.what());
            }
        }
    };
    std::vector<std::thread> pool;
    for (int t = 1; t < std::max(threads, 1); ++t) pool.emplace_back(work);
    work();
    for (std::thread& thread : pool) thread.join();
    for (size_t k = 0; k < count; ++k) {
        if (read[k])
            patient.curves.push_back(std::move(*read[k]));
        else
            patient.failures.push_back(
                {dir.filePath(names[static_cast<qsizetype>(k)]), reasons[k]});
    }

    // A session is the files whose headers name it; a file without one is a session of its own.
    std::vector<size_t> order(patient.curves.size());
    for (size_t k = 0; k < order.size(); ++k) order[k] = k;
    std::vector<Recorded> when;
    for (const CurveStatistics& curve : patient.curves) when.push_back(recorded(curve));
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return before(when[a], when[b]); });
    for (size_t k : order) {
        const CurveStatistics& curve = patient.curves[k];
        auto same = std::find_if(patient.sessions.begin(), patient.sessions.end(),
                                 [&](const SessionStatistics& s) {
                                     return !curve.session.isEmpty() && s.session == curve.session;
                                 });
        if (same == patient.sessions.end()) {
            patient.sessions.push_back({curve.session, {}, {}});
            same = patient.sessions.end() - 1;
        }
        same->curves.push_back(k);
    }
    std::vector<HoldSummary> levels;
    for (SessionStatistics& session : patient.sessions) {
        std::vector<const HoldFigures*> holds;
        for (size_t k : session.curves)
            for (const HoldFigures& h : patient.curves[k].holds) holds.push_back(&h);
        session.summary = summarise(holds);
        levels.push_back(session.summary);
    }
    patient.between_sessions = spread_of(levels);
    return patient;
}

}  // namespace zel
