#pragma once
// The system settings as "zel.ini" and "datapath.ini" hold them, and the number format that
// ties the console's numeric files to the machine's decimal separator. The chart and
// breath-hold defaults that "zel.ini" also holds live in the display and link state.
#include <QString>

namespace zel {

struct SettingsState {
    QString software_version = QStringLiteral("3.00.01");
    QString system_parameter_filestamp =
        QStringLiteral("ZEL System Parameter File - DO NOT EDIT 3.00.01");
    QString data_directory;
    QString corrupt_directory;
    QString number_format;        // "dot" or "comma"
    QString found_number_format;  // as read from a file, for comparison and display
    QString language_file;        // a language's display name, "English" for the built-in one
};

}  // namespace zel
