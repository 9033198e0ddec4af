#pragma once
// Helpers shared by every subsystem: rounding, text splitting, printed numbers and the
// display patterns of labels and files.
#include <QChar>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

namespace zel {

// floor(x * 10^n + 0.5) / 10^n: ties go up, for negative numbers too. Used for what an
// operator enters and for chart ranges.
double round_to_places(double x, int n);

// Plain conversion of a float to an integer, as for scroll bars and bytes: nearest, ties to
// even. The sized forms fail with an overflow beyond their range.
long long round_to_integer(double x);
int16_t round_to_int16(double x);
int32_t round_to_int32(double x);

// The parts of a line behind and before its first ":"; without a colon, the whole text.
QString text_after_colon(const QString& text);
QString key_before_colon(const QString& text);

// Upper bound of an array, -1 when it has no elements.
template <class T>
int safe_upper_bound(const std::vector<T>& array) {
    return static_cast<int>(array.size()) - 1;
}

// The shortest decimal form of a value with the system's separator and no blanks: up to 15
// significant digits for a double, 7 for a single.
QString number_text(double value, QChar separator);
QString single_text(float value, QChar separator);

// A printed number: one blank (or the minus sign) in front, the shortest form, one blank behind.
QString printed_number(double value, QChar separator);
QString printed_single(float value, QChar separator);

// Print zones of 14 columns: each item starts at the first column of the next zone.
constexpr int print_zone_width = 14;
QString print_zones(const QStringList& items);

// Display patterns made of '#', '0' and one '.': "###0.00", "##0.0", "#.#", "#", "###0",
// "00", "#####0". '0' is a digit always shown, '#' one shown only when significant; the value
// is rounded to the pattern's decimals with ties away from zero on its shortest decimal form.
// With `Ties::to_even`, a value exactly halfway goes to the even last digit instead.
enum class Ties { away_from_zero, to_even };
QString format_number(double value, const char* pattern, QChar separator,
                      Ties ties = Ties::away_from_zero);
// The same for a single: it is rounded from its own shortest decimal form, so that 0.35 shows
// "0.4" and not the "0.3" of the double it widens to (0.3499999940...).
QString format_single(float value, const char* pattern, QChar separator,
                      Ties ties = Ties::away_from_zero);

}  // namespace zel
