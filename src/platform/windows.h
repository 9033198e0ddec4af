#pragma once
// The program's own windows as the logic opens and closes them, its question dialogs, and
// the guard that keeps the console in front.
#include <QString>
#include <QStringList>

namespace zel {

enum class Window {
    Form6,
    Form13,
    Form_OverRide_Enable,
    Form_OverRide_Disable,
    Form_FastGatingClear,
    Form5,
    Form_CorruptInfo,
    Form_WrongVersion,
    Form_NumberFormatWarning,
    PatientCurves,
    Form10,
    Form_Gating,
    Form12,
    Form11,
    DialogSessionHistory,
};

class Windows {
public:
    virtual ~Windows() = default;
    // Shows the window modally; returns when it is unloaded. Frames and timers go on.
    virtual void show_modal(Window window) = 0;
    // Loads the window if it is not loaded (its load may run dialogs of its own) and shows it
    // beside the main window; returns at once.
    virtual void show_modeless(Window window) = 0;
    // Closes the window if it is up.
    virtual void unload(Window window) = 0;
    virtual void show_main_window(bool visible) = 0;
    // A modal question under `caption`: the index of the button pressed. Closing the window
    // counts as the last button.
    virtual int ask(const QString& caption, const QString& question,
                    const QStringList& buttons) = 0;
    // One of the console's modal message windows, with its texts one under the other: the
    // index of the button pressed, or -1 when the console unloaded the window itself.
    virtual int show_message(Window window, const QString& caption, const QStringList& texts,
                             const QStringList& buttons) = 0;
    // The spacebar reaches the console from any of its windows, and the keys that would
    // switch away from it are swallowed, while the guard is installed.
    virtual bool install_key_guard() = 0;
    virtual void remove_key_guard() = 0;
};

}  // namespace zel
