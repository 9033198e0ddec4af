#include "crash/program/crash_console.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "data/session_history_file.h"
#include "fakes/files.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test::crash {

namespace {

const QDateTime first_moment{QDate(2026, 11, 23), QTime(8, 0, 0)};

QString scratch_folder() {
    static QTemporaryDir dir;
    return dir.path();
}

}  // namespace

CrashFolder::CrashFolder(const QString& root)
    : app_data(root + QStringLiteral("/app")),
      data_directory(root + QStringLiteral("/patients")),
      patient_folder(data_directory + QStringLiteral("/Crash_Kill_K1")),
      patient_file(patient_folder + QStringLiteral("/Crash.zel")),
      companion_file(patient_folder + QStringLiteral("/Crash.sfv")),
      settings_file(app_data + QStringLiteral("/zel.ini")),
      session_file(patient_folder + QStringLiteral("/session.ini")),
      quarantine(data_directory + QLatin1Char('/') + message_text(342)),
      site_a(root + QStringLiteral("/sites/a")),
      site_b(root + QStringLiteral("/sites/b")) {}

QString CrashFolder::curve_file(long run) const {
    return patient_folder + QStringLiteral("/Crash_") + run_session(run) + QStringLiteral(".dat");
}

QString run_session(long run) { return QStringLiteral("r%1").arg(run); }

CrashConsole::CrashConsole(const QString& root)
    : folder(root), form(fakes.platform, folder.app_data) {
    QDir().mkpath(folder.app_data);
    QDir().mkpath(folder.data_directory);
    form.end_program = [](int code) { std::exit(100 + code); };
    default_settings(form);
    form.data_directory = folder.data_directory;
    form.patient_last_name = QStringLiteral("Crash"), form.patient_first_name = "Kill";
    form.patient_medical_id = QStringLiteral("K1");
    form.patient_defined = true, form.gating_start_mode = message_text(269);
    fakes.clock.when = first_moment;
}

void CrashConsole::set_version(long version) {
    form.duration = static_cast<double>(version);
    form.breath_holds = static_cast<int16_t>(version % 30000);
    fakes.clock.when = first_moment.addSecs(version);
}

bool CrashConsole::save_session_entry() {
    // The same session saved again replaces its own entry, the first of the file.
    form.session = QStringLiteral("1");
    form.session_id_saved = read_total_sessions(folder.session_file) >= 1
                                ? folder.session_file + form.session
                                : QString();
    return form.write_session_entry(folder.session_file);
}

void CrashConsole::start_recording_values(long run, long first_version) {
    set_version(first_version);
    form.session = run_session(run);
}

void CrashConsole::set_line(long line) {
    form.total_counts = static_cast<double>(line);
    form.volume = static_cast<double>(line % 1000 - 500) * 0.004;
}

Expected::Expected() : scratch_root(scratch_folder()), scratch(scratch_root) {
    QDir().mkpath(scratch.folder.patient_folder);
}

QByteArray Expected::whole_file(long version, QString CrashFolder::*file) {
    const QString& path = scratch.folder.*file;
    const std::pair<QString, long> key{path, version};
    if (const auto found = made.find(key); found != made.end()) return found->second;
    scratch.set_version(version);
    if (file == &CrashFolder::settings_file) {
        scratch.form.save_ini_file();
    } else if (file == &CrashFolder::session_file) {
        QFile::remove(path);
        scratch.save_session_entry();
    } else {
        scratch.form.save_patient_parameters();
    }
    if (made.size() > 64) made.erase(made.begin());
    return made[key] = contents(path);
}

QByteArray Expected::curve_header(long run, long first_version) {
    scratch.start_recording_values(run, first_version);
    QByteArray bytes;
    for (const QString& line : scratch.form.curve_header_lines()) bytes += line.toLatin1() + "\r\n";
    return bytes;
}

QByteArray Expected::curve_line(long line) {
    scratch.set_line(line);
    return (scratch.form.recording_line() + QStringLiteral("\r\n")).toLatin1();
}

}  // namespace zel::test::crash
