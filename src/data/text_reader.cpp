#include "data/text_reader.h"

#include "app/zel_error.h"

namespace zel {

namespace {

[[noreturn]] void raise_past_end() {
    throw ZelError(err_input_past_end, QStringLiteral("Input"),
                   QStringLiteral("Input past end of file"));
}

bool is_line_end(char c) { return c == '\r' || c == '\n'; }

}  // namespace

bool TextReader::at_end() const { return device.atEnd(); }

bool TextReader::next(char& c) { return device.getChar(&c); }

bool TextReader::peek(char& c) const { return device.peek(&c, 1) == 1; }

void TextReader::take_line_end(char first) {
    char c = 0;
    if (first == '\r' && peek(c) && c == '\n') next(c);
}

QString TextReader::line_input() {
    if (at_end()) raise_past_end();
    QByteArray line;
    char c = 0;
    while (next(c)) {
        if (is_line_end(c)) {
            take_line_end(c);
            break;
        }
        line.append(c);
    }
    return QString::fromLatin1(line);
}

QString TextReader::input_field() {
    if (at_end()) raise_past_end();
    char c = 0;
    while (peek(c) && (c == ' ' || c == '\t')) next(c);

    QByteArray field;
    if (peek(c) && c == '"') {
        next(c);
        while (next(c) && c != '"') field.append(c);
        // Up to the delimiter, whatever stands behind the closing quote is dropped.
        while (next(c)) {
            if (c == ',') break;
            if (is_line_end(c)) {
                take_line_end(c);
                break;
            }
        }
        return QString::fromLatin1(field);
    }
    while (next(c)) {
        if (c == ',') break;
        if (is_line_end(c)) {
            take_line_end(c);
            break;
        }
        field.append(c);
    }
    return QString::fromLatin1(field);
}

}  // namespace zel
