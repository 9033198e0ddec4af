#pragma once
// A patient that fails its CRC or comes from another release is moved, whole, into a
// quarantine folder beside the other patients, where nobody picks it by mistake.
#include <QString>

namespace zel {

// Moves the folder that holds `zel_path` into "<parent>/<quarantine_name>", made when first
// needed; the parent is that of the chosen file, not the data directory. A failed copy leaves
// the patient where it was. Failures of the file system are thrown (ZelError) to the load.
void quarantine_patient(const QString& zel_path, const QString& quarantine_name);

// Copies the folder `source` into `destination` (made if missing) under its own name. A name
// already there is kept and the copy goes to "<name>( 2)" up to "<name>( 100)", or
// "<name>( 0)" when all are taken; `destination` then names that folder, and a numbered
// folder that can't be made (or exists) is thrown. True on success; false, with nothing of the
// copy left behind, when `source` is missing, `destination` lies within it, or the copy fails.
bool copy_folder(const QString& source, QString& destination);

// Deletes the folder with everything in it, read-only files too; nothing when it is missing.
void delete_folder(const QString& folder);

}  // namespace zel
