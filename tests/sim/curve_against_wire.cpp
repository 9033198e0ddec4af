#include "sim/curve_against_wire.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <map>

#include "fakes/files.h"

namespace zel::test {

namespace {

// The values a line keeps of a frame.
template <class A, class B>
bool same(const A& a, const B& b) {
    return a.units == b.units && a.balloon == b.balloon && a.switch_closed == b.switch_closed;
}

}  // namespace

std::vector<WireFrame> wire_frames(const QString& path) {
    std::vector<WireFrame> frames;
    for (const QByteArray& line : contents(path).split('\n')) {
        const QList<QByteArray> w = line.simplified().split(' ');
        if (w.size() < 10 || w[1] != "data") continue;
        frames.push_back({w[0].toDouble(), static_cast<int16_t>((w[5] + w[6]).toInt(nullptr, 16)),
                          w[4].toInt(nullptr, 16), (w[3].toInt(nullptr, 16) & 0x02) != 0,
                          w.size() > 10 && w[10] == "corrupt"});
    }
    return frames;
}

std::vector<double> stream_starts(const QString& command_log) {
    std::vector<double> times;
    for (const QByteArray& line : contents(command_log).split('\n')) {
        const QList<QByteArray> w = line.simplified().split(' ');
        if (w.size() >= 2 && !line.startsWith('#') && w[1] == "E") times.push_back(w[0].toDouble());
    }
    return times;
}

std::vector<Sample> curve_samples(const QString& path, bool& well_formed) {
    std::vector<Sample> samples;
    well_formed = false;
    const QByteArray all = contents(path);
    if (!all.endsWith("\r\n")) return samples;
    bool in_curve = false;
    for (const QByteArray& line : all.chopped(2).split('\n')) {
        const QByteArray text = line.endsWith('\r') ? line.chopped(1) : line;
        if (!in_curve) {
            in_curve = text == "HeaderEnd";
            continue;
        }
        const QList<QByteArray> f = text.split(';');
        if (f.size() != 7) return samples;
        samples.push_back({std::lround(f[0].toDouble() * 50),
                           static_cast<int>(std::lround(f[1].toDouble() / 0.004)), f[2].toInt(),
                           f[3].trimmed() == "1"});
    }
    well_formed = in_curve;
    return samples;
}

// Walks the good frames of the wire from the one the first line stands for, matching each line
// to the next good frame with its volume, balloon state and switch. Frames passed over are
// missing unless they came after a cut and before the search had found the module again
// (started the stream): until then the console may have had the port closed, or reopened it
// to search again.
Comparison compare(const std::vector<WireFrame>& wire, const std::vector<double>& starts,
                   const std::vector<Sample>& samples, long first_count, long last_count) {
    Comparison r;
    std::vector<WireFrame> good;
    std::ranges::copy_if(wire, std::back_inserter(good), [](const WireFrame& w) { return !w.corrupt; });
    // The cuts: silences of the wire longer than a second.
    std::vector<std::pair<double, double>> unread_windows;
    for (size_t k = 1; k < wire.size(); ++k) {
        if (wire[k].time - wire[k - 1].time <= 1.0) continue;
        const auto found = std::upper_bound(starts.begin(), starts.end(), wire[k - 1].time);
        unread_windows.emplace_back(wire[k - 1].time, found == starts.end() ? 1e18 : *found);
    }
    const auto excused = [&](double t) {
        return std::any_of(unread_windows.begin(), unread_windows.end(),
                           [t](const auto& window) { return t > window.first && t < window.second; });
    };
    if (samples.empty()) return r;
    r.count_gaps =
        std::labs(samples.front().count - first_count - 1) + std::labs(last_count - samples.back().count);
    for (size_t i = 1; i < samples.size(); ++i) {
        const long step = samples[i].count - samples[i - 1].count;
        if (step > 1) r.count_gaps += step - 1;
        if (step < 1) ++r.duplicated;
    }

    // The first frame from `from` on that stands for line i, confirmed by the lines after it
    // each standing for a frame close behind the last: frames passed over between two lines
    // are few, so a line whose volume happens to recur further on is not taken for it.
    constexpr size_t confirming_lines = 8, close_behind = 10;
    const auto confirmed = [&](size_t j, size_t i) {
        size_t at = j;
        for (size_t n = i + 1; n < samples.size() && n <= i + confirming_lines; ++n) {
            if (samples[n].count <= samples[n - 1].count) continue;  // a repeat, counted apart
            size_t next = at + 1;
            while (next < good.size() && next <= at + close_behind && !same(good[next], samples[n]))
                ++next;
            if (next >= good.size() || next > at + close_behind) return false;
            at = next;
        }
        return true;
    };
    const auto find = [&](size_t from, size_t i) {
        for (size_t j = from; j < good.size(); ++j)
            if (same(good[j], samples[i]) && confirmed(j, i)) return j;
        return good.size();
    };
    size_t k = find(0, 0);
    if (k == good.size()) {
        r.foreign = static_cast<long>(samples.size());
        return r;
    }
    std::map<size_t, size_t> unread_alike;  // by the first frame of a run of alike frames
    const size_t first_matched = k;
    size_t last_matched = k;
    for (size_t i = 0; i < samples.size(); ++i) {
        if (k < good.size() && same(good[k], samples[i])) {
            last_matched = k++;
            continue;
        }
        if (i > 0 && samples[i].count <= samples[i - 1].count) continue;  // counted above
        const size_t j = find(k, i);
        if (j == good.size()) {
            ++r.foreign;
            continue;
        }
        for (size_t n = k; n < j; ++n) {
            // Within frames that carry the same values (a hold's closed airway) the lines can't
            // tell which of them went unread: any of them sent before the module was found
            // may stand for the one passed over.
            size_t first_alike = n;
            while (first_alike > 0 && same(good[first_alike - 1], good[n])) --first_alike;
            size_t excused_alike = 0;
            for (size_t m = first_alike; m <= n; ++m) excused_alike += excused(good[m].time);
            if (excused_alike > unread_alike[first_alike]) {
                ++unread_alike[first_alike];
                ++r.unread;
            } else {
                ++r.missing;
                r.missing_times.push_back(good[n].time);
            }
        }
        last_matched = j;
        k = j + 1;
    }
    r.expected = static_cast<long>(last_matched - first_matched + 1) - r.unread;
    return r;
}

}  // namespace zel::test
