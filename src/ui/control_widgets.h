#pragma once
// Rendering of a control's state on a widget, shared by the views.
#include <QLabel>
#include <QRect>
#include <QWidget>

#include "app/control.h"

namespace zel {

// A control's place in pixels, from its twips.
QRect pixel_rect(const Control& control);
// Puts a control's caption, colours, font, place and visibility on a widget; `place` false
// leaves the widget where its layout put it.
void render_control(const Control& control, QWidget& widget, bool place = true);
// A picture from the product's images.
QPixmap product_image(const QString& name);

}  // namespace zel
