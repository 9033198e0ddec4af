// The program the crash-safety test kills: it saves version after version of the patient file
// (and its companion), zel.ini and the session history with the console's own code, and
// records curve lines between them, and quarantines a patient of another release to and fro,
// until it is killed.
//   zel_crash_writer ROOT RUN FIRST_VERSION
// On standard output: "ready" once the run's curve file is open, then "v K" before version K
// is begun and "q" after each quarantine, each a single write so that a kill leaves whole
// lines only.
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <cstdio>
#include <string>

#include "crash/program/crash_console.h"
#include "data/quarantine.h"
#include "language/messages.h"

namespace {

void say(const std::string& text) {
    const std::string line = text + "\n";
    if (::write(STDOUT_FILENO, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        std::_Exit(3);
}

// A save the console would have reported in a box: the run is void.
void check_no_box(const zel::test::FakeMessageBoxes& boxes, const char* what) {
    if (boxes.shown.isEmpty()) return;
    std::fprintf(stderr, "zel_crash_writer: %s failed: %s\n", what,
                 qPrintable(boxes.shown.front()));
    std::_Exit(4);
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 4) {
        std::fprintf(stderr, "usage: zel_crash_writer ROOT RUN FIRST_VERSION\n");
        return 2;
    }
    zel::load_default_messages();
    const long run = std::atol(argv[2]);
    const long first = std::atol(argv[3]);
    zel::test::crash::CrashConsole c(QString::fromLocal8Bit(argv[1]));
    // A patient quarantined by the last load is created anew.
    QDir().mkpath(c.folder.patient_folder);
    c.start_recording_values(run, first);
    c.form.cmdRecord_Click();
    say("ready");
    long line = 0;
    for (long version = first;; ++version) {
        say("v " + std::to_string(version));
        c.set_version(version);
        c.form.save_patient_parameters();
        check_no_box(c.fakes.boxes, "the patient file");
        c.form.save_ini_file();
        check_no_box(c.fakes.boxes, "zel.ini");
        if (!c.save_session_entry()) {
            std::fprintf(stderr, "zel_crash_writer: the session history failed\n");
            return 4;
        }
        for (long n = 0; n < zel::test::crash::lines_per_version; ++n) {
            c.set_line(++line);
            c.form.write_recording_line();
        }
        // The patient of another release goes into the quarantine of the folder it lies in.
        const QString site = QFileInfo::exists(c.folder.site_a + QStringLiteral("/Move_Out_M1"))
                                 ? c.folder.site_a
                                 : QFileInfo(c.folder.site_b).canonicalFilePath();
        try {
            zel::quarantine_patient(site + QStringLiteral("/Move_Out_M1/Move.zel"),
                                    zel::message_text(342), site);
        } catch (const zel::ZelError& e) {
            std::fprintf(stderr, "zel_crash_writer: quarantine: %s\n", qPrintable(e.description));
            return 4;
        }
        say("q");
    }
}
