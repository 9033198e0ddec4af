#pragma once
// The languages found at start: the accepted files' display names and paths, kept for the
// life of the process as the choices of the system settings dialog.
#include <QString>
#include <cstdint>
#include <vector>

namespace zel {

struct LanguageState {
    std::vector<QString> language_name;
    std::vector<QString> language_path;
    int16_t accepted_language_count = 0;
    // Declared for the main window and never used by the catalogue.
    int16_t LangIndex = 0;
    QString language_directory;
    QString default_language;
};

}  // namespace zel
