// A long recorded session against the simulated module over the real line: 1% of the frames
// corrupted, the line cut every few minutes, a breath hold every minute, recording on
// throughout. At the end the curve file is held against the simulator's wire log, and the
// console's resident memory and open file handles against their values at the start.
//
//   zel_soak [seconds [folder]]     default 1800 s; the wire log, command log and curve file
//                                   are copied into the folder at the end
//
// Prints the figures and exits 0 only when every check held.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "language/messages.h"
#include "sim/curve_against_wire.h"
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

int run(double seconds, const QString& keep) {
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
        compare(wire, stream_starts(c.app_data.path() + QStringLiteral("/sim/module-commands.log")),
                samples, first_count, last_count);
    if (!keep.isEmpty()) {
        QDir().mkpath(keep);
        for (const QString& f : {c.sim.wire_log(), curve,
                                 c.app_data.path() + QStringLiteral("/sim/module-commands.log")})
            QFile::copy(f, keep + QLatin1Char('/') + QFileInfo(f).fileName());
    }

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
    // What the wire carried around each missing frame, and the last time the module was found.
    const std::vector<double> starts =
        stream_starts(c.app_data.path() + QStringLiteral("/sim/module-commands.log"));
    for (double t : r.missing_times) {
        double found = 0;
        for (double u : starts)
            if (u < t) found = u;
        std::printf("    missing: the frame at %.3f s (module found at %.3f s); around it:", t,
                    found);
        for (const WireFrame& w : wire)
            if (std::fabs(w.time - t) < 0.07)
                std::printf(" %.3f%s", w.time, w.corrupt ? " corrupt" : "");
        std::printf("\n");
    }
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
        std::fprintf(stderr, "usage: zel_soak [seconds [folder]], at least 60 s\n");
        return 2;
    }
    return zel::test::run(seconds, argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString());
}
