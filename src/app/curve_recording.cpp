// The curve file of a session: the Record and Pause buttons and the file's header. Each
// sample line is written by the data frame's handling.
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "app/form1.h"
#include "app/helpers.h"
#include "data/file_access.h"
#include "data/file_name.h"
#include "language/messages.h"

namespace zel {

QString Form1::curve_file_path() const {
    return data_directory + QLatin1Char('/') + patient_last_name + QLatin1Char('_') +
           patient_first_name + QLatin1Char('_') + patient_medical_id + QLatin1Char('/') +
           patient_last_name + QLatin1Char('_') + session + QStringLiteral(".dat");
}

void Form1::open_curve_file(const QString& path) {
    auto file = std::make_unique<AppendFile>(path, "cmdRecord_Click");
    file->open();
    // Frames are the clock: a second of lines at a time reaches the disk, so that a power cut
    // loses at most the last second of the recording.
    file->keep_synchronised(static_cast<int>(count_frequency));
    curve_file = std::move(file);
}

void Form1::cmdRecord_Click() {
    if (!patient_defined) return;
    cmdRecord.Enabled = false;
    cmdPause.Enabled = true;
    bRecord = true;
    if (!record_file_created) record_filename = curve_file_path();
    if (!QFileInfo::exists(record_filename)) {
        printHeader(record_filename);
        open_curve_file(record_filename);
        record_file_created = true;
    } else if (record_file_created) {
        // The same session back from a pause.
        make_writable(record_filename);
        open_curve_file(record_filename);
    } else {
        // An earlier run left a file under this session's name: it is kept, and this one
        // takes the moment in its name.
        QString stamp = platform.locale.general_date(platform.clock.now());
        stamp.replace(QLatin1Char(':'), QLatin1Char('_'))
            .replace(QLatin1Char('/'), QLatin1Char('_'));
        record_filename = with_suffix(record_filename, QStringLiteral(".dat"),
                                      QLatin1Char('_') + stamp + QStringLiteral(".dat"));
        // A stamped file of the same moment is another recording: its header and lines are
        // never followed by a second header, which the review would refuse.
        const QString stamped = record_filename.chopped(4);
        for (int n = 2; QFileInfo::exists(record_filename); ++n)
            record_filename = stamped + QStringLiteral("_%1.dat").arg(n);
        printHeader(record_filename);
        open_curve_file(record_filename);
        record_file_created = true;
    }
}

void Form1::cmdPause_Click() {
    if (!patient_defined) return;
    cmdRecord.Enabled = true;
    cmdPause.Enabled = false;
    bRecord = false;
    if (curve_file) {
        curve_file->source = "cmdPause_Click";
        curve_file->close();
        curve_file.reset();
    }
}

QStringList Form1::curve_header_lines() const {
    const QChar separator = platform.locale.decimal_separator();
    const QDateTime now = platform.clock.now();
    const QString tab = QStringLiteral("\t");
    return {
        message_text(107),
        QStringLiteral("HeaderStart"),
        QStringLiteral("Threshold:") + format_single(thresh, "###0.00", separator),
        QStringLiteral("Count Frequency: ") + printed_single(count_frequency, separator),
        print_zones({QStringLiteral("Patient Last Name: "), patient_last_name}),
        print_zones({QStringLiteral("Medical ID: "), patient_medical_id}),
        print_zones({QStringLiteral("Date: "), now.date().toString(QStringLiteral("MM-dd-yyyy"))}),
        print_zones({QStringLiteral("Time: "), now.time().toString(QStringLiteral("HH:mm:ss"))}),
        print_zones({QStringLiteral("Session Number: "), session}),
        print_zones({QStringLiteral("Breath Hold Duration:"), printed_number(duration, separator)}),
        print_zones({QStringLiteral("Trigger on Inhale:"),
                     inhale ? QStringLiteral("True") : QStringLiteral("False")}),
        QString(),
        QStringLiteral("[Key]"),
        QStringLiteral("Status") + tab + QStringLiteral("Balloon Valve"),
        QStringLiteral("1") + tab + QStringLiteral("deflated"),
        QStringLiteral("2") + tab + QStringLiteral("ready to inflate at threshold (inhale)"),
        QStringLiteral("3") + tab + QStringLiteral("ready to inflate at threshold (exhale)"),
        QStringLiteral("4") + tab + QStringLiteral("inflated"),
        QStringLiteral("5") + tab + QStringLiteral("fault"),
        QString(),
        QStringLiteral("Status") + tab + QStringLiteral("Patient Switch"),
        QStringLiteral("0") + tab + QStringLiteral("Disabled"),
        QStringLiteral("1") + tab + QStringLiteral("Enabled"),
        QStringLiteral("[Curve Data]"),
        print_zones({QStringLiteral("Session Time"), QStringLiteral("Volume (liters)"),
                     QStringLiteral("Balloon Valve Status"), QStringLiteral("Patient Switch"),
                     QStringLiteral("Gating Mode"), QStringLiteral("Gating Status"),
                     QStringLiteral("Relay State")}),
        QStringLiteral("HeaderEnd"),
    };
}

void Form1::printHeader(const QString& path) {
    const bool existed = QFileInfo::exists(path);
    AppendFile file(path, "printHeader");
    file.open();
    QByteArray bytes;
    for (const QString& line : curve_header_lines()) bytes += line.toLatin1() + "\r\n";
    // The whole header in one write: a full disk leaves no part of it behind, and no file
    // without its header that the review would refuse.
    try {
        file.append(bytes);
        file.close();
    } catch (const ZelError&) {
        if (!existed) QFile::remove(path);
        throw;
    }
}

void Form1::close_curve_file_read_only() {
    if (!curve_file) return;
    curve_file->close();
    curve_file.reset();
    make_read_only(record_filename);
}

}  // namespace zel
