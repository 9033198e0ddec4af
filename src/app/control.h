#pragma once
// A control of a window as the logic sees it: caption, colours, state and place. Views
// render these; the logic never touches a widget.
#include <QString>
#include <QStringList>

#include "platform/chart_surface.h"

namespace zel {

struct Font {
    QString name = QStringLiteral("Liberation Sans");
    double size = 8.25;
    bool bold = false;
    friend bool operator==(const Font&, const Font&) = default;
};

struct Control {
    QString Caption;
    Rgb ForeColor{0, 0, 0};
    Rgb BackColor{224, 224, 224};
    bool Enabled = true;
    bool Visible = true;
    // Place and size in twips (15 to a pixel on screen).
    double Left = 0, Top = 0, Width = 0, Height = 0;
    Font font;
    int Value = 0;  // check boxes, option buttons, scroll bars
};

// A drop-down list; ListIndex -1 when nothing is selected.
struct ComboBox : Control {
    QStringList items;
    int ListIndex = -1;
};

constexpr double twips_per_pixel = 15.0;

// A control's place and size in twips.
inline void place_twips(Control& c, double left, double top, double width, double height) {
    c.Left = left;
    c.Top = top;
    c.Width = width;
    c.Height = height;
}

// The same given in screen pixels.
inline void place_pixels(Control& c, double left, double top, double width, double height) {
    place_twips(c, left * twips_per_pixel, top * twips_per_pixel, width * twips_per_pixel,
                height * twips_per_pixel);
}
// The main window's background, which fault and status labels return to.
constexpr Rgb window_background{224, 224, 224};

}  // namespace zel
