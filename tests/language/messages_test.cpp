#include "language/messages.h"

#include <gtest/gtest.h>

#include "app/zel_error.h"

namespace zel {
namespace {

TEST(MessageCatalogue, rows_stand_exactly_as_the_table_gives_them) {
    struct Case { int id; const char* text; };
    const Case cases[] = {
        {101, "Error in saving session history."},
        {103, "No session history is availaible for this patient."},
        {106, "Patient curve data contains illegal enteries."},
        {107, "CURVE_DATA_FILE_STAMP"},
        {108, "Zelmoor  "},
        {132, "|?<>/\\*:, Keys not permitted."},
        {193, "Restart software to use new Com Port. Remember to save system sattings from main "
              "file menu first! "},
        {203, "********************SESSION********************"},
        {245, "volume [L]"},
        {346, " Time remaining [sec]: "},
        {352, "data checksum error"},
        {355, "The required Tarrow DLL file was not found. Unable to load automated gated patient. "
              "Please contact an Orvane service representative."},
    };
    for (const auto& c : cases) EXPECT_EQ(message_text(c.id), QString::fromLatin1(c.text)) << c.id;
}

TEST(MessageCatalogue, every_row_from_101_to_355_is_filled_and_356_is_empty) {
    for (int id = 101; id <= 355; ++id) EXPECT_FALSE(message_text(id).isEmpty()) << id;
    EXPECT_TRUE(message_text(356).isEmpty());
}

TEST(MessageCatalogue, a_number_outside_the_array_is_a_bounds_failure) {
    EXPECT_THROW(message_text(100), ZelError);
    EXPECT_THROW(message_text(357), ZelError);
}

TEST(MessageCatalogue, rows_with_the_same_text_stay_separate) {
    EXPECT_EQ(message_text(110), message_text(249));
    set_message_slot(110 - LangOffset, QStringLiteral("Quit"));
    EXPECT_EQ(message_text(249), QStringLiteral("Exit"));
    load_default_messages();
    EXPECT_EQ(message_text(110), QStringLiteral("Exit"));
}

TEST(MessageCatalogue, only_one_row_holds_a_backslash) {
    int with_backslash = 0;
    for (int id = 101; id <= 355; ++id)
        if (message_text(id).contains(QLatin1Char('\\'))) ++with_backslash;
    EXPECT_EQ(with_backslash, 1);
}

}  // namespace
}  // namespace zel
