#pragma once
// Constants of the design set at every start, and the application's own flags.
#include <QString>
#include <cstdint>

namespace zel {

struct AppState {
    QString major_revision_level;
    QString minor_revision_level;
    QString patient_parameter_filestamp;
    QString logSubDir = QStringLiteral("LOG");
    bool form12_open = false;
    // Form5, Form11 or Form12 is up. None opens over another: an entry reached while one
    // stands (the menus, in the moment between a dialog's closing and the end of its loop)
    // would replace the dialog's model under the handler that waits in it, as a Cancel does
    // for its question.
    int settings_dialogs_open = 0;
    bool patient_settings_cancel = false;
    bool record_file_created = false;
    bool waiting_for_data = false;
    QString record_filename;
    uint8_t save_session_response = 0;
    int16_t flash_counter = 0;
    // The key guard is installed.
    bool hhkLowLevelKybd = false;
    // A failure that no routine handled has been reported: from then on every event entry
    // returns at once and nothing reaches the module or the relay until the program ends.
    bool stopped_by_failure = false;
};

}  // namespace zel
