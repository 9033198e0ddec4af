#pragma once
// "zel.ini": the stamp line, then "key:value" lines with the default settings a new patient
// starts from and the language. Keys are matched exactly and in any order; unknown keys are
// counted and skipped.
#include <QIODevice>
#include <QString>

namespace zel {

struct SystemSettings {
    bool inhale = true;
    double duration = 12;
    double max_x = 1000;
    double max_y = 2;
    double min_y = -2;
    float x_scale_factor = 1;
    float thresh = 1.2f;
    QString language_file = QStringLiteral("English");
    QString found_number_format;
};

// Applies the file's lines to `settings` as they are read. Fails (ZelError) with 999 for
// another stamp or fewer than eight lines behind it, with 998 at a number format other than
// `number_format`, and with the conversion's own number (13, 6, 62) otherwise.
void read_system_settings(QIODevice& file, const QString& stamp, const QString& number_format,
                          SystemSettings& settings);

// "comma" when the system writes 1.1 with a decimal comma, else "dot": the setting that ties
// patient and settings files to the machines that can read their numbers.
QString number_format_of(QChar decimal_separator);

// The language that "<app_data_path>/zel.ini" names when the console can read it on this
// machine, otherwise "English", which the console's defaults then bring.
QString language_named_in_settings(const QString& app_data_path, QChar separator);

// The nine lines as written, without line ends; numbers with the system's separator.
QStringList system_settings_lines(const QString& stamp, const SystemSettings& settings,
                                  const QString& number_format, QChar separator);

// The number at the start of `text`: a sign, digits and at most one point, read up to the
// first other character; leading blanks are skipped, and no digit at all gives 0. A point is
// the only decimal separator, so "1,20" reads as 1. Beyond a double's range it fails with an
// overflow.
double point_only_number(const QString& text);
double point_only_number(const char* begin, const char* end);
// The same narrowed to a single, failing with an overflow beyond a single's range.
float point_only_single(const QString& text);

// A text converted by boolean rules: "True" or "False" in any case, or a number (0 is
// false), blanks around it allowed. Anything else fails with a type mismatch (13).
bool boolean_value(const QString& text, QChar separator);

}  // namespace zel
