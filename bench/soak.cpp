// A long recorded session against the simulated module over the real line: 1% of the frames
// corrupted, the line cut every few minutes, a breath hold every minute, recording on
// throughout. At the end the curve file is held against the simulator's wire log, and the
// console's resident memory and open file handles against their values at the start.
//
//   zel_soak [seconds]          default 1800
//
// Prints the figures and exits 0 only when every check held.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "language/messages.h"
#include "sim/live_console.h"

namespace zel::test {
namespace {

constexpr double hold_interval = 60;         // s between the operator's arming of two holds
constexpr double first_cut = 50;             // s into the run
constexpr double cut_interval = 170;         // s between two cuts of the line
constexpr double cut_length = 3;             // s the line stays dead
constexpr double rss_growth_allowed = 4096;  // kB

// The chart's strokes go nowhere: the recording fake would keep them all.
class NullSurface final : public ChartSurface {
public:
    void set_scale(double, double, double, double) override {}
    void clear() override {}
    void set_line_style(LineStyle) override {}
    void set_line_width(int) override {}
    void set_fore_color(Rgb) override {}
    void line(double, double, double, double) override {}
    void line(double, double, double, double, Rgb) override {}
    void box(double, double, double, double, Rgb) override {}
};

long resident_kb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:")) return line.mid(6).simplified().split(' ').front().toLong();
    return -1;
}

// What each open file handle of the process refers to.
std::vector<std::string> open_handles() {
    std::vector<std::string> handles;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code unreadable;
        handles.push_back(entry.path().filename().string() + " " +
                          std::filesystem::read_symlink(entry.path(), unreadable).string());
    }
    std::sort(handles.begin(), handles.end());
    return handles;
}

struct WireFrame {
    double time;
    int units;
    int balloon;
    bool switch_closed;
    bool corrupt;
};

struct Sample {
    long count;  // the console's frame count, from the line's session time
    int units;
    int balloon;
    bool switch_closed;
};

bool same(const WireFrame& w, const Sample& s) {
    return w.units == s.units && w.balloon == s.balloon && w.switch_closed == s.switch_closed;
}

std::vector<WireFrame> wire_frames(const QString& path) {
    std::vector<WireFrame> frames;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return frames;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> w = line.simplified().split(' ');
        if (w.size() < 10 || w[1] != "data") continue;
        const int units = (w[5] + w[6]).toInt(nullptr, 16);
        frames.push_back({w[0].toDouble(), units >= 32768 ? units - 65536 : units,
                          w[4].toInt(nullptr, 16), (w[3].toInt(nullptr, 16) & 0x02) != 0,
                          w.size() > 10 && w[10] == "corrupt"});
    }
    return frames;
}

// Times of the console's uploads of its settings: each one follows a search that found the
// module.
std::vector<double> upload_times(const QString& command_log) {
    std::vector<double> times;
    QFile file(command_log);
    if (!file.open(QIODevice::ReadOnly)) return times;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> w = line.simplified().split(' ');
        if (w.size() >= 2 && !line.startsWith('#') && w[1] == "L") times.push_back(w[0].toDouble());
    }
    return times;
}

std::vector<Sample> curve_samples(const QString& path, bool& well_formed) {
    std::vector<Sample> samples;
    well_formed = false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return samples;
    const QByteArray all = file.readAll();
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

struct Comparison {
    long expected = 0;    // good frames that had to be recorded
    long missing = 0;     // of those, not in the file
    long duplicated = 0;  // lines that repeat a frame already written
    long foreign = 0;     // lines that stand for no good frame on the wire (a corrupt one's)
    long unread = 0;      // good frames that reached the line before the module was found again
    long count_gaps = 0;  // frames the console took in and did not write (by its own count)
};

// Walks the good frames of the wire from the one the first line stands for, matching each line
// to the next good frame with its volume, balloon state and switch. Frames passed over are
// missing unless they came after a cut and before the search had found the module again
// (uploaded its settings): until then the console may not have had the port open.
Comparison compare(const std::vector<WireFrame>& wire, const std::vector<double>& uploads,
                   const std::vector<Sample>& samples, long first_count, long last_count) {
    Comparison r;
    std::vector<WireFrame> good;
    for (const WireFrame& w : wire)
        if (!w.corrupt) good.push_back(w);
    // The cuts: silences of the wire longer than a second.
    std::vector<std::pair<double, double>> unread_windows;
    for (size_t k = 1; k < wire.size(); ++k) {
        if (wire[k].time - wire[k - 1].time <= 1.0) continue;
        double found = 1e18;
        for (double u : uploads)
            if (u > wire[k - 1].time) {
                found = u;
                break;
            }
        unread_windows.emplace_back(wire[k - 1].time, found);
    }
    const auto excused = [&](double t) {
        for (const auto& [from, to] : unread_windows)
            if (t > from && t < to) return true;
        return false;
    };
    if (samples.empty()) return r;
    if (samples.front().count != first_count + 1)
        r.count_gaps += std::labs(samples.front().count - first_count - 1);
    if (samples.back().count != last_count)
        r.count_gaps += std::labs(last_count - samples.back().count);
    for (size_t i = 1; i < samples.size(); ++i) {
        const long step = samples[i].count - samples[i - 1].count;
        if (step > 1) r.count_gaps += step - 1;
        if (step < 1) ++r.duplicated;
    }

    const auto run_at = [&](size_t j, size_t i, size_t length) {
        for (size_t n = 0; n < length && i + n < samples.size(); ++n)
            if (j + n >= good.size() || !same(good[j + n], samples[i + n])) return false;
        return true;
    };
    constexpr size_t run_length = 25;
    size_t k = 0;
    while (k < good.size() && !run_at(k, 0, run_length)) ++k;
    if (k == good.size()) {
        r.foreign = static_cast<long>(samples.size());
        return r;
    }
    const size_t first_matched = k;
    size_t last_matched = k;
    for (size_t i = 0; i < samples.size(); ++i) {
        if (k < good.size() && same(good[k], samples[i])) {
            last_matched = k++;
            continue;
        }
        if (i > 0 && samples[i].count <= samples[i - 1].count) continue;  // counted above
        size_t j = k;
        while (j < good.size() && !run_at(j, i, run_length)) ++j;
        if (j == good.size()) {
            ++r.foreign;
            continue;
        }
        for (size_t n = k; n < j; ++n) (excused(good[n].time) ? r.unread : r.missing) += 1;
        last_matched = j;
        k = j + 1;
    }
    r.expected = static_cast<long>(last_matched - first_matched + 1) - r.unread;
    return r;
}

// The simulator's part: the corrupted share, and the cuts, each well before the run's end.
std::string script_for(double seconds, long& cuts) {
    std::string script = "corrupt 0.01\n";
    cuts = 0;
    double last = 0;
    for (double t = first_cut; t + 10 < seconds; t += cut_interval) {
        script += "wait " + std::to_string(t - last) + "\ncut " + std::to_string(cut_length) + "\n";
        last = t;
        ++cuts;
    }
    return script + "wait 86400\nquit\n";
}

int run(double seconds) {
    NullSurface chart;
    LiveConsole c(false, &chart);
    struct ClosePort {
        QtSerialPort& port;
        ~ClosePort() {
            if (port.PortOpen()) port.set_PortOpen(false);
        }
    } close_port{c.real_port};
    Form1& form = c.form;
    form.duration = 10;
    form.thresh = 1.3f;
    long cuts_planned = 0;
    if (!c.sim.start(QByteArray::fromStdString(script_for(seconds, cuts_planned)),
                     {QStringLiteral("--seed"), QStringLiteral("29")})) {
        std::fprintf(stderr, "soak: the simulator did not start\n");
        return 1;
    }
    if (!c.link_up()) {
        std::fprintf(stderr, "soak: the link never came up\n");
        return 1;
    }
    form.data_directory = c.app_data.path();
    form.patient_last_name = QStringLiteral("Soak");
    form.patient_first_name = QStringLiteral("Long");
    form.patient_medical_id = QStringLiteral("S1");
    form.session = QStringLiteral("1");
    form.cmdRecord.Enabled = true;
    QDir().mkpath(c.app_data.path() + QStringLiteral("/Soak_Long_S1"));
    const long first_count = std::lround(form.total_counts);
    form.cmdRecord_Click();
    const QString curve = form.curve_file_path();

    const long rss_start = resident_kb();
    const std::vector<std::string> fds_start = open_handles();
    const double start = monotonic_seconds();
    double next_hold = start + hold_interval / 2;
    int holds = 0, losses_found = 0, arms = 0;
    bool searching = false;
    int16_t last_state = form.b_state;
    double next_report = start + 60;
    // After the first minute: the console's logs are open by then (the checksum log opens at
    // the first corrupt frame and stays open for the session).
    long rss_warm = -1;
    std::vector<std::string> fds_warm;
    while (monotonic_seconds() - start < seconds) {
        c.run_until([] { return false; }, 50);
        const double now = monotonic_seconds();
        if (form.b_state == 4 && last_state != 4) ++holds;
        last_state = form.b_state;
        const bool lost = form.Timer_module_connect->Enabled();
        if (lost && !searching) ++losses_found;
        searching = lost;
        if (now >= next_hold && !lost && form.Timer_HeartBeat->Enabled() && form.b_state == 1 &&
            !form.volume_in_threshold_region()) {
            form.Form_KeyDown(32, 0);
            ++arms;
            next_hold += hold_interval;
        }
        if (now >= next_report) {
            if (rss_warm < 0) {
                rss_warm = resident_kb();
                fds_warm = open_handles();
            }
            std::fprintf(stderr, "soak: %.0f s, %d holds, %d losses, rss %ld kB, fds %ld\n",
                         now - start, holds, losses_found, resident_kb(), open_handles().size());
            next_report += 60;
        }
    }
    const long rss_end = resident_kb();
    const std::vector<std::string> fds_end = open_handles();
    form.cmdPause_Click();
    const long last_count = std::lround(form.total_counts);
    c.sim.stop();

    const std::vector<WireFrame> wire = wire_frames(c.sim.wire_log());
    long corrupt_sent = 0;
    for (const WireFrame& w : wire) corrupt_sent += w.corrupt;
    long cuts = 0;
    for (size_t k = 1; k < wire.size(); ++k) cuts += wire[k].time - wire[k - 1].time > 1.0;
    bool well_formed = false;
    const std::vector<Sample> samples = curve_samples(curve, well_formed);
    const Comparison r =
        compare(wire, upload_times(c.app_data.path() + QStringLiteral("/sim/module-commands.log")),
                samples, first_count, last_count);

    std::printf("soak over %.0f s of real time\n", seconds);
    std::printf("  frames sent %zu: good %ld, corrupt %ld\n", wire.size(),
                static_cast<long>(wire.size()) - corrupt_sent, corrupt_sent);
    std::printf("  curve file: %zu lines%s\n", samples.size(),
                well_formed ? "" : " (NOT well formed)");
    std::printf(
        "  good frames due in the file %ld: missing %ld, duplicated %ld, lines for no good "
        "frame %ld, frames the console took in and did not write %ld\n",
        r.expected, r.missing, r.duplicated, r.foreign, r.count_gaps);
    std::printf("  frames sent after a cut before the module was found again: %ld\n", r.unread);
    std::printf("  cuts on the wire %ld, losses found by the console %d\n", cuts, losses_found);
    std::printf("  holds armed %d, holds begun %d\n", arms, holds);
    std::printf("  resident memory %ld kB at the start, %ld kB after a minute, %ld kB at the end\n",
                rss_start, rss_warm, rss_end);
    std::printf("  open file handles %zu at the start, %zu after a minute, %zu at the end\n",
                fds_start.size(), fds_warm.size(), fds_end.size());
    // Handles opened since the start must be the console's logs, opened once.
    bool only_logs = true;
    for (const std::string& h : fds_end) {
        if (std::find(fds_start.begin(), fds_start.end(), h) != fds_start.end()) continue;
        const bool log = h.find(c.app_data.path().toStdString() + "/LOG/") != std::string::npos;
        // The listing of the handles opens the folder it reads.
        const bool listing = h.find("/fd") != std::string::npos;
        if (!listing) std::printf("    opened since the start: %s\n", h.c_str() + h.find(' ') + 1);
        only_logs &= log || listing;
    }

    const bool held = well_formed && !samples.empty() && r.missing == 0 && r.duplicated == 0 &&
                      r.foreign == 0 && r.count_gaps == 0 && corrupt_sent > 0 &&
                      cuts == cuts_planned && losses_found == cuts &&
                      arms >= static_cast<int>((seconds - hold_interval / 2) / hold_interval) &&
                      holds >= arms - cuts && rss_end - rss_start <= rss_growth_allowed &&
                      fds_end.size() == fds_warm.size() && only_logs && c.ended.empty();
    std::printf("%s\n", held ? "PASSED" : "FAILED");
    return held ? 0 : 1;
}

}  // namespace
}  // namespace zel::test

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication app(argc, argv);
    zel::load_default_messages();
    const double seconds = argc > 1 ? std::atof(argv[1]) : 1800;
    if (seconds < 60) {
        std::fprintf(stderr, "usage: zel_soak [seconds], at least 60\n");
        return 2;
    }
    return zel::test::run(seconds);
}
