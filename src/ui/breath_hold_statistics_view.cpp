#include "ui/breath_hold_statistics_view.h"

#include <qcustomplot.h>

#include <QClipboard>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace zel {

namespace {

QColor colour_of(Rgb c) { return QColor(c.r, c.g, c.b); }

// The curve's colour as the review's list shows it, a bar 15 by 3 pixels.
QIcon colour_bar(Rgb colour) {
    QPixmap bar(15, 3);
    bar.fill(colour_of(colour));
    return QIcon(bar);
}

}  // namespace

BreathHoldStatisticsView::BreathHoldStatisticsView(const PatientCurves& review, Locale& locale,
                                                   RunEvent run_event_, QWidget* parent)
    : QWidget(parent, Qt::Window), run_event(std::move(run_event_)) {
    dialogs.parent = this;
    boxes.parent = this;
    statistics =
        std::make_unique<BreathHoldStatistics>(ReviewPlatform{dialogs, boxes, locale}, review);
    const BreathHoldStatistics& m = *statistics;
    setWindowTitle(m.Caption);

    auto* split = new QSplitter(Qt::Vertical, this);
    table_widget = new QTableWidget(split);
    chart_widget = new QCustomPlot(split);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 2);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto button = [&](const Control& c, const std::function<void()>& clicked) {
        auto* b = new QPushButton(c.Caption, this);
        buttons->addWidget(b);
        connect(b, &QPushButton::clicked, this, clicked);
    };
    button(m.cmdCopy, [this] {
        // The clipboard is the view's: the model gives the text.
        QGuiApplication::clipboard()->setText(statistics->copy_text());
    });
    button(m.cmdSave, [this] { run("cmdSave_Click", [this] { statistics->cmdSave_Click(); }); });
    button(m.cmdClose, [this] { run("cmdClose_Click", [this] { statistics->cmdClose_Click(); }); });

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(split, 1);
    layout->addLayout(buttons);
    fill_table();
    fill_chart();
    resize(1000, 720);
}

BreathHoldStatisticsView::~BreathHoldStatisticsView() = default;

void BreathHoldStatisticsView::run(const char* source, const std::function<void()>& handler) {
    ++running;
    run_event(source, handler);
    --running;
    if ((statistics->unloaded || close_asked) && running == 0) close();
}

void BreathHoldStatisticsView::closeEvent(QCloseEvent* event) {
    // Not while its Save waits in a dialog of its own: deleted, the window would take the dialog
    // with it; it closes once the Save is done.
    if (running > 0) {
        close_asked = true;
        return event->ignore();
    }
    QWidget::closeEvent(event);
}

void BreathHoldStatisticsView::fill_table() {
    const StatisticsTable& t = statistics->table;
    QTableWidget& w = *table_widget;
    w.setColumnCount(static_cast<int>(t.columns.size()));
    w.setHorizontalHeaderLabels(t.columns);
    w.setRowCount(static_cast<int>(t.rows.size()));
    w.verticalHeader()->setVisible(false);
    w.setEditTriggers(QAbstractItemView::NoEditTriggers);
    w.setSelectionBehavior(QAbstractItemView::SelectRows);
    QFont bold = w.font();
    bold.setBold(true);
    for (int r = 0; r < static_cast<int>(t.rows.size()); ++r) {
        const StatisticsRow& row = t.rows[static_cast<size_t>(r)];
        const bool summary = row.kind != StatisticsRowKind::hold;
        for (int c = 0; c < static_cast<int>(row.cells.size()); ++c) {
            auto* item = new QTableWidgetItem(row.cells[c]);
            // Curve, session and hold read from the left; the figures line up on the right.
            item->setTextAlignment(Qt::AlignVCenter | (c < 3 ? Qt::AlignLeft : Qt::AlignRight));
            if (summary) {
                item->setFont(bold);
                item->setBackground(row.curve < 0 ? QColor(222, 222, 222) : QColor(240, 240, 240));
            }
            if (c == 0 && row.curve >= 0)
                item->setIcon(
                    colour_bar(statistics->curves[static_cast<size_t>(row.curve)].colour));
            w.setItem(r, c, item);
        }
    }
    w.resizeColumnsToContents();
}

void BreathHoldStatisticsView::fill_chart() {
    const BreathHoldStatistics& m = *statistics;
    QCustomPlot& plot = *chart_widget;
    const QFont font(QStringLiteral("Liberation Sans"), 9);
    plot.xAxis->setLabel(m.chart_x_label);
    plot.yAxis->setLabel(m.chart_y_label);
    for (QCPAxis* axis : {plot.xAxis, plot.yAxis}) {
        axis->setLabelFont(font);
        axis->setTickLabelFont(font);
    }
    // Whole hold numbers only, however many holds.
    QSharedPointer<QCPAxisTickerFixed> ticker(new QCPAxisTickerFixed);
    ticker->setTickStep(1);
    ticker->setScaleStrategy(QCPAxisTickerFixed::ssMultiples);
    plot.xAxis->setTicker(ticker);
    plot.legend->setVisible(true);
    plot.legend->setFont(font);

    const auto n = static_cast<double>(m.curves.size());
    int most_holds = 0;
    double low = INFINITY, high = -INFINITY;
    for (size_t c = 0; c < m.curves.size(); ++c) {
        const StatisticsCurve& curve = m.curves[c];
        const QColor colour = colour_of(curve.colour);
        // The curves side by side at each hold, so that their spans do not hide each other.
        const double offset = (static_cast<double>(c) - (n - 1) / 2) * 0.12;
        QVector<double> x, mean, below, above;
        for (const HoldFigures& h : curve.holds) {
            x.append(h.number + offset);
            mean.append(h.mean);
            below.append(h.mean - h.min);
            above.append(h.max - h.mean);
            low = std::min(low, h.min);
            high = std::max(high, h.max);
        }
        most_holds = std::max(most_holds, static_cast<int>(curve.holds.size()));
        QCPGraph* graph = plot.addGraph();
        graph->setName(curve.title);
        graph->setPen(QPen(colour, 1.5));
        graph->setLineStyle(QCPGraph::lsNone);
        graph->setScatterStyle(QCPScatterStyle(QCPScatterStyle::ssDisc, colour, colour, 6));
        graph->setData(x, mean, true);
        auto* span = new QCPErrorBars(plot.xAxis, plot.yAxis);
        span->removeFromLegend();
        span->setDataPlottable(graph);
        span->setData(below, above);
        span->setPen(QPen(colour, 1.5));
        auto* threshold = new QCPItemStraightLine(&plot);
        threshold->point1->setCoords(0, curve.threshold);
        threshold->point2->setCoords(1, curve.threshold);
        threshold->setPen(QPen(colour, 1, Qt::DashLine));
        low = std::min(low, curve.threshold);
        high = std::max(high, curve.threshold);
    }
    if (!std::isfinite(low) || !std::isfinite(high)) low = 0, high = 1;
    const double margin = std::max(0.05, (high - low) * 0.1);
    plot.xAxis->setRange(0.5, std::max(most_holds, 1) + 0.5);
    plot.yAxis->setRange(low - margin, high + margin);
    plot.replot();
}

}  // namespace zel
