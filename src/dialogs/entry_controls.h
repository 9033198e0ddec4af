#pragma once
// The entry controls of the settings dialogs as the logic sees them: a text box with its caret,
// and a scroll bar with its range.
#include "app/control.h"

namespace zel {

// The colour a text box returns to after it was marked.
constexpr Rgb text_box_background{255, 255, 255};
// The numeric fields stand out from the name fields.
constexpr Rgb numeric_background{255, 255, 192};
// The one line of a dialog that tells why an entry was refused.
constexpr Rgb message_colour{192, 0, 0};

struct TextBox : Control {
    TextBox() { BackColor = text_box_background; }
    QString Text;
    int SelStart = 0;   // the caret, in characters from the start
    int MaxLength = 0;  // the most characters the operator may type; 0 for no limit
    bool Locked = false;  // shown and selectable, never typed in
};

struct ScrollBar : Control {
    int Min = 0;
    int Max = 32767;
    int SmallChange = 1;
    int LargeChange = 1;
};

}  // namespace zel
