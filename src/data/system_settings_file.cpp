#include "data/system_settings_file.h"

#include <QStringList>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <string>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/text_reader.h"

namespace zel {

namespace {

constexpr int lines_of_a_whole_file = 9;

[[noreturn]] void fail(int number, const char* description) {
    throw ZelError(number, QStringLiteral("load_system_settings"),
                   QString::fromLatin1(description));
}

// Digits with an optional decimal part, already stripped of sign and separator differences.
double decimal_value(const std::string& digits, const char* source) {
    if (digits.empty()) return 0;
    double value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        // Too small to hold is zero; too large to hold is an overflow.
        const std::string integer_part = digits.substr(0, digits.find('.'));
        if (integer_part.find_first_not_of('0') != std::string::npos) raise_overflow(source);
        return 0;
    }
    if (!std::isfinite(value)) raise_overflow(source);
    return value;
}

}  // namespace

double point_only_number(const char* begin, const char* end) {
    const char* p = begin;
    while (p < end && (*p == ' ' || *p == '\t')) ++p;
    bool negative = false;
    if (p < end && (*p == '-' || *p == '+')) {
        negative = *p == '-';
        ++p;
    }
    // Short texts stay on the stack: curve files hold millions of them.
    char small[64];
    std::string large;
    char* out = small;
    if (static_cast<size_t>(end - p) + 2 > sizeof small) {
        large.resize(static_cast<size_t>(end - p) + 2);
        out = large.data();
    }
    char* const first = out;
    bool seen_point = false, seen_digit = false;
    for (; p < end; ++p) {
        if (*p >= '0' && *p <= '9') {
            *out++ = *p;
            seen_digit = true;
        } else if (*p == '.' && !seen_point) {
            *out++ = '.';
            seen_point = true;
        } else {
            break;
        }
    }
    if (!seen_digit) return 0;
    std::string digits(first, out);
    if (digits.front() == '.') digits.insert(digits.begin(), '0');
    const double value = decimal_value(digits, "point_only_number");
    return negative ? -value : value;
}

double point_only_number(const QString& text) {
    // A character beyond Latin-1 becomes "?", which ends the number as any other would.
    const QByteArray bytes = text.toLatin1();
    return point_only_number(bytes.constData(), bytes.constData() + bytes.size());
}

float point_only_single(const QString& text) {
    const double value = point_only_number(text);
    if (std::fabs(value) > FLT_MAX) raise_overflow("point_only_single");
    return static_cast<float>(value);
}

bool boolean_value(const QString& text, QChar separator) {
    const QString t = text.trimmed();
    if (t.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0) return true;
    if (t.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0) return false;

    // A number in the system's form: sign, digits, separator, decimals, exponent.
    std::string digits;
    qsizetype k = 0;
    if (k < t.size() && (t[k] == QLatin1Char('-') || t[k] == QLatin1Char('+'))) ++k;
    bool mantissa_digit = false, seen_separator = false;
    for (; k < t.size(); ++k) {
        const QChar c = t[k];
        if (c.isDigit() && c.unicode() < 0x80) {
            digits.push_back(static_cast<char>(c.unicode()));
            mantissa_digit = true;
        } else if (c == separator && !seen_separator) {
            digits.push_back('.');
            seen_separator = true;
        } else {
            break;
        }
    }
    bool exponent_ok = true;
    if (mantissa_digit && k < t.size() && (t[k] == QLatin1Char('E') || t[k] == QLatin1Char('e'))) {
        ++k;
        if (k < t.size() && (t[k] == QLatin1Char('-') || t[k] == QLatin1Char('+'))) ++k;
        exponent_ok = k < t.size();
        while (k < t.size() && t[k].isDigit() && t[k].unicode() < 0x80) ++k;
    }
    if (!mantissa_digit || !exponent_ok || k != t.size())
        throw ZelError(err_type_mismatch, QStringLiteral("boolean_value"),
                       QStringLiteral("Type mismatch"));
    // Only whether the mantissa is zero matters; an exponent can't make it zero or not.
    return digits.find_first_not_of("0.") != std::string::npos;
}

void read_system_settings(QIODevice& file, const QString& stamp, const QString& number_format,
                          SystemSettings& settings) {
    TextReader reader(file);
    const QString junk = reader.line_input();
    if (junk != stamp) fail(err_incompatible_settings, "Settings file of another version");

    int line_counter = 1;
    // Boolean rules take the system's separator; the settings' own numbers take the point.
    const QChar separator =
        number_format == QLatin1String("comma") ? QLatin1Char(',') : QLatin1Char('.');
    while (!reader.at_end()) {
        const QString line = reader.line_input();
        const QString key = key_before_colon(line);
        const QString value = text_after_colon(line);
        if (key == QLatin1String("inhale")) {
            settings.inhale = boolean_value(value, separator);
        } else if (key == QLatin1String("duration")) {
            settings.duration = point_only_number(value);
        } else if (key == QLatin1String("max x")) {
            settings.max_x = point_only_number(value);
        } else if (key == QLatin1String("max y")) {
            settings.max_y = point_only_number(value);
            settings.min_y = -settings.max_y;
        } else if (key == QLatin1String("x scale factor")) {
            settings.x_scale_factor = point_only_single(value);
        } else if (key == QLatin1String("threshold")) {
            settings.thresh = point_only_single(value);
        } else if (key == QLatin1String("default language")) {
            settings.language_file = value;
        } else if (key == QLatin1String("number format")) {
            settings.found_number_format = value;
            if (value != number_format) fail(err_number_format_differs, "Number format differs");
        }
        ++line_counter;
    }
    if (line_counter < lines_of_a_whole_file)
        fail(err_incompatible_settings, "Settings file has lines missing");
}

QString number_format_of(QChar decimal_separator) {
    const QString one_point_one = QStringLiteral("1") + decimal_separator + QStringLiteral("1");
    return one_point_one.contains(QLatin1Char(',')) ? QStringLiteral("comma")
                                                    : QStringLiteral("dot");
}

QStringList system_settings_lines(const QString& stamp, const SystemSettings& settings,
                                  const QString& number_format, QChar separator) {
    return {
        stamp,
        QStringLiteral("inhale:") +
            (settings.inhale ? QStringLiteral("True") : QStringLiteral("False")),
        QStringLiteral("duration:") + number_text(settings.duration, separator),
        QStringLiteral("max x:") + number_text(settings.max_x, separator),
        QStringLiteral("max y:") + format_number(settings.max_y, "###0.0", separator),
        QStringLiteral("x scale factor:") + single_text(settings.x_scale_factor, separator),
        QStringLiteral("threshold:") + format_single(settings.thresh, "###0.00", separator),
        QStringLiteral("default language:") + settings.language_file,
        QStringLiteral("number format:") + number_format,
    };
}

}  // namespace zel
