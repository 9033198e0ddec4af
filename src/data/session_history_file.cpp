#include "data/session_history_file.h"

#include <cerrno>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/locale_number.h"
#include "data/profile_file.h"
#include "data/whole_file.h"

namespace zel {

namespace {

const QString header_section = QStringLiteral("HEADER");
const QString total_key = QStringLiteral("TOTAL_SESSIONS");
const QString id_key = QStringLiteral("ID");

}  // namespace

QString sessionfile(const QString& data_directory, const QString& last, const QString& first,
                    const QString& id) {
    return data_directory + QLatin1Char('/') + last + QLatin1Char('_') + first +
           QLatin1Char('_') + id + QStringLiteral("/session.ini");
}

QString session_section(int n) {
    return QStringLiteral("********************SESSION********************") + QString::number(n);
}

int16_t read_total_sessions(const QString& path) {
    const QString text = read_profile_string(path, header_section, total_key, QString());
    if (text.isEmpty()) return 0;
    // The count is written by this console with a point or without decimals at all.
    return round_to_int16(locale_number(text, QLatin1Char('.'), "read_total_sessions"));
}

QString read_session_id(const QString& path, int n) {
    return read_profile_string(path, session_section(n), id_key, QString());
}

QString session_id(const ProfileIndex& history, int n) {
    return history.value(session_section(n), id_key, QString());
}

bool numeric_session_id(const QString& text, QChar separator, double& value) {
    if (text.trimmed().isEmpty()) return false;
    try {
        value = locale_number(text, separator, "numeric_session_id");
        return true;
    } catch (const ZelError&) {
        return false;
    }
}

Written write_session_entry(const QString& path, const QString& session, const SessionEntry& entry,
                            QString& session_id_saved) {
    const QString key = path + session;
    int16_t n = read_total_sessions(path);
    // A count beyond a 16-bit number would not read back, and the whole history would seem
    // gone: such an entry fails (6) before anything is written.
    if (key != session_id_saved) n = add_i16(n, 1, "write_session_entry");
    const QString section = session_section(n);
    const std::pair<const char*, const QString*> values[] = {
        {"ID", &entry.id},
        {"Date", &entry.date},
        {"Threshold", &entry.threshold},
        {"Breath_Hold_Duration", &entry.duration},
        {"Trigger_on_Inhale", &entry.trigger},
        {"Number_of_breath_holds", &entry.breath_holds},
        {"Gating Mode", &entry.gating_mode},
    };
    // The entry and the count are written together in one replacement of the file: a crash
    // leaves the history as it was or with the whole entry, never half of one.
    QByteArray contents;
    if (const Written read = read_profile_file(path, contents); !read) return read;
    const QByteArray before = contents;
    bool complete = true;
    for (const auto& [name, value] : values) {
        const QString key_name = QString::fromLatin1(name);
        if (!edit_profile(contents, section, &key_name, value)) {
            // No half entry stays behind to be counted or shown.
            edit_profile(contents, section, nullptr, nullptr);
            complete = false;
            break;
        }
    }
    const QString total = QLatin1Char(' ') + QString::number(n);
    if (complete && !edit_profile(contents, header_section, &total_key, &total)) complete = false;
    if (contents != before) {
        if (const Written written = replace_whole_file(path, contents); !written) return written;
    }
    if (!complete) return {EINVAL, path};
    session_id_saved = key;
    return {};
}

}  // namespace zel
