#include "data/text_reader.h"

#include <gtest/gtest.h>

#include <QBuffer>

#include "app/zel_error.h"

namespace zel {
namespace {

// One delimited field, then the lines behind it up to the end, where both reads fail with 62.
TEST(TextReader, reads_one_delimited_field_then_lines_ended_by_cr_lf_cr_or_lf) {
    struct Case {
        QByteArray text;
        const char* field;
        QStringList lines_behind;
    };
    const Case cases[] = {
        {"Deutsch\r\nrow", "Deutsch", {"row"}},
        {"  \tDeutsch \r\nrow", "Deutsch ", {"row"}},
        {"Deutsch,rest of line\r\nrow", "Deutsch", {"rest of line", "row"}},
        {"\"Deutsch, Schweiz\"\r\nrow", "Deutsch, Schweiz", {"row"}},
        {"  \"Deutsch\" dropped,rest\r\nrow", "Deutsch", {"rest", "row"}},
        {"\"two\r\nlines\"\r\nrow", "two\r\nlines", {"row"}},
        {"\"unclosed\r\nrow", "unclosed\r\nrow", {}},
        {"\r\nrow", "", {"row"}},
        {",row", "", {"row"}},
        {"Deutsch\nrow", "Deutsch", {"row"}},
        {"Deutsch\rrow", "Deutsch", {"row"}},
        {"Deutsch", "Deutsch", {}},
        {"Fran\xE7" "ais\r\n\r\n", "Fran\xE7" "ais", {""}},
        {"one\r\ntwo\rthree\nfour\r\n\r\nsix", "one", {"two", "three", "four", "", "six"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        QBuffer buffer;
        buffer.setData(c.text);
        buffer.open(QIODevice::ReadOnly);
        TextReader reader(buffer);
        EXPECT_EQ(reader.input_field(), QString::fromLatin1(c.field));
        QStringList behind;
        while (!reader.at_end()) behind.append(reader.line_input());
        EXPECT_EQ(behind, c.lines_behind);
        for (int attempt = 0; attempt < 2; ++attempt) {
            try {
                attempt == 0 ? reader.line_input() : reader.input_field();
                ADD_FAILURE() << attempt;
            } catch (const ZelError& e) {
                EXPECT_EQ(e.number, err_input_past_end);
            }
        }
    }
}

}  // namespace
}  // namespace zel
