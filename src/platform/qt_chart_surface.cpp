#include "platform/qt_chart_surface.h"

#include <QPainter>
#include <cmath>

namespace zel {

QtChartSurface::QtChartSurface(int width_pixels, int height_pixels) {
    resize(width_pixels, height_pixels);
}

void QtChartSurface::resize(int width_pixels, int height_pixels) {
    picture = QImage(std::max(1, width_pixels), std::max(1, height_pixels),
                     QImage::Format_RGB32);
    picture.fill(Qt::white);
    changed(picture.rect());
}

void QtChartSurface::set_scale(double x1, double y1, double x2, double y2) {
    scale_left = x1;
    scale_top = y1;
    scale_width = x2 - x1;
    scale_height = y2 - y1;
}

void QtChartSurface::clear() {
    picture.fill(Qt::white);
    changed(picture.rect());
}

void QtChartSurface::set_line_style(LineStyle s) { style = s; }
void QtChartSurface::set_line_width(int pixels) { width = pixels; }
void QtChartSurface::set_fore_color(Rgb colour) { fore = colour; }

QPointF QtChartSurface::to_pixels(double x, double y) const {
    // Clamped far outside the picture, so that a wild value cannot overflow the painter.
    auto clamp = [](double v) { return std::isfinite(v) ? std::clamp(v, -1e5, 1e5) : 0.0; };
    return {clamp((x - scale_left) / scale_width * picture.width()),
            clamp((y - scale_top) / scale_height * picture.height())};
}

QPen QtChartSurface::pen(Rgb colour) const {
    QPen p(QColor(colour.r, colour.g, colour.b), width);
    if (style == LineStyle::dotted) {
        p.setDashPattern({1.0 / std::max(1, width), 1.0 / std::max(1, width)});
        p.setCapStyle(Qt::FlatCap);
    } else {
        p.setCapStyle(width > 1 ? Qt::RoundCap : Qt::FlatCap);
    }
    return p;
}

void QtChartSurface::line(double x1, double y1, double x2, double y2) {
    line(x1, y1, x2, y2, fore);
}

void QtChartSurface::line(double x1, double y1, double x2, double y2, Rgb colour) {
    const QPointF a = to_pixels(x1, y1), b = to_pixels(x2, y2);
    {
        QPainter painter(&picture);
        painter.setPen(pen(colour));
        painter.drawLine(a, b);
    }
    changed(QRectF(a, b).normalized());
}

void QtChartSurface::box(double x1, double y1, double x2, double y2, Rgb colour) {
    const QRectF area = QRectF(to_pixels(x1, y1), to_pixels(x2, y2)).normalized();
    {
        QPainter painter(&picture);
        painter.setPen(pen(colour));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(area);
    }
    changed(area);
}

void QtChartSurface::changed(const QRectF& area) {
    if (!on_changed) return;
    const int margin = width + 2;
    on_changed(area.toAlignedRect().adjusted(-margin, -margin, margin, margin));
}

}  // namespace zel
