#pragma once
// The release of this console: its software version, which every patient file carries and
// is tested against on loading, and the stamp of the patient files.
#include <QString>

namespace zel::release {

inline constexpr char major_revision_level[] = "3";
inline constexpr char minor_revision_level[] = "00.01";
inline constexpr char patient_parameter_filestamp[] = "ZEL Patient Parameter File";

// Major revision, a point, minor revision: "3.00.01".
inline QString software_version() {
    return QString::fromLatin1(major_revision_level) + QLatin1Char('.') +
           QString::fromLatin1(minor_revision_level);
}

}  // namespace zel::release
