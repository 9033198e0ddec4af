#include "data/profile_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <optional>
#include <vector>

#include "data/whole_file.h"

namespace zel {

namespace {

// Blanks around a value and at the start of a line.
bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }

// Key names, and the names a caller looks up, are trimmed of spaces only: a tab belongs to
// the name.
bool is_space(char c) { return c == ' '; }

// A section's name as the file writes it between its brackets loses blanks and tabs around it.
bool is_space_or_tab(char c) { return c == ' ' || c == '\t'; }

QByteArray trimmed(QByteArrayView text, bool (*blank)(char)) {
    qsizetype begin = 0, end = text.size();
    while (begin < end && blank(text[begin])) ++begin;
    while (end > begin && blank(text[end - 1])) --end;
    return text.sliced(begin, end - begin).toByteArray();
}

// One line of the file: its text and the line break behind it: CR LF, a lone CR or LF, or ""
// for a last line without one.
struct Line {
    QByteArray text;
    QByteArray end;
};

std::vector<Line> split_lines(const QByteArray& contents) {
    std::vector<Line> lines;
    const qsizetype size = contents.size();
    qsizetype start = 0;
    while (start < size) {
        qsizetype stop = start;
        while (stop < size && contents[stop] != '\r' && contents[stop] != '\n') ++stop;
        qsizetype next = stop;
        if (next < size)
            next += contents[next] == '\r' && next + 1 < size && contents[next + 1] == '\n' ? 2 : 1;
        lines.push_back({contents.mid(start, stop - start), contents.mid(stop, next - stop)});
        start = next;
    }
    return lines;
}

QByteArray join_lines(const std::vector<Line>& lines) {
    QByteArray contents;
    for (const Line& line : lines) contents += line.text + line.end;
    return contents;
}

QByteArrayView without_indent(const QByteArray& text) {
    qsizetype begin = 0;
    while (begin < text.size() && is_blank(text[begin])) ++begin;
    return QByteArrayView(text).sliced(begin);
}

bool is_comment(const QByteArray& text) { return without_indent(text).startsWith(';'); }

// The section's name when the line is a header, such as "[ZEL]".
std::optional<QByteArray> section_name(const QByteArray& text) {
    const QByteArrayView line = without_indent(text);
    if (!line.startsWith('[')) return std::nullopt;
    const qsizetype close = line.lastIndexOf(']');
    if (close < 1) return std::nullopt;
    return trimmed(line.sliced(1, close - 1), is_space_or_tab);
}

// The key's name when the line is "key=value"; a comment line has none.
std::optional<QByteArray> key_name(const QByteArray& text) {
    const QByteArrayView line = without_indent(text);
    const qsizetype equals = line.indexOf('=');
    if (equals < 0 || line.startsWith(';')) return std::nullopt;
    return trimmed(line.first(equals), is_space);
}

QByteArray bare_name(const QString& name) { return trimmed(name.toLatin1(), is_space); }

bool same_name(const QByteArray& in_file, const QString& wanted) {
    return QString::fromLatin1(in_file).compare(QString::fromLatin1(bare_name(wanted)),
                                                Qt::CaseInsensitive) == 0;
}

// A value as a read gives it: blanks around it and one pair of enclosing quotes removed, cut
// to the buffer less its closing NUL.
QString read_value(const QByteArray& line, int buffer_size) {
    const int limit = buffer_size > 0 ? buffer_size - 1 : 0;
    QByteArray raw = trimmed(QByteArrayView(line).sliced(line.indexOf('=') + 1), is_blank);
    if (raw.size() >= 2 && (raw.front() == '"' || raw.front() == '\'') && raw.back() == raw.front())
        raw = raw.sliced(1, raw.size() - 2);
    return QString::fromLatin1(raw).left(limit);
}

// A default as a read gives it back: without its trailing spaces, cut to the buffer.
QString read_default(const QString& default_value, int buffer_size) {
    QString value = default_value;
    while (value.endsWith(QLatin1Char(' '))) value.chop(1);
    return value.left(buffer_size > 0 ? buffer_size - 1 : 0);
}

// Lines [header, end) of the first section of that name.
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

bool writable_text(const QString& text) {
    for (QChar ch : text)
        if (ch.unicode() > 0xFF || ch == QLatin1Char('\r') || ch == QLatin1Char('\n')) return false;
    return true;
}

// A key written must read back as that key: no "=" in it, and not the start of a comment
// or of a section header.
bool writable_key(const QString& key) {
    const QByteArray name = bare_name(key);
    return writable_text(key) && !name.contains('=') && !name.startsWith(';') &&
           !name.startsWith('[');
}

void end_with_line_break(Line& line) {
    if (line.end.isEmpty()) line.end = "\r\n";
}

// 0, or the errno of the failure (EISDIR for a folder); a missing file reads as empty.
int read_file(const QString& path, QByteArray& contents, bool& exists) {
    contents.clear();
    const QByteArray native = QFile::encodeName(path);
    const int fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC);
    exists = fd >= 0 || (errno != ENOENT && errno != ENOTDIR);
    if (fd < 0) return exists ? errno : 0;
    struct stat info {};
    int error = ::fstat(fd, &info) != 0 ? errno : S_ISDIR(info.st_mode) ? EISDIR : 0;
    char buffer[65536];
    while (!error) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) error = errno;
        if (got <= 0) break;
        contents.append(buffer, got);
    }
    ::close(fd);
    if (error) contents.clear();
    return error;
}

Written edit_file(const QString& path, const QString& section, const QString* key,
                  const QString* value) {
    QByteArray contents;
    bool exists = false;
    if (const int error = read_file(path, contents, exists)) return {error, path};
    const QByteArray before = contents;
    if (!edit_profile(contents, section, key, value)) return {EINVAL, path};
    // A deletion that finds nothing leaves the file alone; on a missing file it leaves an
    // empty one, as Windows does.
    if (exists && contents == before && (key == nullptr || value == nullptr)) return {};
    return replace_whole_file(path, contents);
}

}  // namespace

Written read_profile_file(const QString& path, QByteArray& contents) {
    bool exists = false;
    if (const int error = read_file(path, contents, exists)) return {error, path};
    return {};
}

QString profile_value(const QByteArray& contents, const QString& section, const QString& key,
                      const QString& default_value, int buffer_size) {
    const std::vector<Line> lines = split_lines(contents);
    if (const auto span = find_section(lines, section)) {
        if (const auto at = find_key(lines, *span, key))
            return read_value(lines[*at].text, buffer_size);
    }
    return read_default(default_value, buffer_size);
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
    const auto found = sections.constFind(QString::fromLatin1(bare_name(section)).toCaseFolded());
    if (found != sections.cend()) {
        const auto line = found->constFind(QString::fromLatin1(bare_name(key)).toCaseFolded());
        if (line != found->cend()) return read_value(*line, buffer_size);
    }
    return read_default(default_value, buffer_size);
}

bool edit_profile(QByteArray& contents, const QString& section, const QString* key,
                  const QString* value) {
    if (!writable_text(section) || (key && !writable_text(*key)) ||
        (key && value && !writable_key(*key)) || (value && !writable_text(*value)))
        return false;
    std::vector<Line> lines = split_lines(contents);
    const auto span = find_section(lines, section);
    const auto at = [&lines](size_t i) { return lines.begin() + static_cast<std::ptrdiff_t>(i); };

    if (key == nullptr) {
        // Comment lines stay behind when their section goes, as Windows leaves them.
        if (span) {
            std::vector<Line> kept;
            for (size_t i = span->header + 1; i < span->end; ++i)
                if (is_comment(lines[i].text)) kept.push_back(lines[i]);
            lines.erase(at(span->header), at(span->end));
            lines.insert(at(span->header), kept.begin(), kept.end());
        }
    } else if (value == nullptr) {
        if (span) {
            if (const auto found = find_key(lines, *span, *key)) lines.erase(at(*found));
        }
    } else if (!span) {
        if (!lines.empty()) end_with_line_break(lines.back());
        lines.push_back({'[' + bare_name(section) + ']', "\r\n"});
        lines.push_back({bare_name(*key) + '=' + value->toLatin1(), "\r\n"});
    } else if (const auto found = find_key(lines, *span, *key)) {
        // The key keeps its spelling and layout up to "="; only the value is replaced.
        Line& line = lines[*found];
        line.text = line.text.first(line.text.indexOf('=') + 1) + value->toLatin1();
        end_with_line_break(line);
    } else {
        // Behind the section's last entry: blank lines and comments after it stay after it.
        size_t last = span->header;
        for (size_t i = span->header + 1; i < span->end; ++i)
            if (!without_indent(lines[i].text).isEmpty() && !is_comment(lines[i].text)) last = i;
        end_with_line_break(lines[last]);
        lines.insert(at(last + 1), Line{bare_name(*key) + '=' + value->toLatin1(), "\r\n"});
    }
    contents = join_lines(lines);
    return true;
}

QByteArray read_profile_file(const QString& path) {
    QByteArray contents;
    if (!read_profile_file(path, contents)) contents.clear();
    return contents;
}

QString read_profile_string(const QString& path, const QString& section, const QString& key,
                            const QString& default_value, int buffer_size) {
    return profile_value(read_profile_file(path), section, key, default_value, buffer_size);
}

Written write_profile_string(const QString& path, const QString& section, const QString& key,
                             const QString& value) {
    return edit_file(path, section, &key, &value);
}

Written delete_profile_key(const QString& path, const QString& section, const QString& key) {
    return edit_file(path, section, &key, nullptr);
}

Written delete_profile_section(const QString& path, const QString& section) {
    return edit_file(path, section, nullptr, nullptr);
}

}  // namespace zel
