#pragma once
// zelmoor --check FOLDER: the patient folders a site brings, read as this console would load
// them, without changing any of them.
#include <QString>

namespace zel {

// Prints one line per patient and the summary to standard output; returns the exit status:
// 0 when every patient loads and every curve reads, 1 otherwise, 2 when FOLDER is no folder.
// The messages are those of the language in force at this site (from `app_data_path`).
int run_check(const QString& app_data_path, const QString& folder);

}  // namespace zel
