#pragma once
// How the console makes files and folders, writes to a handle and opens a file up for writing
// again: one way each, for every writer.
#include <sys/types.h>

#include <QFileDevice>
#include <QString>

namespace zel {

// Patient data is kept from the machine's other users: nothing the console makes grants a
// right to "others", while operators who share a group (and a setgid patients' folder) keep
// reading and writing each other's patients.
constexpr mode_t file_creation_mode = 0660;
constexpr mode_t folder_creation_mode = 0770;

// Adds "others" to the process's file-creation mask, keeping whatever the site's mask takes
// away already, so that what libraries make (a printed PDF, Qt's own files) is closed too. Once,
// early at start, before any file is made. Returns the mask in force before.
mode_t tighten_umask();

// Writes every byte to `fd`, going on after a write that took part of them: 0 when all went,
// otherwise the errno of the write that failed (a write that takes nothing is an I/O error, and
// a line that can not take more without waiting, as a full serial buffer, is EAGAIN).
int write_all(int fd, const char* data, size_t size);

// Makes the folder (its parent must exist): 0, or the errno of the failure (EEXIST when the
// name is taken).
int make_folder(const QString& path);
// Makes the folder and those missing above it: 0, or the errno of the failure.
int make_folders(const QString& path);

// The read-only attribute: an existing file (not a folder) that its owner may not write.
bool read_only_file(const QString& path);
// Clears it (gives the owner write permission back, and `extra` with it) before a file is
// written in place, as clearing the attributes to normal does.
bool make_writable(const QString& path, QFileDevice::Permissions extra = {});
// Sets it: nobody may write the file.
bool make_read_only(const QString& path);

}  // namespace zel
