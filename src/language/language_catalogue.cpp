// The scan of the language folder at start and the loading of the chosen language.
#include "language/language_catalogue.h"

#include <QDir>
#include <QFile>
#include <algorithm>

#include "app/form1.h"
#include "data/binary_file_stream.h"
#include "data/crc_companion.h"
#include "data/system_settings_file.h"
#include "language/language_file.h"
#include "language/messages.h"

namespace zel {

namespace {

const QString english = QStringLiteral("English");

void open_for_input(QFile& file) {
    if (!file.open(QIODevice::ReadOnly))
        throw ZelError(file.exists() ? err_path_file_access : err_file_not_found,
                       QStringLiteral("load_language_catalogue"),
                       QStringLiteral("Error opening %1").arg(file.fileName()));
}

// The ".lng" files of the folder as a file list shows them: normal files, not hidden, the
// extension in any case, in ascending order of name.
QStringList language_files(const QString& directory) {
    const QDir dir(directory);
    if (!dir.exists())
        throw ZelError(err_path_not_found, QStringLiteral("load_language_catalogue"),
                       QStringLiteral("Path not found"));
    QStringList names;
    for (const QString& name : dir.entryList(QDir::Files | QDir::NoDotAndDotDot))
        if (name.endsWith(QStringLiteral(".lng"), Qt::CaseInsensitive)) names.append(name);
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
        const int folded = a.compare(b, Qt::CaseInsensitive);
        return folded != 0 ? folded < 0 : a < b;
    });
    return names;
}

QString stored_checksum(const QString& companion_path) {
    int error_number = 0;
    if (!file_exists(companion_path, error_number)) {
        if (error_number != err_file_not_found)
            throw ZelError(error_number, QStringLiteral("load_language_catalogue"),
                           QStringLiteral("Path/File access error"));
        return QStringLiteral("-1");  // no checksum's hexadecimal can equal it
    }
    QFile companion(companion_path);
    open_for_input(companion);
    return read_companion_checksum(companion);
}

}  // namespace

void load_language_catalogue(const QString& app_data_path, LanguageState& state,
                             QString& language_file) {
    state.language_name.clear();
    state.language_path.clear();
    state.accepted_language_count = 0;
    try {
        const QString directory = app_data_path + QStringLiteral("/languages");
        const QStringList names = language_files(directory);
        const int16_t found_count = checked_i16(names.size(), "load_language_catalogue");
        std::vector<QString> found_names, found_paths;
        for (const QString& name : names) {
            const QString path = directory + QLatin1Char('/') + name;
            QFile file(path);
            open_for_input(file);
            found_names.push_back(read_display_name(file));
            found_paths.push_back(path);
        }

        for (int16_t k = 0; k < found_count; ++k) {
            const QString& path = found_paths[static_cast<size_t>(k)];
            const int32_t crc = CalculateCRC(path);
            const QString stored = stored_checksum(language_companion_path(path));
            QFile file(path);
            open_for_input(file);
            const long long lines = count_message_lines(file);
            // The seed's 255 messages, and those added since where the file has them.
            if (crc_hex(crc) == stored && lines >= number_of_definitions &&
                lines <= number_of_definitions + number_of_added_messages) {
                state.language_name.push_back(found_names[static_cast<size_t>(k)]);
                state.language_path.push_back(path);
                state.accepted_language_count =
                    add_i16(state.accepted_language_count, 1, "load_language_catalogue");
            }
        }

        bool found = false;
        if (language_file == english) {
            found = true;
            load_default_messages();
        } else {
            // No early exit: of two files with one name, the later one stays in force.
            for (size_t k = 0; k < state.language_name.size(); ++k) {
                if (state.language_name[k] != language_file) continue;
                found = true;
                read_language_file(state.language_path[k], language_file);
            }
        }
        if (!found) {
            language_file = english;
            load_default_messages();
        }
    } catch (const ZelError&) {
        language_file = english;
        load_default_messages();
    }
}

void read_language_file(const QString& path, QString& language_file) {
    try {
        QFile file(path);
        open_for_input(file);
        QStringList added;
        const MessageRows rows = read_message_lines(file, &added);
        clear_messages();
        for (int slot = 0; slot < number_of_definitions; ++slot)
            set_message_slot(slot, rows[static_cast<size_t>(slot)]);
        for (int k = 0; k < added.size(); ++k)
            if (!added[k].isEmpty())
                set_message_slot(first_added_message - LangOffset + k, added[k]);
    } catch (const ZelError&) {
        language_file = english;
        load_default_messages();
    }
}

void load_language_in_force(const QString& app_data_path, QChar separator) {
    QString language_file = language_named_in_settings(app_data_path, separator);
    LanguageState found;
    load_language_catalogue(app_data_path, found, language_file);
}

void Form1::load_language_catalogue() {
    zel::load_language_catalogue(AppDataPath, *this, language_file);
}

void Form1::read_language_file(const QString& path) {
    zel::read_language_file(path, language_file);
}

}  // namespace zel
