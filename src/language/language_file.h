#pragma once
// Language files (".lng"): a first field with the language's display name, then one line per
// message from 101 to 355, taken whole, and, if the file has them, one line for each message
// added from 357 on. Beside each lies a companion (".sfv") whose first
// field holds the file's checksum, alone or behind some text and a colon.
#include <QIODevice>
#include <QString>
#include <array>

#include "language/messages.h"

namespace zel {

using MessageRows = std::array<QString, number_of_definitions>;

// The display name: the file's first field.
QString read_display_name(QIODevice& file);

// The lines behind the first field, not counting empty ones.
long long count_message_lines(QIODevice& file);

// The first 255 lines behind the first field, empty ones included. Fails with number 62 when
// the file ends before. `added`, if given, takes the lines behind them, at most one for each
// added message.
MessageRows read_message_lines(QIODevice& file, QStringList* added = nullptr);

// The checksum text of a companion: its first field behind the first colon, untrimmed.
QString read_companion_checksum(QIODevice& companion);

// The companion's path: the file's ".lng" ending, exactly as written, replaced by ".sfv".
QString language_companion_path(const QString& language_path);

}  // namespace zel
