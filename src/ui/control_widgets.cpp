#include "ui/control_widgets.h"

#include <QAbstractButton>
#include <QPixmap>

namespace zel {

QRect pixel_rect(const Control& c) {
    return QRect(qRound(c.Left / twips_per_pixel), qRound(c.Top / twips_per_pixel),
                 qRound(c.Width / twips_per_pixel), qRound(c.Height / twips_per_pixel));
}

namespace {
QString css_colour(Rgb c) { return QStringLiteral("rgb(%1,%2,%3)").arg(c.r).arg(c.g).arg(c.b); }
}  // namespace

void render_control(const Control& control, QWidget& widget, bool place) {
    if (place) {
        const QRect rect = pixel_rect(control);
        if (widget.geometry() != rect) widget.setGeometry(rect);
    }
    if (widget.isVisibleTo(widget.parentWidget()) != control.Visible)
        widget.setVisible(control.Visible);
    if (widget.isEnabled() != control.Enabled) widget.setEnabled(control.Enabled);
    QFont font(control.font.name);
    font.setPointSizeF(control.font.size);
    font.setBold(control.font.bold);
    if (widget.font() != font) widget.setFont(font);
    if (auto* label = qobject_cast<QLabel*>(&widget)) {
        const QString style = QStringLiteral("QLabel{color:%1;background-color:%2;}")
                                  .arg(css_colour(control.ForeColor), css_colour(control.BackColor));
        if (widget.styleSheet() != style) widget.setStyleSheet(style);
        if (label->pixmap().isNull() && label->text() != control.Caption)
            label->setText(control.Caption);
    } else if (auto* button = qobject_cast<QAbstractButton*>(&widget)) {
        if (button->text() != control.Caption) button->setText(control.Caption);
    }
}

QPixmap product_image(const QString& name) {
    QPixmap picture(QStringLiteral(":/images/") + name);
    return picture;
}

}  // namespace zel
