#include "data/locale_number.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <string>

#include "app/zel_error.h"

namespace zel {

namespace {

[[noreturn]] void mismatch(const char* source) {
    throw ZelError(err_type_mismatch, QString::fromLatin1(source), QStringLiteral("Type mismatch"));
}

bool blank(char c) { return c == ' ' || c == '\t'; }
bool digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

double locale_number(const char* begin, const char* end, char separator, const char* source) {
    while (begin < end && blank(*begin)) ++begin;
    while (end > begin && blank(end[-1])) --end;
    const char grouping = separator == '.' ? ',' : '.';
    // The number as from_chars reads it: sign, digits, a point, exponent. Short texts stay on
    // the stack: a curve file has millions of them.
    char small[64];
    std::string large;
    const auto size = static_cast<size_t>(end - begin);
    char* out = small;
    if (size + 2 > sizeof small) {
        large.resize(size + 2);
        out = large.data();
    }
    char* const first = out;
    const char* p = begin;
    if (p < end && (*p == '-' || *p == '+')) {
        if (*p == '-') *out++ = '-';
        ++p;
    }
    bool whole_digit = false, any_digit = false;
    for (; p < end; ++p) {
        if (digit(*p)) {
            *out++ = *p;
            whole_digit = any_digit = true;
        } else if (*p == grouping && whole_digit) {
            continue;
        } else {
            break;
        }
    }
    if (p < end && *p == separator) {
        *out++ = '.';
        for (++p; p < end && digit(*p); ++p) {
            *out++ = *p;
            any_digit = true;
        }
    }
    if (!any_digit) mismatch(source);
    if (p < end && (*p == 'E' || *p == 'e')) {
        *out++ = 'e';
        ++p;
        if (p < end && (*p == '-' || *p == '+')) *out++ = *p++;
        if (p == end || !digit(*p)) mismatch(source);
        while (p < end && digit(*p)) *out++ = *p++;
    }
    if (p != end) mismatch(source);
    double value = 0;
    const auto result = std::from_chars(first, out, value);
    if (result.ec == std::errc::result_out_of_range) {
        // Too small to hold is zero; too large is an overflow.
        const double probe = std::strtod(std::string(first, out).c_str(), nullptr);
        if (std::isinf(probe)) raise_overflow(source);
        return 0;
    }
    if (result.ec != std::errc() || result.ptr != out) mismatch(source);
    if (!std::isfinite(value)) raise_overflow(source);
    return value;
}

double locale_number(const QString& text, QChar separator, const char* source) {
    for (QChar c : text)
        if (c.unicode() > 0x7F) mismatch(source);
    const QByteArray bytes = text.toLatin1();
    return locale_number(bytes.constData(), bytes.constData() + bytes.size(),
                         static_cast<char>(separator.unicode()), source);
}

float locale_single(const QString& text, QChar separator, const char* source) {
    const double value = locale_number(text, separator, source);
    if (std::fabs(value) > FLT_MAX) raise_overflow(source);
    return static_cast<float>(value);
}

}  // namespace zel
