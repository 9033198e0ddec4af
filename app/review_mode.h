#pragma once
// The review window alone, opened straight on curve files: for an office machine or a file
// manager's "Open with", without a module, a patient or the main window.
#include <QStringList>

namespace zel {

// Runs the review window on `files` until it is closed; returns the program's exit code.
int run_review(const QStringList& files);

}  // namespace zel
