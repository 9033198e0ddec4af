#pragma once
// A failure of the file system, in the console's numbering, with the system's own words for it.
#include <QString>

namespace zel {

// 61 "Disk full" for a full disk or an exhausted quota, 70 "Permission denied" for a file or
// share closed to writing, 76 "Path not found" for a folder that is gone (or a file standing
// where a folder should be), 57 "Device I/O error"
// for anything else the disk reports.
int file_fault_number(int error);

// "Disk full: No space left on device: PATH".
QString file_fault_text(int error, const QString& path);

// Raises the failure that `error` (an errno value) stands for.
[[noreturn]] void raise_file_fault(int error, const char* source, const QString& path);

}  // namespace zel
