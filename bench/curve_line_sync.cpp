// What taking the recorded curve lines to the disk costs the frame's thread: lines written at
// the recording's rate through the console's line writer, first flushed only (to the system's
// cache), then as the console does (a second of lines synchronised by the file's own thread),
// then flushed and synchronised (fdatasync) each on the frame's thread.
//
//   zel_curve_sync [seconds] [folder]      default 20 s a way, in a temporary folder
//
// The folder should be on the disk that holds the patients' files.
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <vector>

#include "fakes/rig.h"
#include "language/messages.h"

namespace {

constexpr int lines_per_second = 50;

enum class Way { flushed, console, each_line };

struct Figures {
    double median_us, p99_us, max_us;
};

Figures figures(std::vector<double> us) {
    std::sort(us.begin(), us.end());
    return {us[us.size() / 2], us[us.size() * 99 / 100], us.back()};
}

// `lines` lines at the recording's rate; the time each write took, in microseconds.
std::vector<double> record(zel::Form1& form, int lines, Way way) {
    std::vector<double> taken;
    QElapsedTimer clock;
    clock.start();
    for (int n = 0; n < lines; ++n) {
        const qint64 due = static_cast<qint64>(n) * 1000000000 / lines_per_second;
        const qint64 wait = due - clock.nsecsElapsed();
        if (wait > 0) QThread::usleep(static_cast<unsigned long>(wait / 1000));
        form.total_counts += 2;
        form.volume = (n % 250) * 0.004;
        const qint64 start = clock.nsecsElapsed();
        form.write_recording_line();
        if (way == Way::each_line && ::fdatasync(form.curve_file->handle()) != 0)
            std::perror("fdatasync");
        taken.push_back(static_cast<double>(clock.nsecsElapsed() - start) / 1000.0);
    }
    return taken;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    zel::load_default_messages();
    const int seconds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    QTemporaryDir scratch(argc > 2 ? QString::fromLocal8Bit(argv[2]) +
                                         QStringLiteral("/curve-sync-XXXXXX")
                                   : QDir::tempPath() + QStringLiteral("/curve-sync-XXXXXX"));
    if (!scratch.isValid()) {
        std::fprintf(stderr, "no scratch folder\n");
        return 1;
    }
    zel::test::Rig rig;
    zel::Form1& form = rig.form;
    form.data_directory = scratch.path();
    form.patient_last_name = QStringLiteral("Sync");
    form.patient_first_name = QStringLiteral("Line");
    form.patient_medical_id = QStringLiteral("L1");
    form.patient_defined = true;
    QDir().mkpath(scratch.path() + QStringLiteral("/Sync_Line_L1"));

    const int lines = seconds * lines_per_second;
    std::printf("%d lines at %d a second each way, in %s\n", lines, lines_per_second,
                qPrintable(scratch.path()));
    const std::pair<Way, const char*> ways[] = {{Way::flushed, "flush only"},
                                                 {Way::console, "flush, a second synced"},
                                                 {Way::each_line, "flush + fdatasync"}};
    for (const auto& [way, name] : ways) {
        form.session = QString::fromLatin1(name).replace(QLatin1Char(' '), QLatin1Char('_'));
        form.record_file_created = false;
        form.cmdRecord_Click();
        // The recording as it was before its lines were synchronised at all.
        if (way != Way::console) {
            form.curve_file = std::make_unique<zel::AppendFile>(form.record_filename, "bench");
            form.curve_file->open();
        }
        const Figures f = figures(record(form, lines, way));
        form.cmdPause_Click();
        std::printf("%-24s median %8.1f us   99th percentile %8.1f us   longest %8.1f us\n",
                    name, f.median_us, f.p99_us, f.max_us);
    }
    return 0;
}
