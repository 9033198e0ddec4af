#pragma once
// The languages of a site: the ".lng" files of "<AppDataPath>/languages" that pass their
// checksum, and the one in force, whose messages replace the built-in catalogue.
#include <QChar>
#include <QString>

#include "language/language_state.h"

namespace zel {

// Scans the folder into `state` and brings the language named `language_file` in force; when
// no accepted file has that name, or the folder can't be read, English stands and
// `language_file` says so.
void load_language_catalogue(const QString& app_data_path, LanguageState& state,
                             QString& language_file);

// Replaces the catalogue's messages with the file's; English when it can't be read.
void read_language_file(const QString& path, QString& language_file);

// The language the console brings in force at its start at this site: the one its system
// settings name, as a program without the console's window finds it (the review alone).
void load_language_in_force(const QString& app_data_path, QChar separator);

}  // namespace zel
