#include "ui/patient_curves_view.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QTreeWidget>
#include <QWindowStateChangeEvent>

#include "ui/breath_hold_statistics_view.h"
#include "ui/control_widgets.h"
#include "ui/review_chart_widget.h"

namespace zel {

namespace {

// The legend's bar of a curve's colour, 15 by 3 pixels.
QIcon legend_bar(Rgb colour) {
    QPixmap bar(15, 3);
    bar.fill(QColor(colour.r, colour.g, colour.b));
    QIcon icon(bar);
    // The list is locked while the curves are aligned; the colours still name the curves.
    icon.addPixmap(bar, QIcon::Disabled);
    return icon;
}

}  // namespace

PatientCurvesView::PatientCurvesView(const QString& data_directory, Locale& locale,
                                     RunEvent run_event_, QWidget* parent)
    : QMainWindow(parent),
      curves(ReviewPlatform{dialogs, boxes, locale}, data_directory),
      run_event(std::move(run_event_)) {
    dialogs.parent = this;
    boxes.parent = this;
    PatientCurves& m = curves;
    surface = new QWidget(this);
    surface->setStyleSheet(QStringLiteral("background-color:rgb(224,224,224);"));
    setCentralWidget(surface);

    chart_widget = new ReviewChartWidget(m.NTGraph1, surface);
    chart_widget->cursor_moved = [this](double x, double y) {
        run("NTGraph1_CursorPosition", [&] { curves.NTGraph1_CursorPosition(x, y); });
    };
    bound.emplace_back(&m.NTGraph1_place, chart_widget);

    list = new QTreeWidget(surface);
    list->setRootIsDecorated(false);
    list->setIconSize(QSize(15, 3));
    list->setStyleSheet(QStringLiteral("background-color:white;"));
    bound.emplace_back(&m.PatientList, list);
    connect(list, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* item, int) {
        if (syncing) return;
        const int index = list->indexOfTopLevelItem(item) + 1;
        const bool checked = item->checkState(0) == Qt::Checked;
        run("PatientList_ItemCheck", [&] { curves.PatientList_ItemCheck(index, checked); });
    });

    auto frame = [&](Control& c) {
        auto* box = new QGroupBox(surface);
        box->setStyleSheet(QStringLiteral(
            "QGroupBox{border:1px solid rgb(160,160,160);border-radius:3px;margin-top:8px;}"
            "QGroupBox::title{subcontrol-origin:margin;left:8px;padding:0 3px;}"));
        bound.emplace_back(&c, box);
        frames.emplace_back(&c, box);
        return box;
    };
    auto option = [&](Control& c, QWidget* in, void (PatientCurves::*handler)()) {
        auto* button = new QRadioButton(in);
        // The model decides which mode stands.
        button->setAutoExclusive(false);
        bound.emplace_back(&c, button);
        options.emplace_back(&c, button);
        connect(button, &QRadioButton::clicked, this,
                [this, handler] { run("option_Click", [&] { (curves.*handler)(); }); });
    };
    auto push = [&](Control& c, QWidget* in, void (PatientCurves::*handler)()) {
        auto* button = new QPushButton(in);
        bound.emplace_back(&c, button);
        connect(button, &QPushButton::clicked, this,
                [this, handler] { run("button_Click", [&] { (curves.*handler)(); }); });
    };
    auto label = [&](Control& c, QWidget* in) {
        auto* widget = new QLabel(in);
        widget->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        bound.emplace_back(&c, widget);
    };

    QGroupBox* tools = frame(m.Mode_frame);
    option(m.optZoom, tools, &PatientCurves::optZoom_Click);
    option(m.optPan, tools, &PatientCurves::optPan_Click);
    option(m.optPanX, tools, &PatientCurves::optPanX_Click);
    option(m.optMeasure, tools, &PatientCurves::optMeasure_Click);
    push(m.buttonResetZoom, tools, &PatientCurves::buttonResetZoom_Click);

    QGroupBox* align = frame(m.Breath_Holds_Frame);
    combo = new QComboBox(align);
    combo->setStyleSheet(QStringLiteral("background-color:white;"));
    connect(combo, &QComboBox::activated, this, [this](int index) {
        // Choosing a number changes nothing until Apply.
        curves.comboAlign.ListIndex = index;
    });
    push(m.buttonApply, align, &PatientCurves::buttonApply_Click);

    QGroupBox* info = frame(m.Frame1);
    for (Control* c : {&m.time_label, &m.XYInfo2, &m.volume_label, &m.XYInfo3, &m.Measured_label,
                       &m.measured_time_label, &m.XYInfo, &m.measured_volume_label, &m.XYInfo4})
        label(*c, info);

    for (auto& [control, widget] : bound) {
        const QString tip = curves.tool_tip(*control);
        if (!tip.isEmpty()) widget->setToolTip(tip);
    }
    combo->setToolTip(curves.tool_tip(m.comboAlign));
    build_menus();
    resize(qRound(m.ScaleWidth / twips_per_pixel),
           qRound(m.ScaleHeight / twips_per_pixel) + menuBar()->sizeHint().height());
}

PatientCurvesView::~PatientCurvesView() = default;

void PatientCurvesView::build_menus() {
    PatientCurves& m = curves;
    QMenu* file = menuBar()->addMenu(QString());
    actions.emplace_back(&m.mnuFile, file->menuAction());
    auto add = [&](Control& c, void (PatientCurves::*handler)()) {
        QAction* action = file->addAction(QString());
        actions.emplace_back(&c, action);
        connect(action, &QAction::triggered, this,
                [this, handler] { run("menu_Click", [&] { (curves.*handler)(); }); });
    };
    add(m.mnuOpenPatientFfiles, &PatientCurves::mnuOpenPatientFfiles_Click);
    add(m.mnuExport, &PatientCurves::mnuExport_Click);
    // The statistics open in a window of their own, over the curves shown now.
    QAction* statistics = file->addAction(QString());
    actions.emplace_back(&m.mnuStatistics, statistics);
    connect(statistics, &QAction::triggered, this, [this] {
        run("mnuStatistics_Click", [this] {
            // Its events count as the review's own: the review, which would delete it, stays
            // until they are done.
            auto* window = new BreathHoldStatisticsView(
                curves, curves.platform.locale,
                [this](const char* source, const std::function<void()>& f) { run(source, f); },
                this);
            window->setAttribute(Qt::WA_DeleteOnClose);
            window->show();
        });
    });
    add(m.mnuClearPlot, &PatientCurves::mnuClearPlot_Click);
    file->addSeparator();
    add(m.mnuExit, &PatientCurves::mnuExit_Click);
}

void PatientCurvesView::load() {
    run("Form_Load", [this] { curves.Form_Load(); });
    loaded = true;
    if (!curves.unloaded) take_size();
}

void PatientCurvesView::load(const QStringList& paths) {
    run("Form_Load", [this, &paths] { curves.Form_Load(paths); });
    loaded = true;
    if (!curves.unloaded) take_size();
}

void PatientCurvesView::run(const char* source, const std::function<void()>& handler) {
    ++running;
    run_event(source, handler);
    --running;
    sync();
    // Closed only once none of the window's handlers is under way: one that waits in a dialog
    // of its own would come back to a window deleted, and the dialog with it.
    if ((curves.unloaded || close_asked) && !closing && running == 0) close();
}

void PatientCurvesView::sync() {
    syncing = true;
    PatientCurves& m = curves;
    if (windowTitle() != m.Caption) setWindowTitle(m.Caption);
    for (auto& [control, widget] : bound) render_control(*control, *widget);
    for (auto& [control, box] : frames)
        if (box->title() != control->Caption) box->setTitle(control->Caption);
    for (auto& [control, button] : options)
        if (button->isChecked() != (control->Value != 0)) button->setChecked(control->Value != 0);
    for (auto& [control, action] : actions) {
        if (action->text() != control->Caption) action->setText(control->Caption);
        if (action->isEnabled() != control->Enabled) action->setEnabled(control->Enabled);
    }
    sync_list();
    sync_combo();
    chart_widget->sync();
    syncing = false;
}

void PatientCurvesView::sync_list() {
    const ListView& model = curves.PatientList;
    if (list->headerItem()->text(0) != model.column_text) list->setHeaderLabels({model.column_text});
    const int column = qRound(model.column_width / twips_per_pixel);
    if (list->columnWidth(0) != column) list->setColumnWidth(0, column);
    while (list->topLevelItemCount() > static_cast<int>(model.items.size()))
        delete list->takeTopLevelItem(list->topLevelItemCount() - 1);
    for (size_t k = 0; k < model.items.size(); ++k) {
        const ListView::Item& entry = model.items[k];
        QTreeWidgetItem* item = list->topLevelItem(static_cast<int>(k));
        if (!item) {
            item = new QTreeWidgetItem(list);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        }
        if (item->text(0) != entry.text) item->setText(0, entry.text);
        if (item->data(0, Qt::UserRole).toInt() != entry.image) {
            item->setData(0, Qt::UserRole, entry.image);
            const int slot = entry.image - 1;
            item->setIcon(0, slot >= 0 && slot < 5 ? legend_bar(curves.curve_colors[slot]) : QIcon());
        }
        const Qt::CheckState state = entry.checked ? Qt::Checked : Qt::Unchecked;
        if (item->checkState(0) != state) item->setCheckState(0, state);
    }
}

void PatientCurvesView::sync_combo() {
    const ComboBox& model = curves.comboAlign;
    QStringList shown;
    for (int k = 0; k < combo->count(); ++k) shown.append(combo->itemText(k));
    if (shown != model.items) {
        combo->clear();
        combo->addItems(model.items);
    }
    if (combo->currentIndex() != model.ListIndex) combo->setCurrentIndex(model.ListIndex);
    if (combo->isEnabled() != model.Enabled) combo->setEnabled(model.Enabled);
    // The drop-down keeps the height the system gives it.
    const QRect place = pixel_rect(model);
    const QRect wanted(place.topLeft(), QSize(place.width(), combo->sizeHint().height()));
    if (combo->geometry() != wanted) combo->setGeometry(wanted);
}

void PatientCurvesView::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (loaded && !closing) take_size();
}

void PatientCurvesView::take_size() {
    curves.ScaleWidth = surface->width() * twips_per_pixel;
    curves.ScaleHeight = surface->height() * twips_per_pixel;
    run("Form_Resize", [this] { curves.Form_Resize(); });
}

void PatientCurvesView::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) curves.minimized = isMinimized();
}

void PatientCurvesView::closeEvent(QCloseEvent* event) {
    if (running > 0) {
        close_asked = true;
        return event->ignore();
    }
    closing = true;
    if (!curves.unloaded) run("Form_Unload", [this] { curves.Form_Unload(); });
    event->accept();
}

}  // namespace zel
