#pragma once
// The review window alone, opened straight on curve files: for an office machine or a file
// manager's "Open with", without a module, a patient or the main window.
#include <QString>
#include <QStringList>

namespace zel {

// Runs the review window on `files` until it is closed, in the language in force under
// `app_data_path`; returns the program's exit code.
int run_review(const QString& app_data_path, const QStringList& files);

}  // namespace zel
