#include "ui/form1_view.h"

#include <QPainter>
#include <QPaintEvent>

namespace zel {

namespace {
QRect pixel_rect(const Control& c) {
    return QRect(qRound(c.Left / twips_per_pixel), qRound(c.Top / twips_per_pixel),
                 qRound(c.Width / twips_per_pixel), qRound(c.Height / twips_per_pixel));
}
QString css_colour(Rgb c) { return QStringLiteral("rgb(%1,%2,%3)").arg(c.r).arg(c.g).arg(c.b); }
}  // namespace

ChartWidget::ChartWidget(QtChartSurface& surface_, QWidget* parent)
    : QWidget(parent), surface(surface_) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    surface.on_changed = [this](const QRect& area) { update(area); };
}

void ChartWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.drawImage(event->rect(), surface.image(), event->rect());
}

void render_control(const Control& control, QWidget& widget) {
    const QRect place = pixel_rect(control);
    if (widget.geometry() != place) widget.setGeometry(place);
    if (widget.isVisibleTo(widget.parentWidget()) != control.Visible)
        widget.setVisible(control.Visible);
    if (widget.isEnabled() != control.Enabled) widget.setEnabled(control.Enabled);
    QFont font(control.font.name);
    font.setPointSizeF(control.font.size);
    font.setBold(control.font.bold);
    if (widget.font() != font) widget.setFont(font);
    const QString style = QStringLiteral("color:%1;background-color:%2;")
                              .arg(css_colour(control.ForeColor), css_colour(control.BackColor));
    if (widget.styleSheet() != style) widget.setStyleSheet(style);
    if (auto* label = qobject_cast<QLabel*>(&widget); label && label->text() != control.Caption)
        label->setText(control.Caption);
}

Form1View::Form1View(Form1& form_, QtChartSurface& surface) : form(form_) {
    setWindowTitle(QStringLiteral("Zelmoor"));
    setFixedSize(1024, 768);
    setStyleSheet(QStringLiteral("Form1View { background-color: rgb(224,224,224); }"));
    chart = new ChartWidget(surface, this);
    add_label(form.thresh_label);
    add_label(form.elapsed_label);
    add_label(form.volume_label);
    add_label(form.countdown2)->setAlignment(Qt::AlignCenter);
    add_label(form.Label2)->setWordWrap(true);
    // Captions change up to 50 times a second; the screen follows at its own pace.
    connect(&refresh, &QTimer::timeout, this, &Form1View::sync);
    refresh.start(40);
    sync();
}

QLabel* Form1View::add_label(Control& control) {
    auto* label = new QLabel(this);
    labels[&control] = label;
    return label;
}

void Form1View::sync() {
    const QRect place = pixel_rect(form.Pic);
    if (chart->geometry() != place) chart->setGeometry(place);
    for (auto& [control, label] : labels) render_control(*control, *label);
}

}  // namespace zel
