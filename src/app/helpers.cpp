#include "app/helpers.h"

#include <charconv>
#include <cmath>
#include <cstring>

#include "app/zel_error.h"

namespace zel {

double round_to_places(double x, int n) {
    const double scale = std::pow(10.0, n);
    return std::floor(x * scale + 0.5) / scale;
}

long long round_to_integer(double x) {
    if (!std::isfinite(x) || std::fabs(x) > 9.2e18) raise_overflow("round_to_integer");
    return std::llrint(x);  // the default rounding mode: nearest, ties to even
}

int16_t round_to_int16(double x) { return checked_i16(round_to_integer(x), "round_to_int16"); }

int32_t round_to_int32(double x) {
    const long long v = round_to_integer(x);
    if (v < INT32_MIN || v > INT32_MAX) raise_overflow("round_to_int32");
    return static_cast<int32_t>(v);
}

QString text_after_colon(const QString& text) {
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    return colon < 0 ? text : text.mid(colon + 1);
}

QString key_before_colon(const QString& text) {
    const qsizetype colon = text.indexOf(QLatin1Char(':'));
    return colon < 0 ? text : text.left(colon);
}

namespace {

QString general_text(double value, int significant, QChar separator) {
    if (value == 0.0) return QStringLiteral("0");
    char buffer[64];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general,
                                significant);
    QString text = QString::fromLatin1(buffer, result.ptr - buffer);
    // Exponent form as the console prints it: "1E-05", "1.5E+16".
    const qsizetype e = text.indexOf(QLatin1Char('e'));
    if (e >= 0) text[e] = QLatin1Char('E');
    if (separator != QLatin1Char('.')) text.replace(QLatin1Char('.'), separator);
    return text;
}

// Non-negative value to decimal digits rounded half up at `places` decimals:
// the integer digits (without leading zeros, possibly empty) and exactly `places` decimals.
void round_decimal(double magnitude, int places, Ties ties, QString& integer_digits,
                   QString& fraction_digits) {
    char buffer[64];
    auto result =
        std::to_chars(buffer, buffer + sizeof buffer, magnitude, std::chars_format::scientific);
    *result.ptr = '\0';
    // buffer: d[.ddd]e[+-]xx
    const char* e = std::strchr(buffer, 'e');
    const int exponent = std::atoi(e + 1);
    std::string digits;
    for (const char* p = buffer; p < e; ++p)
        if (*p != '.') digits.push_back(*p);
    // Value = 0.digits * 10^(exponent + 1); position of the decimal point within digits:
    int point = exponent + 1;
    // Pad so that the point lies within and `places` decimals exist.
    if (point < 0) {
        digits.insert(0, static_cast<size_t>(-point), '0');
        point = 0;
    }
    const int needed = point + places;
    if (static_cast<int>(digits.size()) < needed + 1)
        digits.append(static_cast<size_t>(needed + 1 - static_cast<int>(digits.size())), '0');
    const char next = digits[static_cast<size_t>(needed)];
    bool round_up = next >= '5';
    if (ties == Ties::to_even && next == '5' &&
        digits.find_first_not_of('0', static_cast<size_t>(needed) + 1) == std::string::npos) {
        const char last = needed > 0 ? digits[static_cast<size_t>(needed) - 1] : '0';
        round_up = (last - '0') % 2 == 1;
    }
    std::string kept = digits.substr(0, static_cast<size_t>(needed));
    if (round_up) {
        int k = needed - 1;
        while (k >= 0 && kept[static_cast<size_t>(k)] == '9') kept[static_cast<size_t>(k--)] = '0';
        if (k >= 0) {
            ++kept[static_cast<size_t>(k)];
        } else {
            kept.insert(0, 1, '1');
            ++point;
        }
    }
    std::string int_part = kept.substr(0, static_cast<size_t>(point));
    const size_t first = int_part.find_first_not_of('0');
    int_part = first == std::string::npos ? std::string() : int_part.substr(first);
    integer_digits = QString::fromStdString(int_part);
    fraction_digits = QString::fromStdString(kept.substr(static_cast<size_t>(point)));
}

}  // namespace

QString number_text(double value, QChar separator) { return general_text(value, 15, separator); }

QString single_text(float value, QChar separator) {
    return general_text(static_cast<double>(value), 7, separator);
}

QString printed_number(double value, QChar separator) {
    const QString text = number_text(value, separator);
    return (text.startsWith(QLatin1Char('-')) ? text : QLatin1Char(' ') + text) +
           QLatin1Char(' ');
}

QString printed_single(float value, QChar separator) {
    const QString text = single_text(value, separator);
    return (text.startsWith(QLatin1Char('-')) ? text : QLatin1Char(' ') + text) +
           QLatin1Char(' ');
}

QString print_zones(const QStringList& items) {
    QString line;
    for (qsizetype k = 0; k < items.size(); ++k) {
        if (k > 0) {
            const qsizetype next = (line.size() / print_zone_width + 1) * print_zone_width;
            line.append(QString(next - line.size(), QLatin1Char(' ')));
        }
        line.append(items[k]);
    }
    return line;
}

QString format_number(double value, const char* pattern, QChar separator, Ties ties) {
    if (!std::isfinite(value)) return number_text(value, separator);
    const char* point = std::strchr(pattern, '.');
    const char* int_end = point ? point : pattern + std::strlen(pattern);
    int min_int_digits = 0;
    for (const char* p = pattern; p < int_end; ++p)
        if (*p == '0') ++min_int_digits;
    int places = 0, min_places = 0;
    if (point) {
        for (const char* p = point + 1; *p; ++p) {
            if (*p == '0' || *p == '#') ++places;
            if (*p == '0') min_places = places;
        }
    }
    QString int_digits, fraction;
    round_decimal(std::fabs(value), places, ties, int_digits, fraction);
    while (fraction.size() > min_places && fraction.endsWith(QLatin1Char('0'))) fraction.chop(1);
    bool is_zero = int_digits.isEmpty();
    for (QChar c : fraction)
        if (c != QLatin1Char('0')) is_zero = false;
    if (int_digits.size() < min_int_digits)
        int_digits.prepend(QString(min_int_digits - int_digits.size(), QLatin1Char('0')));
    QString text = int_digits;
    if (point) text += separator + fraction;
    // A value that rounds to zero shows no sign.
    if (value < 0 && !is_zero) text.prepend(QLatin1Char('-'));
    return text;
}

QString format_single(float value, const char* pattern, QChar separator, Ties ties) {
    return format_number(single_text(value, QLatin1Char('.')).toDouble(), pattern, separator, ties);
}

}  // namespace zel
