#pragma once
// A patient's parameter file ("<last>.zel", 14 lines read by position) and its ".sfv"
// companion with the CRC of the finished file. Paths use "/".
#include <QString>
#include <QStringList>
#include <cstdint>

#include "data/whole_file.h"

namespace zel {

// The values that hold for the whole course of treatment.
struct PatientParameters {
    QString last_name;
    QString first_name;
    QString medical_id;
    float thresh = 0;
    double duration = 0;
    double max_y = 0;
    bool inhale = true;
    float x_scale_factor = 1;
    double max_x = 0;
    bool gated = false;
};

// "<data_directory>/<last>_<first>_<id>", nothing escaped.
QString patient_folder(const QString& data_directory, const QString& last, const QString& first,
                       const QString& id);
// "<folder>/<last>.zel": only the last name names the file.
QString patient_file_path(const QString& data_directory, const QString& last,
                          const QString& first, const QString& id);
// The file's ".zel" ending replaced by ".sfv"; the folders of the path stay as they are.
QString companion_path(const QString& zel_path);

// The 14 lines without line ends; numbers with the system's separator, `date_text` as given.
QStringList patient_file_lines(const QString& stamp, const QString& software_version,
                               const PatientParameters& parameters, const QString& date_text,
                               const QString& number_format, QChar separator);

// Writes the new ".zel" (read-only) and its companion with the CRC of the file as it stands on
// disk, both beside the old ones, then puts both in place: a failed step leaves the old pair,
// which still loads. What failed when either can't be written (EILSEQ for a text outside
// Latin-1).
Written write_patient_files(const QString& zel_path, const QStringList& lines);

// What a load found, in the order of its tests.
enum class PatientFileVerdict {
    accepted,               // every test passed; `holding` is filled
    corrupt,                // companion missing or its CRC differs
    not_a_patient_file,     // line 1 is not the stamp
    wrong_version,          // line 2 differs from the running version, either way
    number_format_differs,  // line 14 differs from the system's; `found_number_format` set
};

// The holding area that a file is read into; the Patient Settings dialog works from it.
struct PatientHolding {
    QString last_name;
    QString first_name;
    QString medical_id;
    float thresh = 0;
    int16_t duration = 0;
    float max_y = 0;
    QString trigger;  // "True" or "False", from the line's boolean value
    QString gating;   // kept as the text
    float x_scale_factor = 0;
    double max_x = 0;
};

struct PatientFileReading {
    PatientFileVerdict verdict = PatientFileVerdict::corrupt;
    bool companion_missing = false;  // corrupt for want of a companion, not for its value
    QString found_version;           // line 2, once the stamp has passed
    QString found_number_format;
    PatientHolding holding;
};

// The tests of a load in their fixed order: the CRC first, then the stamp, the version, the
// number format, then the conversions. A missing chosen file fails with 53 (ZelError); a file
// or companion that can't be read, too few lines (62) or a value that doesn't convert (13, 6)
// fail with their numbers.
PatientFileReading read_patient_file(const QString& zel_path, const QString& stamp,
                                     const QString& software_version,
                                     const QString& number_format);

}  // namespace zel
