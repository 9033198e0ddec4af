#pragma once
// The entry controls of the settings dialogs as the logic sees them: a text box with its caret,
// and a scroll bar with its range.
#include "app/control.h"

namespace zel {

// The colour a text box returns to after it was marked.
constexpr Rgb text_box_background{255, 255, 255};

struct TextBox : Control {
    TextBox() { BackColor = text_box_background; }
    QString Text;
    int SelStart = 0;   // the caret, in characters from the start
    int MaxLength = 0;  // the most characters the operator may type; 0 for no limit
};

struct ScrollBar : Control {
    int Min = 0;
    int Max = 32767;
    int SmallChange = 1;
    int LargeChange = 1;
};

}  // namespace zel
