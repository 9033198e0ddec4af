// The session history of the patient in force: the entry written when a session is saved, and
// the suggestion and duplicate test of the session dialog.
#include <cstdio>

#include "app/form1.h"
#include "app/helpers.h"
#include "data/file_fault.h"
#include "data/profile_file.h"
#include "data/session_history_file.h"
#include "language/messages.h"

namespace zel {

namespace {

// A number as the history holds it: one blank, or the minus sign, in front.
QString signed_form(double value, QChar separator) {
    return printed_number(value, separator).chopped(1);
}

}  // namespace

QString Form1::sessionfile(const QString& last, const QString& first, const QString& id) const {
    return zel::sessionfile(data_directory, last, first, id);
}

bool Form1::write_session_entry(const QString& path) {
    const QChar separator = platform.locale.decimal_separator();
    SessionEntry entry;
    double numeric = 0;
    entry.id = numeric_session_id(session, separator, numeric) ? signed_form(numeric, separator)
                                                               : session;
    const QDateTime now = platform.clock.now();
    entry.date = platform.locale.medium_date(now.date()) + QStringLiteral(" at ") +
                 platform.locale.medium_time(now.time());
    // The history keeps one decimal of the patient file's two, and a threshold of 1.25 reads
    // 1.2 there: a tie goes to the even digit.
    entry.threshold = format_single(thresh, "###0.0", separator, Ties::to_even);
    entry.duration = signed_form(duration, separator);
    entry.trigger = message_text(inhale ? 111 : 112);
    entry.breath_holds = signed_form(breath_holds, separator);
    entry.gating_mode = gating_start_mode;
    const Written written = zel::write_session_entry(path, session, entry, session_id_saved);
    if (!written) log_file_fault(written.error, "save_session", written.path);
    return written;
}

void Form1::save_session() {
    bool saved = false;
    try {
        saved = write_session_entry(
            sessionfile(patient_last_name, patient_first_name, patient_medical_id));
    } catch (const ZelError& failure) {
        // A count in the file that isn't a number: the entry can't be placed.
        std::fprintf(stderr, "zelmoor: save_session: %s\n", qPrintable(failure.description));
        saved = false;
    }
    if (!saved) {
        stop_module_link();
        platform.boxes.MsgBox(message_text(101));
        start_module_search();
    }
}

void Form1::report_session_history_failure(const char* source) {
    const ZelError failure(err_session_history_read, QString::fromLatin1(source), message_text(102));
    platform.boxes.MsgBox(failure.description, vbCritical);
}

QString Form1::get_next_sessionID(const QString& last, const QString& first, const QString& id) {
    const QString path = sessionfile(last, first, id);
    int16_t n = 0;
    try {
        n = read_total_sessions(path);
    } catch (const ZelError&) {
        // Goes on as for an empty history.
    }
    if (n == 0) return QStringLiteral("1");
    const QString text = read_session_id(path, n);
    if (text.isEmpty()) report_session_history_failure("get_next_sessionID");
    const QChar separator = platform.locale.decimal_separator();
    double value = 0;
    if (numeric_session_id(text, separator, value)) return format_number(value + 1, "#", separator);
    return text;
}

bool Form1::session_exists(const QString& path, const QString& id) {
    int16_t n = 0;
    try {
        n = read_total_sessions(path);
    } catch (const ZelError&) {
    }
    // Read once: a count far beyond the sections would otherwise read the file that often.
    const ProfileIndex history(read_profile_file(path));
    for (int i = 1; i <= n; ++i) {
        const QString text = session_id(history, i);
        if (text.isEmpty()) report_session_history_failure("checkIfSessionExists");
        if (text == id) return true;
    }
    return false;
}

bool Form1::checkIfSessionExists(const QString& id) {
    return session_exists(sessionfile(patient_last_name, patient_first_name, patient_medical_id),
                          id);
}

}  // namespace zel
