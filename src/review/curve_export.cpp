// Writing a time slice of each shown curve to a file of its own.
#include <sys/stat.h>

#include <QFile>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/file_fault.h"
#include "data/locale_number.h"
#include "data/system_settings_file.h"
#include "data/whole_file.h"
#include "language/messages.h"
#include "review/patient_curves.h"

namespace zel {

namespace {

constexpr const char* export_source = "mnuExport_Click";

[[noreturn]] void cancelled() {
    throw ZelError(err_cancelled, QString::fromLatin1(export_source),
                   QStringLiteral("Cancel was selected."));
}

// Numeric in the machine's own number format.
bool is_numeric(const QString& text, QChar separator) {
    try {
        locale_number(text, separator, export_source);
        return true;
    } catch (const ZelError&) {
        return false;
    }
}

// The items of a text file as they are read one at a time: an item ends at a line end or at
// a comma, and blanks in front of it are dropped.
class Items {
public:
    explicit Items(const QByteArray& bytes) : bytes(bytes) {}
    bool at_end() const { return p >= bytes.size(); }
    QByteArray next() {
        while (p < bytes.size() && (bytes[p] == ' ' || bytes[p] == '\t')) ++p;
        const qsizetype first = p;
        while (p < bytes.size() && bytes[p] != ',' && bytes[p] != '\r' && bytes[p] != '\n') ++p;
        const QByteArray item = bytes.mid(first, p - first);
        if (p < bytes.size() && bytes[p] == ',') {
            ++p;
        } else {
            if (p < bytes.size() && bytes[p] == '\r') ++p;
            if (p < bytes.size() && bytes[p] == '\n') ++p;
        }
        return item;
    }

private:
    const QByteArray& bytes;
    qsizetype p = 0;
};

// The file a path names, followed through symbolic links.
bool file_at(const QString& path, struct stat& found) {
    return ::stat(QFile::encodeName(path).constData(), &found) == 0;
}

// Two names of one file, a hard link or a path through a linked folder among them, share the
// device and the inode.
bool same_file(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The export is renamed over the file it replaces: over a curve being recorded, the recording
// would go on into a file no longer on disk.
QString curve_in_use_text(const QString& path) { return message_text(361).arg(path); }

}  // namespace

bool PatientCurves::is_curve_in_use(const QString& path) const {
    struct stat target {};
    if (!file_at(path, target)) return false;
    QStringList in_use(curve_paths.begin(), curve_paths.end());
    if (files_being_written) in_use += files_being_written();
    for (const QString& other : in_use) {
        struct stat found {};
        if (file_at(other, found) && same_file(found, target)) return true;
    }
    return false;
}

bool PatientCurves::ask_export_time(const QString& prompt, double limit, const double* start,
                                    double& value) {
    const QChar separator = platform.locale.decimal_separator();
    for (;;) {
        const QString text = platform.boxes.InputBox(prompt);
        if (text.isEmpty()) return false;
        if (!is_numeric(text, separator)) {
            platform.boxes.MsgBox(message_text(171), vbExclamation);
            continue;
        }
        // Tested in the machine's format, read with a point: "1,5" on a comma machine is 1.
        value = point_only_number(text);
        if (start && !(value > *start)) {
            platform.boxes.MsgBox(message_text(265), vbCritical);
            continue;
        }
        if ((start || value >= 0) && value < limit) return true;
        platform.boxes.MsgBox(message_text(173), vbCritical);
    }
}

void PatientCurves::mnuExport_Click() {
    try {
        for (size_t k = 0; k < PatientList.items.size(); ++k) {
            const ListView::Item& entry = PatientList.items[k];
            const QString name = entry.text;
            if (!entry.checked) continue;
            if (static_cast<int>(k) >= curve_count)
                throw ZelError(err_subscript, QString::fromLatin1(export_source),
                               QStringLiteral("Subscript out of range"));
            const double limit =
                safe_upper_bound(curve_time[k]) / curve_info[k].count_frequency;
            double start = 0, end = 0;
            if (!ask_export_time(message_text(170) + name + QLatin1Char(' '), limit, nullptr, start))
                cancelled();
            if (!ask_export_time(message_text(172) + name + QLatin1Char(' '), limit, &start, end))
                cancelled();
            QString path;
            for (;;) {
                path = platform.dialogs.save_file(
                    message_text(174) + name, QStringLiteral("*.dat"),
                    message_text(105) + QStringLiteral(" (*.dat)|*.dat"));
                if (path.isEmpty()) cancelled();
                if (!is_curve_in_use(path)) break;
                platform.boxes.MsgBox(curve_in_use_text(path), vbExclamation);
            }
            export_curve(static_cast<int16_t>(k), start, end, path);
        }
    } catch (const ZelError&) {
        // A cancel, or anything else, gives up this curve and the ones after it silently;
        // the files already written stay.
    }
}

void PatientCurves::export_curve(int16_t index, double start, double end, const QString& path) {
    QFile source(curve_paths.at(index));
    try {
        const double rate = curve_info.at(index).count_frequency;
        // Seconds become indices by the file's rate, ties to even.
        const int32_t first = round_to_int32(rate * start);
        const int32_t last = round_to_int32(rate * end);
        if (!source.open(QIODevice::ReadOnly))
            throw ZelError(err_file_not_found, QStringLiteral("export_curve"), source.fileName());
        const QByteArray bytes = source.readAll();
        source.close();
        // The export is made whole in memory and then replaces the file chosen: a full disk
        // leaves whatever file had that name as it was.
        QByteArray out;
        Items items(bytes);
        QByteArray item;
        while (item != "HeaderEnd" && !items.at_end()) {
            item = items.next();
            out += item + "\r\n";
        }
        if (item != "HeaderEnd")
            throw ZelError(err_bad_curve_file, QStringLiteral("LoadCurveData2"),
                           curve_info[index].curve_name + message_text(184));
        const QChar separator = platform.locale.decimal_separator();
        const auto& session_time = curve_session_time[index];
        const auto& volume = curve_volume[index];
        const auto& balloon = curve_balloon[index];
        const auto& patient_switch = curve_switch[index];
        for (int32_t i = first; i <= last; ++i) {
            if (i < 0 || static_cast<size_t>(i) >= session_time.size())
                throw ZelError(err_subscript, QStringLiteral("export_curve"),
                               QStringLiteral("Subscript out of range"));
            const QString row = print_zones(
                {printed_number(session_time[i], separator), printed_number(volume[i], separator),
                 printed_number(balloon[i], separator), printed_number(patient_switch[i], separator)});
            out += (row + QStringLiteral("\r\n")).toLatin1();
        }
        // A read-only file is not replaced, whoever runs the program.
        if (const Written written = replace_whole_file(path, out, true); !written)
            raise_file_fault(written.error, "export_curve", written.path);
    } catch (const ZelError& failure) {
        source.close();
        // The operator learns that this curve was not exported, and why; the dialogue goes on
        // with the next curve.
        const QString why = failure.description;
        platform.boxes.MsgBox(failure.number == err_bad_curve_file
                                  ? why
                                  : message_text(142) + QLatin1Char('\n') + why,
                              vbExclamation);
    }
}

}  // namespace zel
