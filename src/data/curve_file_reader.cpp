#include "data/curve_file_reader.h"

#include <algorithm>

#include <QFile>
#include <QFileInfo>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/locale_number.h"
#include "data/prefault.h"
#include "data/system_settings_file.h"
#include "language/messages.h"

namespace zel {

namespace {

constexpr const char* source = "LoadCurveData2";

// The lines of the file's bytes, one at a time, without their line ends.
class Lines {
public:
    explicit Lines(const QByteArray& bytes)
        : p(bytes.constData()), end(bytes.constData() + bytes.size()) {}
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

private:
    const char* p;
    const char* end;
};

[[noreturn]] void not_a_curve_file(const QString& path) {
    throw ZelError(err_bad_curve_file, QString::fromLatin1(source), path + message_text(184));
}

[[noreturn]] void missing_field() {
    throw ZelError(err_subscript, QString::fromLatin1(source), QStringLiteral("Subscript out of range"));
}

uint8_t byte_value(const char* first, const char* last) {
    const long long value = round_to_integer(point_only_number(first, last));
    if (value < 0 || value > 255) raise_overflow(source);
    return static_cast<uint8_t>(value);
}

void read_samples(Lines& lines, CurveData& curve, char separator) {
    const double step = 1.0 / curve.count_frequency;
    double time = 0;
    while (!lines.at_end()) {
        const char *first, *last;
        lines.next(first, last);
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
        curve.time.push_back(time);
        time += step;
    }
}

}  // namespace

void LoadCurveData2(const QString& path, CurveData& curve, QChar separator) {
    if (!QFileInfo::exists(path)) return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ZelError(err_path_file_access, QString::fromLatin1(source),
                       QStringLiteral("Path/File access error: ") + path);
    // Read whole: a 30-minute curve is 90,000 lines, parsed in place.
    QByteArray bytes(file.size(), Qt::Uninitialized);
    prefault(bytes.data(), static_cast<size_t>(bytes.size()));
    bytes.truncate(std::max<qint64>(file.read(bytes.data(), bytes.size()), 0));
    file.close();
    Lines lines(bytes);
    auto header_line = [&] {
        if (lines.at_end()) not_a_curve_file(path);
        return lines.next_text();
    };
    if (header_line() != message_text(107)) not_a_curve_file(path);
    if (header_line() != QLatin1String("HeaderStart")) not_a_curve_file(path);
    const QString threshold_line = header_line();
    const QString frequency_line = header_line();
    QString line;
    while (!lines.at_end() && line != QLatin1String("HeaderEnd")) line = lines.next_text();
    if (line != QLatin1String("HeaderEnd")) not_a_curve_file(path);

    curve = CurveData{};
    try {
        curve.threshold = locale_number(text_after_colon(threshold_line), separator, source);
        curve.count_frequency = locale_number(text_after_colon(frequency_line), separator, source);
        if (curve.count_frequency == 0)
            throw ZelError(err_division_by_zero, QString::fromLatin1(source),
                           QStringLiteral("Division by zero"));
        const auto expected = static_cast<size_t>(bytes.size() / 24 + 1);
        for (auto* v : {&curve.time, &curve.volume, &curve.session_time}) v->reserve(expected);
        curve.balloon.reserve(expected);
        curve.patient_switch.reserve(expected);
        for (auto* v : {&curve.time, &curve.volume, &curve.session_time}) prefault_capacity(*v);
        read_samples(lines, curve, static_cast<char>(separator.unicode()));
        // Arrays shrunk to no element at all: a file without samples is not a curve.
        if (curve.time.empty()) missing_field();
    } catch (...) {
        curve = CurveData{};
        throw;
    }
}

}  // namespace zel
