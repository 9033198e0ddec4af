#include "language/language_file.h"

#include "app/helpers.h"
#include "data/file_name.h"
#include "data/text_reader.h"

namespace zel {

QString read_display_name(QIODevice& file) {
    TextReader reader(file);
    return reader.input_field();
}

long long count_message_lines(QIODevice& file) {
    TextReader reader(file);
    reader.input_field();
    long long count = 0;
    while (!reader.at_end())
        if (!reader.line_input().isEmpty()) ++count;
    return count;
}

MessageRows read_message_lines(QIODevice& file, QStringList* added) {
    TextReader reader(file);
    reader.input_field();
    MessageRows rows;
    for (QString& row : rows) row = reader.line_input();
    while (added && added->size() < number_of_added_messages && !reader.at_end())
        added->append(reader.line_input());
    return rows;
}

QString read_companion_checksum(QIODevice& companion) {
    TextReader reader(companion);
    return text_after_colon(reader.input_field());
}

QString language_companion_path(const QString& language_path) {
    return with_suffix(language_path, QStringLiteral(".lng"), QStringLiteral(".sfv"));
}

}  // namespace zel
