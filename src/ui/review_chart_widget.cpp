#include "ui/review_chart_widget.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace zel {

namespace {

// Data to pixels along one axis; the review chart's axes are linear.
struct AxisMap {
    double origin = 0, pixel0 = 0, scale = 1;
    explicit AxisMap(const QCPAxis& axis) {
        const QCPRange r = axis.range();
        origin = r.lower;
        pixel0 = axis.coordToPixel(r.lower);
        scale = (axis.coordToPixel(r.upper) - pixel0) / (r.upper - r.lower);
    }
    double operator()(double v) const { return pixel0 + (v - origin) * scale; }
};

// Far enough outside the plot area to be off screen, near enough for the rasteriser.
constexpr double off_screen = 1e6;

double clamp_pixel(double v, double low, double high) {
    return std::isfinite(v) ? std::clamp(v, low - off_screen, high + off_screen) : low;
}

QPen element_pen(const ChartElement& e) {
    QPen pen(QColor(e.color.r, e.color.g, e.color.b), std::max<int>(1, e.width));
    if (e.line_type == 2) {
        // Square caps would lengthen each dot into the gap after it and the line would read solid.
        pen.setStyle(Qt::DotLine);
        pen.setCapStyle(Qt::FlatCap);
    } else if (e.width > 1) {
        // Bevelled joins: round ones cost an arc at every point of a thick curve, and at a few
        // points per pixel column they look the same.
        pen.setCapStyle(Qt::RoundCap);
        pen.setJoinStyle(Qt::BevelJoin);
    } else {
        // A run shorter than a pixel still leaves its pixel.
        pen.setCapStyle(Qt::SquareCap);
    }
    return pen;
}

// All elements of the model in one plottable: a recording holds tens of thousands of short runs,
// and the plot's own graph per run would not draw them in time.
class ElementsPlottable final : public QCPAbstractPlottable {
  public:
    ElementsPlottable(QCPAxis* x_axis, QCPAxis* y_axis, const ReviewChart& model_)
        : QCPAbstractPlottable(x_axis, y_axis), model(model_) {
        setSelectable(QCP::stNone);
        // Crisp lines: a sample's mark stays the element's own colour, not a blend.
        setAntialiased(false);
    }

    double selectTest(const QPointF&, bool, QVariant*) const override { return -1; }
    QCPRange getKeyRange(bool& found, QCP::SignDomain) const override {
        found = false;
        return {};
    }
    QCPRange getValueRange(bool& found, QCP::SignDomain, const QCPRange&) const override {
        found = false;
        return {};
    }

  protected:
    void draw(QCPPainter* painter) override;
    void drawLegendIcon(QCPPainter*, const QRectF&) const override {}

  private:
    const ReviewChart& model;
    // Per element number, whether x never decreases and whether every y is the same, for the
    // model's revision they were found for. Numbers, not pointers: the logic may delete
    // elements between two draws.
    std::vector<char> sorted, flat;
    uint64_t sorted_revision = 0;
    bool sorted_known = false;
    std::vector<QPointF> points;

    void find_sorted();
    void draw_straight(QCPPainter* painter, const ChartElement& e, size_t first, size_t last,
                       const AxisMap& xm, const AxisMap& ym, const QRect& area);
    void draw_element(QCPPainter* painter, const ChartElement& e, bool is_sorted, size_t first,
                      size_t last, const AxisMap& xm, const AxisMap& ym, const QRect& area);
};

void ElementsPlottable::find_sorted() {
    const auto& list = model.elements();
    if (sorted_known && sorted_revision == model.revision && sorted.size() == list.size()) return;
    sorted.assign(list.size(), 0);
    flat.assign(list.size(), 0);
    for (size_t n = 1; n < list.size(); ++n) {
        const std::vector<double>& x = list[n]->x;
        const std::vector<double>& y = list[n]->y;
        sorted[n] = std::is_sorted(x.begin(), x.end());
        flat[n] =
            !y.empty() && std::all_of(y.begin(), y.end(), [&](double v) { return v == y[0]; });
    }
    sorted_revision = model.revision;
    sorted_known = true;
}

void ElementsPlottable::draw(QCPPainter* painter) {
    if (!keyAxis() || !valueAxis()) return;
    find_sorted();
    const AxisMap xm(*keyAxis()), ym(*valueAxis());
    const QRect area = clipRect();
    const QCPRange shown = keyAxis()->range();
    const auto& list = model.elements();
    // A black run narrower than two pixels (a single sample of a curve seen whole) goes on top:
    // the run after it starts on the same pixels and would otherwise paint it over.
    struct Deferred {
        size_t number, first, last;
    };
    std::vector<Deferred> on_top;
    for (size_t n = 1; n < list.size(); ++n) {
        const ChartElement& e = *list[n];
        if (!e.show || e.x.empty() || e.y.size() < e.x.size()) continue;
        size_t first = 0, last = e.x.size() - 1;
        double x_min, x_max;
        if (sorted[n]) {
            x_min = e.x.front();
            x_max = e.x.back();
        } else {
            const auto [lo, hi] = std::minmax_element(e.x.begin(), e.x.end());
            x_min = *lo;
            x_max = *hi;
        }
        if (x_max < shown.lower || x_min > shown.upper) continue;
        if (sorted[n]) {
            // One point beyond each edge, so that the line runs out of the plot area.
            const auto begin = std::lower_bound(e.x.begin(), e.x.end(), shown.lower);
            const auto end = std::upper_bound(begin, e.x.end(), shown.upper);
            first = begin == e.x.begin() ? 0 : size_t(begin - e.x.begin()) - 1;
            last = end == e.x.end() ? e.x.size() - 1 : size_t(end - e.x.begin());
        }
        const bool black = e.color == Rgb{0, 0, 0};
        if (black && std::abs((x_max - x_min) * xm.scale) < 2) {
            on_top.push_back({n, first, last});
            continue;
        }
        if (sorted[n] && flat[n] && e.line_type != 2 && last > first) {
            // The threshold and zero lines: a point at every sample, one straight line.
            draw_straight(painter, e, first, last, xm, ym, area);
            continue;
        }
        draw_element(painter, e, sorted[n], first, last, xm, ym, area);
    }
    for (const Deferred& d : on_top) {
        draw_element(painter, *list[d.number], sorted[d.number], d.first, d.last, xm, ym, area);
    }
}

void ElementsPlottable::draw_straight(QCPPainter* painter, const ChartElement& e, size_t first,
                                      size_t last, const AxisMap& xm, const AxisMap& ym,
                                      const QRect& area) {
    const double left = area.left(), right = area.right() + 1.0;
    const double y = clamp_pixel(ym(e.y[first]), area.top(), area.bottom() + 1.0);
    const QPointF ends[] = {{clamp_pixel(xm(e.x[first]), left, right), y},
                            {clamp_pixel(xm(e.x[last]), left, right), y}};
    painter->setPen(element_pen(e));
    painter->setBrush(Qt::NoBrush);
    painter->drawPolyline(ends, 2);
}

// A point that lies on the straight way from the one before to the one after, along a row or
// a column of pixels, adds nothing to the picture: the threshold and zero lines of a long
// curve are one segment each, not thousands for the stroker of a wide pen to join.
void drop_straight_through(std::vector<QPointF>& points) {
    if (points.size() < 3) return;
    size_t kept = 1;
    for (size_t k = 1; k + 1 < points.size(); ++k) {
        const QPointF& a = points[kept - 1];
        const QPointF& b = points[k];
        const QPointF& c = points[k + 1];
        const bool along_row = a.y() == b.y() && b.y() == c.y() &&
                               (a.x() - b.x()) * (b.x() - c.x()) >= 0;
        const bool along_column = a.x() == b.x() && b.x() == c.x() &&
                                  (a.y() - b.y()) * (b.y() - c.y()) >= 0;
        if (!along_row && !along_column) points[kept++] = b;
    }
    points[kept++] = points.back();
    points.resize(kept);
}

// A solid line far denser than the pixel columns, drawn as what it covers in each column:
// from its lowest to its highest point there and the point it comes from, as thick as the
// pen. The same pixels as the polyline, without a wide pen's joins at every sample.
void draw_envelope(QCPPainter* painter, const ChartElement& e, size_t first, size_t last,
                   const AxisMap& xm, const AxisMap& ym, const QRect& area) {
    const double w = std::max<int>(1, e.width);
    const double left = area.left(), right = area.right() + 1.0;
    const double top = area.top() - w, bottom = area.bottom() + 1.0 + w;
    std::vector<QRect> rects;
    rects.reserve(static_cast<size_t>(area.width()) + 2);
    // The pixels whose centres the rectangle holds, as the aliased rasteriser fills it: whole
    // pixels fill at once, where a rectangle at fractions goes the slow way of a path.
    auto pixels = [](double x0, double y0, double x1, double y1) {
        const int left = static_cast<int>(std::ceil(x0 - 0.5));
        const int top = static_cast<int>(std::ceil(y0 - 0.5));
        return QRect(left, top, static_cast<int>(std::ceil(x1 - 0.5)) - left,
                     static_cast<int>(std::ceil(y1 - 0.5)) - top);
    };
    double previous_y = std::numeric_limits<double>::quiet_NaN();
    size_t i = first;
    while (i <= last) {
        const double column = std::floor(xm(e.x[i]));
        const double next = xm.origin + (column + 1 - xm.pixel0) / xm.scale;
        double y_low = e.y[i], y_high = e.y[i];
        size_t j = i + 1;
        for (; j <= last && e.x[j] < next; ++j) {
            y_low = std::min(y_low, e.y[j]);
            y_high = std::max(y_high, e.y[j]);
        }
        double a = ym(y_low), b = ym(y_high);
        if (a > b) std::swap(a, b);
        if (!std::isnan(previous_y)) {
            a = std::min(a, previous_y);
            b = std::max(b, previous_y);
        }
        previous_y = ym(e.y[j - 1]);
        a = std::clamp(a, top, bottom);
        b = std::clamp(b, top, bottom);
        const double x = column + 0.5;
        if (x >= left - w && x <= right + w)
            rects.push_back(pixels(x - w / 2, a - w / 2, x + w / 2, b + w / 2));
        i = j;
    }
    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor(e.color.r, e.color.g, e.color.b));
    painter->drawRects(rects.data(), static_cast<int>(rects.size()));
}

void ElementsPlottable::draw_element(QCPPainter* painter, const ChartElement& e, bool is_sorted,
                                     size_t first, size_t last, const AxisMap& xm,
                                     const AxisMap& ym, const QRect& area) {
    const double left = area.left(), right = area.right() + 1.0;
    const double top = area.top(), bottom = area.bottom() + 1.0;
    points.clear();
    auto put = [&](size_t i) {
        points.emplace_back(xm(e.x[i]), clamp_pixel(ym(e.y[i]), top, bottom));
    };
    // Columns the element covers: a breath-hold of a long recording seen whole is a few pixels
    // wide however many samples it holds.
    double columns = area.width();
    if (is_sorted) columns = std::min(columns, std::abs(xm(e.x[last]) - xm(e.x[first])));
    const bool dense = last - first + 1 > 2 * (columns + 2);
    // Where a column holds many samples the envelope is the polyline's picture; where it
    // holds a few, their slopes still show and the polyline is drawn.
    const bool very_dense = last - first + 1 > 16 * (columns + 2);
    if (very_dense && is_sorted && xm.scale > 0 && e.line_type != 2) {
        draw_envelope(painter, e, first, last, xm, ym, area);
        return;
    }
    if (!dense) {
        for (size_t i = first; i <= last; ++i) put(i);
    } else {
        // More points than the pixel columns can show: the first, lowest, highest and last
        // point of each column draw the same pixels as all of them.
        auto keep = [&](size_t i, size_t low, size_t high, size_t end) {
            size_t previous = i;
            put(i);
            for (size_t k : {std::min(low, high), std::max(low, high), end}) {
                if (k != previous) put(k);
                previous = k;
            }
        };
        size_t i = first;
        while (i <= last) {
            const double column = std::floor(xm(e.x[i]));
            size_t low = i, high = i, j = i + 1;
            if (is_sorted && xm.scale > 0) {
                // Where the next column starts, so that the points of this one are found by
                // comparing their time alone.
                const double next = xm.origin + (column + 1 - xm.pixel0) / xm.scale;
                double y_low = e.y[i], y_high = e.y[i];
                for (; j <= last && e.x[j] < next; ++j) {
                    const double y = e.y[j];
                    if (y < y_low) y_low = y, low = j;
                    if (y > y_high) y_high = y, high = j;
                }
            } else {
                for (; j <= last && std::floor(xm(e.x[j])) == column; ++j) {
                    if (e.y[j] < e.y[low]) low = j;
                    if (e.y[j] > e.y[high]) high = j;
                }
            }
            keep(i, low, high, j - 1);
            i = j;
        }
    }
    // An end point far beyond the plot area is brought in along its segment, so that the
    // visible part keeps its slope when the view is zoomed deep into a long segment.
    auto pull_in = [&](QPointF& outside, const QPointF& inside) {
        const double bound = outside.x() < left ? left - off_screen : right + off_screen;
        if (std::abs(outside.x() - inside.x()) < 1e-300) return;
        const double t = (bound - inside.x()) / (outside.x() - inside.x());
        outside = QPointF(bound, inside.y() + t * (outside.y() - inside.y()));
    };
    if (is_sorted && points.size() >= 2) {
        if (points.front().x() < left - off_screen) pull_in(points.front(), points[1]);
        if (points.back().x() > right + off_screen)
            pull_in(points.back(), points[points.size() - 2]);
    }
    for (QPointF& p : points) p.setX(clamp_pixel(p.x(), left, right));
    drop_straight_through(points);
    if (points.size() == 1) points.push_back(points.front());
    painter->setPen(element_pen(e));
    painter->setBrush(Qt::NoBrush);
    painter->drawPolyline(points.data(), int(points.size()));
}

}  // namespace

ReviewChartWidget::ReviewChartWidget(ReviewChart& model_, QWidget* parent)
    : QCustomPlot(parent), model(model_) {
    setBackground(Qt::white);
    new ElementsPlottable(xAxis, yAxis, model);
    const QFont font(QStringLiteral("Liberation Sans"), 9);
    for (QCPAxis* axis : {xAxis, yAxis}) {
        axis->setNumberFormat(QStringLiteral("f"));
        axis->setNumberPrecision(2);
        axis->setTickLabelFont(font);
        axis->setLabelFont(font);
        // Solid and faint, so that the grid is not taken for a dotted element.
        axis->grid()->setPen(QPen(QColor(215, 215, 215), 0, Qt::SolidLine));
        axis->grid()->setZeroLinePen(Qt::NoPen);
    }
    // A closed frame, and room on the right for the last time label, which is centred on its
    // tick and would otherwise be cut at the widget's edge.
    for (QCPAxis* side : {xAxis2, yAxis2}) {
        side->setVisible(true);
        side->setTicks(false);
        side->setTickLabels(false);
    }
    connect(xAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), xAxis2,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    connect(yAxis, qOverload<const QCPRange&>(&QCPAxis::rangeChanged), yAxis2,
            qOverload<const QCPRange&>(&QCPAxis::setRange));
    axisRect()->setMinimumMargins(QMargins(0, 12, 30, 0));
    // The cursor is reported with no button held, too.
    setMouseTracking(true);
    sync();
}

void ReviewChartWidget::sync() {
    apply_track_mode();
    bool changed = !synced || model.revision != synced_revision;
    if (!synced || model.view_revision != synced_view_revision) {
        show_model_range();
        changed = true;
    }
    if (xAxis->grid()->visible() != model.ShowGrid) {
        xAxis->grid()->setVisible(model.ShowGrid);
        yAxis->grid()->setVisible(model.ShowGrid);
        changed = true;
    }
    if (xAxis->label() != model.XLabel || yAxis->label() != model.YLabel) {
        xAxis->setLabel(model.XLabel);
        yAxis->setLabel(model.YLabel);
        changed = true;
    }
    synced = true;
    synced_revision = model.revision;
    // A hidden chart is drawn when it is shown, at the size it then has: a review opened on
    // files is drawn once, not once more at the size it had before its window came up.
    if (changed && isVisible())
        replot();
    else if (changed)
        replot_when_shown = true;
}

void ReviewChartWidget::resizeEvent(QResizeEvent* event) {
    // The plot draws itself anew at its new size.
    replot_when_shown = false;
    QCustomPlot::resizeEvent(event);
}

void ReviewChartWidget::showEvent(QShowEvent* event) {
    QCustomPlot::showEvent(event);
    if (replot_when_shown) {
        replot_when_shown = false;
        replot(rpQueuedRefresh);
    }
}

void ReviewChartWidget::show_model_range() {
    const ChartRange& r = model.view_range();
    xAxis->setRange(r.x_min, r.x_max);
    yAxis->setRange(r.y_min, r.y_max);
    synced_view_revision = model.view_revision;
}

void ReviewChartWidget::take_gesture() {
    const QCPRange x = xAxis->range(), y = yAxis->range();
    const ChartRange& v = model.view_range();
    if (x.lower == v.x_min && x.upper == v.x_max && y.lower == v.y_min && y.upper == v.y_max)
        return;
    model.gesture_range(ChartRange{x.lower, x.upper, y.lower, y.upper});
    show_model_range();
}

void ReviewChartWidget::reset_zoom() {
    model.reset_view();
    show_model_range();
    replot();
}

void ReviewChartWidget::apply_track_mode() {
    if (model.TrackMode == applied_mode) return;
    applied_mode = model.TrackMode;
    const bool pan = applied_mode == track_pan || applied_mode == track_pan_x;
    setInteraction(QCP::iRangeDrag, pan);
    axisRect()->setRangeDrag(applied_mode == track_pan_x ? Qt::Horizontal
                                                         : Qt::Horizontal | Qt::Vertical);
    axisRect()->setRangeZoom(Qt::Horizontal | Qt::Vertical);
    setSelectionRectMode(applied_mode == track_zoom ? QCP::srmZoom : QCP::srmNone);
}

bool ReviewChartWidget::over_plot(QPointF pos) const {
    return axisRect()->rect().contains(pos.toPoint());
}

void ReviewChartWidget::report(QPointF pos) {
    if (cursor_moved) cursor_moved(xAxis->pixelToCoord(pos.x()), yAxis->pixelToCoord(pos.y()));
}

void ReviewChartWidget::mousePressEvent(QMouseEvent* event) {
    apply_track_mode();
    const QPointF pos = event->position();
    if (applied_mode == track_zoom && event->button() != Qt::LeftButton) {
        // Only the left button draws the zoom rectangle; the right one steps back out.
        if (event->button() == Qt::RightButton && over_plot(pos)) {
            model.zoom_out_at(xAxis->pixelToCoord(pos.x()), yAxis->pixelToCoord(pos.y()));
            show_model_range();
            replot();
        }
        event->accept();
        return;
    }
    QCustomPlot::mousePressEvent(event);
    if (applied_mode == track_measure && event->button() == Qt::LeftButton && over_plot(pos)) {
        measuring = true;
        model.track_press_x = xAxis->pixelToCoord(pos.x()) * 1000;
        model.track_press_y = yAxis->pixelToCoord(pos.y()) * 1000;
        model.track_state = 1;
        report(pos);
    }
}

void ReviewChartWidget::mouseMoveEvent(QMouseEvent* event) {
    QCustomPlot::mouseMoveEvent(event);
    take_gesture();
    if (over_plot(event->position())) report(event->position());
}

void ReviewChartWidget::wheelEvent(QWheelEvent* event) {
    QCustomPlot::wheelEvent(event);
    take_gesture();
}

void ReviewChartWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (applied_mode == track_zoom && event->button() != Qt::LeftButton) {
        event->accept();
        return;
    }
    QCustomPlot::mouseReleaseEvent(event);
    take_gesture();
    if (measuring && event->button() == Qt::LeftButton) {
        measuring = false;
        model.track_state = 0;
        // Reported wherever the button comes up: the logic ends the measurement on the first
        // cursor event after the release.
        report(event->position());
    }
}

}  // namespace zel
