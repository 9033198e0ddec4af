#include "data/curve_file_reader.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstring>
#include <memory>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/locale_number.h"
#include "data/prefault.h"
#include "data/system_settings_file.h"
#include "language/messages.h"

namespace zel {

namespace {

constexpr const char* source = "LoadCurveData2";

// The file's bytes, followed by a NUL that ends every number at the end of the file, so that
// the sample lines are read without testing for the end at each digit.
struct Text {
    std::unique_ptr<char[]> bytes;
    const char* begin = nullptr;
    const char* end = nullptr;
};

// The lines of the file's bytes, one at a time, without their line ends.
class Lines {
  public:
    Lines(const char* begin, const char* end) : p(begin), end(end) {}
    bool at_end() const { return p >= end; }
    void next(const char*& first, const char*& last) {
        first = p;
        while (p < end && *p != '\r' && *p != '\n') ++p;
        last = p;
        // CR LF as written; a bare LF or CR ends a line too.
        if (p < end && *p == '\r') ++p;
        if (p < end && *p == '\n') ++p;
    }
    QString next_text() {
        const char *first, *last;
        next(first, last);
        return QString::fromLatin1(first, last - first);
    }
    const char* position() const { return p; }

  private:
    const char* p;
    const char* end;
};

[[noreturn]] void not_a_curve_file(const QString& path) {
    throw ZelError(err_bad_curve_file, QString::fromLatin1(source), path + message_text(184));
}

[[noreturn]] void missing_field() {
    throw ZelError(err_subscript, QString::fromLatin1(source),
                   QStringLiteral("Subscript out of range"));
}

uint8_t byte_value(const char* first, const char* last) {
    const long long value = round_to_integer(point_only_number(first, last));
    if (value < 0 || value > 255) raise_overflow(source);
    return static_cast<uint8_t>(value);
}

// One sample line the general way, for every line that is not a plain one: blanks, signs,
// exponents, groupings, long numbers, lenient bytes and every fault the reader reports.
void read_line(const char* first, const char* last, CurveData& curve, char separator) {
    const char* bounds[5];
    int fields = 0;
    bounds[fields++] = first;
    for (const char* c = first; c < last && fields < 5; ++c)
        if (*c == ';') bounds[fields++] = c + 1;
    if (fields < 4) missing_field();
    auto field_end = [&](int k) { return k + 1 < fields ? bounds[k + 1] - 1 : last; };
    curve.session_time.push_back(locale_number(bounds[0], field_end(0), separator, source));
    curve.volume.push_back(locale_number(bounds[1], field_end(1), separator, source));
    curve.balloon.push_back(byte_value(bounds[2], field_end(2)));
    curve.patient_switch.push_back(byte_value(bounds[3], field_end(3)));
}

// Powers of ten that a double holds exactly.
constexpr double exact_tens[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

// A plain decimal as the console writes it: an optional minus, digits, the separator and
// digits, 15 digits at most. Its digits are then an exact integer and the power of ten exact,
// so one division gives the correctly rounded value, the same as the general reading. Returns
// where the number ends, or nullptr for any other text.
const char* plain_decimal(const char* p, char separator, double& value) {
    const bool negative = *p == '-';
    p += negative;
    const char* const first = p;
    uint64_t digits = 0;
    while (is_digit(*p)) digits = digits * 10 + static_cast<unsigned>(*p++ - '0');
    ptrdiff_t count = p - first, decimals = 0;
    if (*p == separator) {
        const char* const point = ++p;
        while (is_digit(*p)) digits = digits * 10 + static_cast<unsigned>(*p++ - '0');
        decimals = p - point;
        count += decimals;
    }
    if (count == 0 || count > 15) return nullptr;
    const double magnitude = static_cast<double>(digits) / exact_tens[decimals];
    value = negative ? -magnitude : magnitude;
    return p;
}

// A balloon or switch value of one to three digits within a byte, or nullptr.
const char* plain_byte(const char* p, uint8_t& value) {
    unsigned v = 0;
    const char* const first = p;
    while (is_digit(*p) && p - first < 3) v = v * 10 + static_cast<unsigned>(*p++ - '0');
    if (p == first || v > 255) return nullptr;
    value = static_cast<uint8_t>(v);
    return p;
}

// The four fields of a line as the console writes it, up to where the fourth ends; nullptr
// for any other line. The NUL behind the file ends the last field, as the file's end does;
// one inside the file ends a number as any other character would.
const char* plain_fields(const char* p, char separator, double& session_time, double& volume,
                         uint8_t& balloon, uint8_t& patient_switch) {
    p = plain_decimal(p, separator, session_time);
    if (!p || *p != ';') return nullptr;
    p = plain_decimal(p + 1, separator, volume);
    if (!p || *p != ';') return nullptr;
    p = plain_byte(p + 1, balloon);
    if (!p || *p != ';') return nullptr;
    p = plain_byte(p + 1, patient_switch);
    if (!p || (*p != ';' && *p != '\r' && *p != '\n' && *p != '\0')) return nullptr;
    return p;
}

void read_samples(const char* p, const char* end, CurveData& curve, char separator) {
    // Mostly the gating fields of a frame without a fresh gating status.
    static constexpr char usual_rest[] = "; - ; - ; - \r\n";
    constexpr ptrdiff_t usual_size = sizeof usual_rest - 1;
    const double step = 1.0 / curve.count_frequency;
    double time = 0;
    while (p < end) {
        const char* const line = p;
        double session_time = 0, volume = 0;
        uint8_t balloon = 0, patient_switch = 0;
        const char* q = plain_fields(p, separator, session_time, volume, balloon, patient_switch);
        if (q && end - q >= usual_size && std::memcmp(q, usual_rest, usual_size) == 0) {
            p = q + usual_size;
        } else {
            // The rest of the line, whose further fields are not read.
            p = q ? q : line;
            while (p < end && *p != '\r' && *p != '\n') ++p;
            if (!q) read_line(line, p, curve, separator);
            // CR LF as written; a bare LF or CR ends a line too.
            if (p < end && *p == '\r') ++p;
            if (p < end && *p == '\n') ++p;
        }
        if (q) {
            curve.session_time.push_back(session_time);
            curve.volume.push_back(volume);
            curve.balloon.push_back(balloon);
            curve.patient_switch.push_back(patient_switch);
        }
        curve.time.push_back(time);
        time += step;
    }
}

Text read_whole(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ZelError(err_path_file_access, QString::fromLatin1(source),
                       QStringLiteral("Path/File access error: ") + path);
    // Read whole: a 30-minute curve is 90,000 lines, parsed in place.
    const auto size = static_cast<size_t>(std::max<qint64>(file.size(), 0));
    Text text;
    text.bytes = std::make_unique_for_overwrite<char[]>(size + 1);
    prefault(text.bytes.get(), size);
    const qint64 got = file.read(text.bytes.get(), static_cast<qint64>(size));
    const auto length = static_cast<size_t>(std::max<qint64>(got, 0));
    text.bytes[length] = '\0';
    text.begin = text.bytes.get();
    text.end = text.begin + length;
    return text;
}

}  // namespace

void LoadCurveData2(const QString& path, CurveData& curve, QChar separator) {
    if (!QFileInfo::exists(path)) return;
    const Text text = read_whole(path);
    Lines lines(text.begin, text.end);
    auto header_line = [&] {
        if (lines.at_end()) not_a_curve_file(path);
        return lines.next_text();
    };
    if (header_line() != message_text(107)) not_a_curve_file(path);
    if (header_line() != QLatin1String("HeaderStart")) not_a_curve_file(path);
    const QString threshold_line = header_line();
    const QString frequency_line = header_line();
    QString line, session, date, time;
    while (!lines.at_end() && line != QLatin1String("HeaderEnd")) {
        line = lines.next_text();
        // The session's own lines, for telling sessions apart; nothing else reads them.
        if (line.startsWith(QLatin1String("Session Number:")))
            session = text_after_colon(line);
        else if (line.startsWith(QLatin1String("Date:")))
            date = text_after_colon(line);
        else if (line.startsWith(QLatin1String("Time:")))
            time = text_after_colon(line);
    }
    if (line != QLatin1String("HeaderEnd")) not_a_curve_file(path);

    curve = CurveData{};
    try {
        curve.threshold = locale_number(text_after_colon(threshold_line), separator, source);
        curve.count_frequency = locale_number(text_after_colon(frequency_line), separator, source);
        if (curve.count_frequency == 0)
            throw ZelError(err_division_by_zero, QString::fromLatin1(source),
                           QStringLiteral("Division by zero"));
        curve.session = session.trimmed();
        curve.date = date.trimmed();
        curve.time_of_day = time.trimmed();
        // A line as the console writes it is 27 bytes or more.
        const auto expected = static_cast<size_t>((text.end - lines.position()) / 26 + 1);
        for (auto* v : {&curve.time, &curve.volume, &curve.session_time}) v->reserve(expected);
        curve.balloon.reserve(expected);
        curve.patient_switch.reserve(expected);
        for (auto* v : {&curve.time, &curve.volume, &curve.session_time}) prefault_capacity(*v);
        read_samples(lines.position(), text.end, curve, static_cast<char>(separator.unicode()));
        // Arrays shrunk to no element at all: a file without samples is not a curve.
        if (curve.time.empty()) missing_field();
    } catch (...) {
        curve = CurveData{};
        throw;
    }
}

}  // namespace zel
