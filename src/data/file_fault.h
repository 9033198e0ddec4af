#pragma once
// A failure of the file system, in the console's numbering, with the system's own words for it.
// Every file operation of the console goes through this one table.
#include <QString>

namespace zel {

// 61 "Disk full" for a full disk or an exhausted quota, 70 "Permission denied" for a file or
// share closed to writing, 76 "Path not found" for a folder that is gone (or a file standing
// where a folder should be), 75 "Path/File access error" for a name that can't stand for a
// file (a folder, a name too long, a loop of links), 57 "Device I/O error" for anything else
// the disk reports.
int file_fault_number(int error);

// "Disk full: No space left on device: PATH".
QString file_fault_text(int error, const QString& path);

// Raises the failure that `error` (an errno value) stands for.
[[noreturn]] void raise_file_fault(int error, const char* source, const QString& path);

// Where the operator's message is a fixed text, the cause goes to the console's standard error:
// "zelmoor: SOURCE: Disk full: No space left on device: PATH".
void log_file_fault(int error, const char* source, const QString& path);

}  // namespace zel
