#include "ui/control_dialog.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>

#include "ui/control_widgets.h"

namespace zel {

ControlDialog::ControlDialog(const QString& title, double width_twips, double height_twips,
                             RunEvent run_event_, QWidget* parent)
    : QDialog(parent), run_event(std::move(run_event_)) {
    setModal(true);
    setWindowTitle(title);
    setFixedSize(qRound(width_twips / twips_per_pixel), qRound(height_twips / twips_per_pixel));
    setStyleSheet(QStringLiteral("QDialog{background-color:rgb(224,224,224);}"));
    auto* refresh = new QTimer(this);
    // Only while it is up: a closed window can outlive its model, which the next opening
    // replaces, when that opening comes before the closed window's own loop has ended.
    connect(refresh, &QTimer::timeout, this, [this] {
        if (isVisible()) sync();
    });
    refresh->start(100);
}

QGroupBox* ControlDialog::frame(Control& control) {
    auto* box = new QGroupBox(this);
    box->setStyleSheet(QStringLiteral(
        "QGroupBox{border:1px solid rgb(160,160,160);border-radius:3px;margin-top:8px;}"));
    bound.emplace_back(&control, box);
    frames.emplace_back(&control, box);
    return box;
}

void ControlDialog::label(Control& control, QWidget* in) {
    auto* widget = new QLabel(in ? in : this);
    widget->setWordWrap(true);
    bound.emplace_back(&control, widget);
}

void ControlDialog::button(Control& control, std::function<void()> click) {
    auto* widget = new QPushButton(this);
    widget->setAutoDefault(true);
    bound.emplace_back(&control, widget);
    connect(widget, &QPushButton::clicked, this, [this, click] {
        run_event("Click", click);
        sync();
    });
}

void ControlDialog::on_close(std::function<void()> close, std::function<bool()> unloaded) {
    close_handler = std::move(close);
    is_unloaded = std::move(unloaded);
}

void ControlDialog::sync() {
    for (auto& [control, widget] : bound) render_control(*control, *widget);
    for (auto& [control, box] : frames)
        if (box->title() != control->Caption) box->setTitle(control->Caption);
    if (is_unloaded && is_unloaded() && isVisible()) done(QDialog::Accepted);
}

void ControlDialog::reject() {
    if (close_handler) run_event("Form_Unload", close_handler);
    QDialog::reject();
}

}  // namespace zel
