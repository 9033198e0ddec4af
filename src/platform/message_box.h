#pragma once
// Message boxes, modal but for the notice. In the program the box runs its own event loop, so
// frames and timers go on being handled while it is up.
#include <QString>

namespace zel {

enum MsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
};
enum MsgBoxResult : int { vbOK = 1, vbCancel = 2, vbYes = 6, vbNo = 7 };

class MessageBoxes {
public:
    virtual ~MessageBoxes() = default;
    virtual int MsgBox(const QString& prompt, int style = vbOKOnly, const QString& title = {}) = 0;
    // A box that stands beside the work: it returns at once, and timers and frames go on.
    virtual void notice(const QString& text) = 0;
    // A prompt with a text field: what was typed, or the empty string on Cancel.
    virtual QString InputBox(const QString& prompt) = 0;
};

}  // namespace zel
