#include "data/patient_file.h"

#include <QFile>
#include <QFileInfo>
#include <array>
#include <cerrno>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/binary_file_stream.h"
#include "data/crc_companion.h"
#include "data/file_name.h"
#include "data/locale_number.h"
#include "data/system_settings_file.h"
#include "data/text_reader.h"
#include "data/whole_file.h"

namespace zel {

namespace {

constexpr char source_name[] = "read_patient_file";

// Written in English whatever the language in force: the file travels between consoles.
QString true_false(bool value) { return value ? QStringLiteral("True") : QStringLiteral("False"); }

[[noreturn]] void fail(int number, const char* description) {
    throw ZelError(number, QString::fromLatin1(source_name), QString::fromLatin1(description));
}

void open_for_input(QFile& file) {
    if (!file.open(QIODevice::ReadOnly)) {
        if (!file.exists()) fail(err_file_not_found, "File not found");
        fail(err_path_file_access, "Path/File access error");
    }
}

// The value the companion holds, or "-1" (which no CRC prints as) when there is none.
QString stored_crc(const QString& path, bool& missing) {
    int error_number = 0;
    missing = false;
    if (!file_exists(path, error_number)) {
        if (error_number != err_file_not_found) fail(error_number, "Path/File access error");
        missing = true;
        return QStringLiteral("-1");
    }
    QFile companion(path);
    open_for_input(companion);
    TextReader reader(companion);
    return text_after_colon(reader.line_input());
}

}  // namespace

QString patient_folder(const QString& data_directory, const QString& last, const QString& first,
                       const QString& id) {
    return data_directory + QLatin1Char('/') + last + QLatin1Char('_') + first + QLatin1Char('_') +
           id;
}

QString patient_file_path(const QString& data_directory, const QString& last, const QString& first,
                          const QString& id) {
    return patient_folder(data_directory, last, first, id) + QLatin1Char('/') + last +
           QStringLiteral(".zel");
}

QString companion_path(const QString& zel_path) {
    return with_suffix(zel_path, QStringLiteral(".zel"), QStringLiteral(".sfv"));
}

QStringList patient_file_lines(const QString& stamp, const QString& software_version,
                               const PatientParameters& parameters, const QString& date_text,
                               const QString& number_format, QChar separator) {
    return {
        stamp,
        software_version,
        QStringLiteral("Patient Last Name:") + parameters.last_name,
        QStringLiteral("Patient First Name:") + parameters.first_name,
        QStringLiteral("Patient Medical ID:") + parameters.medical_id,
        QStringLiteral("Date:") + date_text,
        QStringLiteral("Threshold:") + format_single(parameters.thresh, "###0.00", separator),
        QStringLiteral("Breath Hold Duration:") + printed_number(parameters.duration, separator),
        QStringLiteral("Y-Scale Range:") + printed_number(parameters.max_y, separator),
        QStringLiteral("Trigger on Inhale:") + true_false(parameters.inhale),
        QStringLiteral("X-Axis Scale:") + printed_single(parameters.x_scale_factor, separator),
        QStringLiteral("X-Axis length:") + printed_number(parameters.max_x, separator),
        QStringLiteral("Gated:") + true_false(parameters.gated),
        QStringLiteral("Number Format:") + number_format,
    };
}

Written write_patient_files(const QString& zel_path, const QStringList& lines) {
    QByteArray bytes;
    if (!latin1_lines(lines, bytes)) return {EILSEQ, zel_path};
    // Both files are written beside the old ones before either is put in place: a full disk
    // leaves the old pair, which still loads, and never a new file beside an old CRC.
    WholeFileReplacement replacement;
    if (!replacement.write(zel_path, bytes, true)) return replacement.result();
    // The CRC is taken from the file as it stands on disk, not from the bytes meant for it.
    int32_t crc = 0;
    try {
        crc = CalculateCRC(replacement.written_path(0));
    } catch (const ZelError&) {
        return {EIO, replacement.written_path(0)};
    }
    if (replacement.write(companion_path(zel_path), crc_companion_line(crc)) &&
        replacement.commit())
        return {};
    return replacement.result();
}

PatientFileReading read_patient_file(const QString& zel_path, const QString& stamp,
                                     const QString& software_version,
                                     const QString& number_format) {
    PatientFileReading reading;
    const int32_t crc = CalculateCRC(zel_path);
    if (stored_crc(companion_path(zel_path), reading.companion_missing) != crc_hex(crc)) {
        reading.verdict = PatientFileVerdict::corrupt;
        return reading;
    }

    QFile file(zel_path);
    open_for_input(file);
    TextReader reader(file);
    if (reader.line_input() != stamp) {
        reading.verdict = PatientFileVerdict::not_a_patient_file;
        return reading;
    }
    reading.found_version = reader.line_input();
    if (reading.found_version != software_version) {
        reading.verdict = PatientFileVerdict::wrong_version;
        return reading;
    }

    // Lines 3 to 14, each reduced to what stands behind its label.
    std::array<QString, 12> values;
    for (QString& value : values) value = text_after_colon(reader.line_input());
    const auto line = [&values](int number) -> const QString& {
        return values[static_cast<size_t>(number - 3)];
    };

    reading.found_number_format = line(14);
    if (reading.found_number_format != number_format) {
        reading.verdict = PatientFileVerdict::number_format_differs;
        return reading;
    }

    const QChar separator =
        number_format == QLatin1String("comma") ? QLatin1Char(',') : QLatin1Char('.');
    PatientHolding& holding = reading.holding;
    holding.last_name = line(3);
    holding.first_name = line(4);
    holding.medical_id = line(5);
    holding.thresh = locale_single(line(7), separator, source_name);
    holding.duration = round_to_int16(locale_number(line(8), separator, source_name));
    holding.max_y = locale_single(line(9), separator, source_name);
    holding.trigger = true_false(boolean_value(line(10), separator));
    holding.gating = line(13);
    holding.x_scale_factor = locale_single(line(11), separator, source_name);
    holding.max_x = locale_number(line(12), separator, source_name);
    reading.verdict = PatientFileVerdict::accepted;
    return reading;
}

}  // namespace zel
