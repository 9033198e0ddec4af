#include "language/messages.h"

#include <gtest/gtest.h>

#include "app/zel_error.h"

namespace zel {
namespace {

TEST(MessageCatalogue, rows_stand_exactly_as_the_table_gives_them_typing_slips_and_blanks_kept) {
    struct Case { int id; const char* text; };
    const Case cases[] = {
        {103, "No session history is availaible for this patient."},
        {108, "Zelmoor  "},
        {132, "|?<>/\\*:, Keys not permitted."},
        {193, "Restart software to use new Com Port. Remember to save system sattings from main "
              "file menu first! "},
        {346, " Time remaining [sec]: "},
        {355, "The required Tarrow DLL file was not found. Unable to load automated gated patient. "
              "Please contact an Orvane service representative."},
    };
    for (const auto& c : cases) EXPECT_EQ(message_text(c.id), QString::fromLatin1(c.text)) << c.id;
}

TEST(MessageCatalogue, every_row_from_101_to_355_is_filled_and_356_is_empty_after_any_language) {
    set_message_slot(356 - LangOffset, QStringLiteral("left by a language file"));
    set_message_slot(110 - LangOffset, QStringLiteral("Quit"));
    EXPECT_EQ(message_text(249), QStringLiteral("Exit"));  // a row of the same text stays apart
    load_default_messages();
    int with_backslash = 0;
    for (int id = 101; id <= 355; ++id) {
        EXPECT_FALSE(message_text(id).isEmpty()) << id;
        with_backslash += message_text(id).contains(QLatin1Char('\\'));
    }
    EXPECT_EQ(with_backslash, 1);
    EXPECT_EQ(message_text(110), QStringLiteral("Exit"));
    EXPECT_TRUE(message_text(356).isEmpty());
    EXPECT_THROW(message_text(100), ZelError);
    for (int id = first_added_message; id < first_added_message + number_of_added_messages; ++id)
        EXPECT_FALSE(message_text(id).isEmpty()) << id;
    EXPECT_THROW(message_text(first_added_message + number_of_added_messages), ZelError);
}

}  // namespace
}  // namespace zel
