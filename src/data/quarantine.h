#pragma once
// A patient that fails its CRC or comes from another release is taken out of use: moved into a
// quarantine folder beside it, where nobody picks it by mistake. Only that one patient moves.
#include <QString>

namespace zel {

// Moves the patient of `zel_path` into a folder named `quarantine_name`, made when first
// needed. The folder the file lies in moves whole, into "<its parent>/<quarantine_name>", when
// it is the patient's own: named "<last>_<first>_<id>" from the file's name lines, or holding
// nothing but one patient's files (this ".zel", its companion, "session.ini", curve files, no
// folder). It never is the data directory, the home folder, a file system's root or a folder
// that holds one of them. Otherwise only the ".zel" and its companion move, into
// "<the file's folder>/<quarantine_name>/<last>_<first>_<id>", or the file's base name when
// the name lines can't be read. A name taken there already is kept, and the patient goes to
// "<name>( 2)" up to "<name>( 100)", or "<name>( 0)" when all are taken; a "( 0)" that is taken
// too is thrown. A patient lying in a quarantine folder already stays. A move that can't be
// made leaves the patient where it was; a quarantine folder that can't be made, or a source
// that can't be removed once its copy is in place, is thrown (ZelError) to the load.
void quarantine_patient(const QString& zel_path, const QString& quarantine_name,
                        const QString& data_directory);

// Deletes the folder with everything in it, read-only files too; nothing when it is missing.
void delete_folder(const QString& folder);

}  // namespace zel
