#include "ui/dialog_session_history_view.h"

#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QWindowStateChangeEvent>

#include "app/form1.h"
#include "ui/control_widgets.h"

namespace zel {

DialogSessionHistoryView::DialogSessionHistoryView(Form1& form_, QWidget* parent)
    : QDialog(parent), form(form_), history(form_, printer) {
    printer.parent = this;
    DialogSessionHistory& m = history;
    setStyleSheet(QStringLiteral("QDialog{background-color:rgb(224,224,224);}"));

    auto* heading = new QLabel(this);
    heading->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    bound.emplace_back(&m.LabelSession, heading);

    list = new QTreeWidget(this);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setAllColumnsShowFocus(true);
    list->header()->setStretchLastSection(false);
    list->header()->setSectionsMovable(false);
    list->setStyleSheet(QStringLiteral("QTreeWidget{background-color:white;}"));
    bound.emplace_back(&m.ListView1, list);

    auto push = [&](Control& c, void (DialogSessionHistory::*handler)()) {
        auto* button = new QPushButton(this);
        // The spacebar is the patient's key; Return presses the button that has the focus.
        button->setAutoDefault(false);
        bound.emplace_back(&c, button);
        connect(button, &QPushButton::clicked, this,
                [this, handler] { run("button_Click", [&] { (history.*handler)(); }); });
    };
    push(m.cmdPrint, &DialogSessionHistory::cmdPrint_Click);
    push(m.DoneButton, &DialogSessionHistory::DoneButton_Click);

    setSizeGripEnabled(true);
    resize(qRound(m.ScaleWidth / twips_per_pixel), qRound(m.ScaleHeight / twips_per_pixel));
    sync();
}

DialogSessionHistoryView::~DialogSessionHistoryView() = default;

void DialogSessionHistoryView::load() {
    run("Form_Load", [this] { history.Form_Load(); });
    loaded = true;
    if (!history.unloaded) {
        history.ScaleWidth = width() * twips_per_pixel;
        history.ScaleHeight = height() * twips_per_pixel;
        run("Form_Resize", [this] { history.Form_Resize(); });
    }
}

void DialogSessionHistoryView::run(const char* source, const std::function<void()>& handler) {
    form.run_event(source, handler);
    sync();
}

void DialogSessionHistoryView::sync() {
    const DialogSessionHistory& m = history;
    if (windowTitle() != m.Caption) setWindowTitle(m.Caption);
    for (auto& [control, widget] : bound) render_control(*control, *widget);
    sync_list();
    if (m.unloaded && isVisible()) done(QDialog::Accepted);
}

void DialogSessionHistoryView::sync_list() {
    const ReportListView& model = history.ListView1;
    const int columns = model.column_count();
    // Without columns the list shows neither headings nor rows.
    list->setHeaderHidden(columns == 0);
    QStringList headings;
    for (const auto& column : model.columns) headings.append(column.text);
    if (list->columnCount() != std::max(columns, 1) ||
        (columns > 0 && list->headerItem()->text(0) != headings.front())) {
        list->setColumnCount(std::max(columns, 1));
        if (columns > 0) list->setHeaderLabels(headings);
    }
    for (int k = 0; k < columns; ++k) {
        const int width = qRound(model.columns[k].width / twips_per_pixel);
        if (list->columnWidth(k) != width) list->setColumnWidth(k, width);
    }
    const int rows = columns == 0 ? 0 : model.item_count();
    while (list->topLevelItemCount() > rows) delete list->takeTopLevelItem(rows);
    for (int row = 0; row < rows; ++row) {
        QTreeWidgetItem* item = list->topLevelItem(row);
        if (!item) item = new QTreeWidgetItem(list);
        for (int k = 0; k < columns; ++k) {
            const QString text = model.cell(row + 1, k);
            if (item->text(k) != text) item->setText(k, text);
        }
    }
}

void DialogSessionHistoryView::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    if (!loaded || history.unloaded) return;
    history.ScaleWidth = width() * twips_per_pixel;
    history.ScaleHeight = height() * twips_per_pixel;
    run("Form_Resize", [this] { history.Form_Resize(); });
}

void DialogSessionHistoryView::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) history.minimized = isMinimized();
}

}  // namespace zel
