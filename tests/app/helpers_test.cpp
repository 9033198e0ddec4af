#include "app/helpers.h"

#include <gtest/gtest.h>

#include "app/zel_error.h"

namespace zel {
namespace {

TEST(RoundToPlaces, ties_go_up_for_negative_numbers_too) {
    struct Case { double x; int n; double expected; };
    const Case cases[] = {
        {2.5, 0, 3}, {-2.5, 0, -2}, {1.25, 1, 1.3}, {-1.25, 1, -1.2},
        {0.004, 2, 0.0}, {1.99, 1, 2.0}, {-0.05, 1, 0.0},
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(round_to_places(c.x, c.n), c.expected) << c.x << " " << c.n;
}

TEST(RoundToInteger, ties_go_to_the_even_neighbour_and_sized_forms_fail_beyond_their_range) {
    struct Case { double x; long long expected; };
    const Case cases[] = {{0.5, 0}, {1.5, 2}, {2.5, 2}, {-0.5, 0}, {-1.5, -2}, {2.51, 3}};
    for (const auto& c : cases) EXPECT_EQ(round_to_integer(c.x), c.expected) << c.x;
    EXPECT_EQ(round_to_int16(32767.4), 32767);
    EXPECT_EQ(round_to_int16(-32768.5), -32768);  // ties to even stays in range
    EXPECT_THROW(round_to_int16(32767.5), ZelError);
    EXPECT_THROW(round_to_int16(-32769), ZelError);
    EXPECT_THROW(checked_i16(40000), ZelError);
}

// A line that begins with its colon has an empty key, not the whole line as its key.
TEST(ColonSplitting, takes_the_parts_around_the_first_colon) {
    struct Case { const char* text; const char* key; const char* value; };
    const Case cases[] = {{"CRC:1A2B:3", "CRC", "1A2B:3"}, {"no colon", "no colon", "no colon"},
                          {":x", "", "x"}, {"x:", "x", ""}};
    for (const auto& c : cases) {
        EXPECT_EQ(key_before_colon(QString::fromLatin1(c.text)), QString::fromLatin1(c.key));
        EXPECT_EQ(text_after_colon(QString::fromLatin1(c.text)), QString::fromLatin1(c.value));
    }
    EXPECT_EQ(safe_upper_bound(std::vector<int>{}), -1);
    EXPECT_EQ(safe_upper_bound(std::vector<int>{1, 2, 3}), 2);
}

TEST(PrintedNumber, has_a_sign_place_and_a_trailing_blank) {
    const QChar dot = QLatin1Char('.'), comma = QLatin1Char(',');
    EXPECT_EQ(printed_number(12, dot), QStringLiteral(" 12 "));
    EXPECT_EQ(printed_number(-3.5, dot), QStringLiteral("-3.5 "));
    EXPECT_EQ(printed_number(2.5, comma), QStringLiteral(" 2,5 "));
    EXPECT_EQ(printed_number(0, dot), QStringLiteral(" 0 "));
    EXPECT_EQ(printed_number(0.1 + 0.2, dot), QStringLiteral(" 0.3 "));  // 15 digits
    EXPECT_EQ(printed_number(1.0 / 3, dot), QStringLiteral(" 0.333333333333333 "));
    EXPECT_EQ(printed_single(0.1f, dot), QStringLiteral(" 0.1 "));  // 7 digits of a single
    EXPECT_EQ(printed_single(1.0f / 3, comma), QStringLiteral(" 0,3333333 "));
    EXPECT_EQ(number_text(123456.0, dot), QStringLiteral("123456"));
}

// With a comma the same text comes out with the comma in place of the point.
TEST(FormatNumber, patterns_round_ties_away_from_zero_in_decimal) {
    struct Case { double value; const char* pattern; const char* text; };
    const Case cases[] = {
        {1.005, "###0.00", "1.01"},  // 1.005 is stored below the tie; decimal form rules
        {0.125, "###0.00", "0.13"}, {-0.125, "###0.00", "-0.13"}, {131.068, "###0.00", "131.07"},
        {-0.004, "###0.00", "0.00"},  // rounds to zero: no sign
        {12345.678, "###0.00", "12345.68"}, {9.999, "###0.00", "10.00"}, {1.2f, "###0.0", "1.2"},
        {0.05, "##0.0", "0.1"}, {2.44, "##0.0", "2.4"}, {1.0, "#.#", "1."}, {0.5, "#.#", ".5"},
        {0.0, "#.#", "."}, {0.0, "#", ""}, {7.0, "#", "7"}, {1.49, "###0", "1"},
        {0.51, "###0", "1"}, {0.49, "###0", "0"}, {2.5, "###0", "3"}, {5.0, "00", "05"},
        {123.0, "00", "123"}, {59.5, "00", "60"}, {0.0, "#####0", "0"}, {-42.5, "#####0", "-43"},
    };
    for (const auto& c : cases) {
        const QString dot = QString::fromLatin1(c.text);
        EXPECT_EQ(format_number(c.value, c.pattern, QLatin1Char('.')), dot) << c.value << c.pattern;
        EXPECT_EQ(format_number(c.value, c.pattern, QLatin1Char(',')),
                  QString(dot).replace(u'.', u','))
            << c.value << " " << c.pattern;
    }
}

}  // namespace
}  // namespace zel
