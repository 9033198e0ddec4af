#include "data/profile_file.h"

#include <QFile>
#include <QFileInfo>
#include <optional>
#include <vector>

#include "data/whole_file.h"

namespace zel {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

QByteArray trimmed(QByteArrayView text) {
    qsizetype begin = 0, end = text.size();
    while (begin < end && is_blank(text[begin])) ++begin;
    while (end > begin && is_blank(text[end - 1])) --end;
    return text.sliced(begin, end - begin).toByteArray();
}

// One line of the file: its text and the line end behind it ("" for a last line without one).
struct Line {
    QByteArray text;
    QByteArray end;
};

std::vector<Line> split_lines(const QByteArray& contents) {
    std::vector<Line> lines;
    qsizetype start = 0;
    while (start < contents.size()) {
        const qsizetype lf = contents.indexOf('\n', start);
        const qsizetype stop = lf < 0 ? contents.size() : lf;
        qsizetype text_end = stop;
        if (lf >= 0 && text_end > start && contents[text_end - 1] == '\r') --text_end;
        lines.push_back({contents.mid(start, text_end - start),
                         lf < 0 ? QByteArray() : contents.mid(text_end, lf + 1 - text_end)});
        start = lf < 0 ? contents.size() : lf + 1;
    }
    return lines;
}

QByteArray join_lines(const std::vector<Line>& lines) {
    QByteArray contents;
    for (const Line& line : lines) contents += line.text + line.end;
    return contents;
}

// The section's name when the line is a header, such as "[ZEL]".
std::optional<QByteArray> section_name(const QByteArray& text) {
    const QByteArray line = trimmed(text);
    if (!line.startsWith('[')) return std::nullopt;
    const qsizetype close = line.lastIndexOf(']');
    if (close < 1) return std::nullopt;
    return trimmed(QByteArrayView(line).sliced(1, close - 1));
}

// The key's name when the line is "key=value".
std::optional<QByteArray> key_name(const QByteArray& text) {
    const qsizetype equals = text.indexOf('=');
    if (equals < 0) return std::nullopt;
    return trimmed(QByteArrayView(text).first(equals));
}

// Names are trimmed of the same blanks on both sides, so that what is written is found again.
QString bare_name(const QString& wanted) {
    QString bare = wanted;
    while (!bare.isEmpty() && bare.back().unicode() < 0x80 && is_blank(char(bare.back().unicode())))
        bare.chop(1);
    while (!bare.isEmpty() && bare.front().unicode() < 0x80 &&
           is_blank(char(bare.front().unicode())))
        bare.remove(0, 1);
    return bare;
}

bool same_name(const QByteArray& in_file, const QString& wanted) {
    return QString::fromLatin1(in_file).compare(bare_name(wanted), Qt::CaseInsensitive) == 0;
}

// A value as a read gives it: blanks around it and one pair of enclosing quotes removed, cut
// to the buffer less its closing NUL.
QString read_value(const QByteArray& line, int buffer_size) {
    const int limit = buffer_size > 0 ? buffer_size - 1 : 0;
    QByteArray raw = trimmed(QByteArrayView(line).sliced(line.indexOf('=') + 1));
    if (raw.size() >= 2 && (raw.front() == '"' || raw.front() == '\'') && raw.back() == raw.front())
        raw = raw.sliced(1, raw.size() - 2);
    return QString::fromLatin1(raw).left(limit);
}

// Lines [first, last) of the first section of that name: first is its header.
struct SectionSpan {
    size_t header = 0;
    size_t end = 0;
};

std::optional<SectionSpan> find_section(const std::vector<Line>& lines, const QString& section) {
    for (size_t i = 0; i < lines.size(); ++i) {
        const auto name = section_name(lines[i].text);
        if (!name || !same_name(*name, section)) continue;
        size_t end = i + 1;
        while (end < lines.size() && !section_name(lines[end].text)) ++end;
        return SectionSpan{i, end};
    }
    return std::nullopt;
}

std::optional<size_t> find_key(const std::vector<Line>& lines, const SectionSpan& span,
                               const QString& key) {
    for (size_t i = span.header + 1; i < span.end; ++i) {
        const auto name = key_name(lines[i].text);
        if (name && same_name(*name, key)) return i;
    }
    return std::nullopt;
}

bool writable_text(const QString& text, bool is_key) {
    for (QChar ch : text) {
        if (ch.unicode() > 0xFF || ch == QLatin1Char('\r') || ch == QLatin1Char('\n')) return false;
        if (is_key && ch == QLatin1Char('=')) return false;
    }
    return true;
}

void end_with_line_break(std::vector<Line>& lines, size_t index) {
    if (lines[index].end.isEmpty()) lines[index].end = "\r\n";
}

bool read_file(const QString& path, QByteArray& contents) {
    contents.clear();
    const QFileInfo info(path);
    if (!info.exists()) return true;
    QFile file(path);
    if (info.isDir() || !file.open(QIODevice::ReadOnly)) return false;
    contents = file.readAll();
    return file.error() == QFileDevice::NoError;
}

bool edit_file(const QString& path, const QString& section, const QString* key,
               const QString* value) {
    QByteArray contents;
    if (!read_file(path, contents)) return false;
    const QByteArray before = contents;
    if (!edit_profile(contents, section, key, value)) return false;
    if (contents == before && (key == nullptr || value == nullptr)) return true;
    return replace_whole_file(path, contents);
}

}  // namespace

QString profile_value(const QByteArray& contents, const QString& section, const QString& key,
                      const QString& default_value, int buffer_size) {
    const std::vector<Line> lines = split_lines(contents);
    if (const auto span = find_section(lines, section)) {
        if (const auto at = find_key(lines, *span, key))
            return read_value(lines[*at].text, buffer_size);
    }
    return default_value.left(buffer_size > 0 ? buffer_size - 1 : 0);
}

ProfileIndex::ProfileIndex(const QByteArray& contents) {
    // The section being read, when it is the first of its name; later ones are never read.
    QString current;
    bool first_of_name = false;
    for (const Line& line : split_lines(contents)) {
        if (const auto name = section_name(line.text)) {
            current = QString::fromLatin1(*name).toCaseFolded();
            first_of_name = !sections.contains(current);
            if (first_of_name) sections.insert(current, {});
            continue;
        }
        const auto key = key_name(line.text);
        if (!first_of_name || !key) continue;
        QHash<QString, QByteArray>& keys = sections[current];
        const QString folded = QString::fromLatin1(*key).toCaseFolded();
        if (!keys.contains(folded)) keys.insert(folded, line.text);
    }
}

QString ProfileIndex::value(const QString& section, const QString& key,
                            const QString& default_value, int buffer_size) const {
    const auto found = sections.constFind(bare_name(section).toCaseFolded());
    if (found != sections.cend()) {
        const auto line = found->constFind(bare_name(key).toCaseFolded());
        if (line != found->cend()) return read_value(*line, buffer_size);
    }
    return default_value.left(buffer_size > 0 ? buffer_size - 1 : 0);
}

bool edit_profile(QByteArray& contents, const QString& section, const QString* key,
                  const QString* value) {
    if (!writable_text(section, false) || (key && !writable_text(*key, true)) ||
        (value && !writable_text(*value, false)))
        return false;
    std::vector<Line> lines = split_lines(contents);
    const auto span = find_section(lines, section);
    const auto first = lines.begin();

    if (key == nullptr) {
        if (span)
            lines.erase(first + static_cast<std::ptrdiff_t>(span->header),
                        first + static_cast<std::ptrdiff_t>(span->end));
    } else if (value == nullptr) {
        if (span) {
            if (const auto at = find_key(lines, *span, *key))
                lines.erase(first + static_cast<std::ptrdiff_t>(*at));
        }
    } else {
        const QByteArray entry = key->toLatin1() + '=' + value->toLatin1();
        if (!span) {
            if (!lines.empty()) end_with_line_break(lines, lines.size() - 1);
            lines.push_back({'[' + section.toLatin1() + ']', "\r\n"});
            lines.push_back({entry, "\r\n"});
        } else if (const auto at = find_key(lines, *span, *key)) {
            lines[*at].text = entry;
        } else {
            size_t last = span->header;
            for (size_t i = span->header + 1; i < span->end; ++i)
                if (!trimmed(lines[i].text).isEmpty()) last = i;
            end_with_line_break(lines, last);
            lines.insert(first + static_cast<std::ptrdiff_t>(last + 1), Line{entry, "\r\n"});
        }
    }
    contents = join_lines(lines);
    return true;
}

QByteArray read_profile_file(const QString& path) {
    QByteArray contents;
    if (!read_file(path, contents)) contents.clear();
    return contents;
}

QString read_profile_string(const QString& path, const QString& section, const QString& key,
                            const QString& default_value, int buffer_size) {
    return profile_value(read_profile_file(path), section, key, default_value, buffer_size);
}

bool write_profile_string(const QString& path, const QString& section, const QString& key,
                          const QString& value) {
    return edit_file(path, section, &key, &value);
}

bool delete_profile_key(const QString& path, const QString& section, const QString& key) {
    return edit_file(path, section, &key, nullptr);
}

bool delete_profile_section(const QString& path, const QString& section) {
    return edit_file(path, section, nullptr, nullptr);
}

}  // namespace zel
