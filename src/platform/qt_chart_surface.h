#pragma once
// A chart surface that keeps its content in an image; the view paints the image.
#include <QImage>
#include <QPen>
#include <functional>

#include "platform/chart_surface.h"

namespace zel {

class QtChartSurface final : public ChartSurface {
public:
    QtChartSurface(int width_pixels, int height_pixels);

    void set_scale(double x1, double y1, double x2, double y2) override;
    void clear() override;
    void set_line_style(LineStyle style) override;
    void set_line_width(int pixels) override;
    void set_fore_color(Rgb colour) override;
    void line(double x1, double y1, double x2, double y2) override;
    void line(double x1, double y1, double x2, double y2, Rgb colour) override;
    void box(double x1, double y1, double x2, double y2, Rgb colour) override;

    // A new size wipes the content.
    void resize(int width_pixels, int height_pixels);
    const QImage& image() const { return picture; }
    // Called after each change, with the changed area in pixels.
    std::function<void(const QRect&)> on_changed;

private:
    QPointF to_pixels(double x, double y) const;
    QPen pen(Rgb colour) const;
    void changed(const QRectF& area);

    QImage picture;
    double scale_left = 0, scale_top = 0, scale_width = 1, scale_height = 1;
    LineStyle style = LineStyle::solid;
    int width = 1;
    Rgb fore{0, 0, 0};
};

}  // namespace zel
