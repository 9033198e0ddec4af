#include "ui/form1_view.h"

#include <QCloseEvent>
#include <QMenuBar>
#include <QPaintEvent>
#include <QPainter>

#include "ui/control_widgets.h"

namespace zel {

ChartWidget::ChartWidget(QtChartSurface& surface_, QWidget* parent)
    : QWidget(parent), surface(surface_) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    surface.on_changed = [this](const QRect& area) { update(area); };
}

void ChartWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.drawImage(event->rect(), surface.image(), event->rect());
}

Form1View::Form1View(Form1& form_, QtChartSurface& surface) : form(form_) {
    setFixedSize(1024, 768);
    client = new QWidget(this);
    client->setObjectName(QStringLiteral("client"));
    client->setStyleSheet(QStringLiteral("#client{background-color:rgb(224,224,224);}"));
    setCentralWidget(client);
    build_menus();

    chart = new ChartWidget(surface, client);
    const Qt::Alignment left = Qt::AlignLeft | Qt::AlignVCenter;
    for (int k = 1; k <= 9; ++k) add_label(*form.ylabel(k), client, Qt::AlignRight | Qt::AlignVCenter);
    add_label(form.thresh_label, client, left);
    add_label(form.Label1, client, Qt::AlignCenter);
    add_label(form.infolabel3, client, Qt::AlignRight | Qt::AlignVCenter);
    add_label(form.volume_label, client, left);
    add_label(form.infolabel5, client, Qt::AlignRight | Qt::AlignVCenter);
    add_label(form.elapsed_label, client, left)->setIndent(4);

    frame = new QFrame(client);
    frame->setObjectName(QStringLiteral("Frame2"));
    frame->setStyleSheet(QStringLiteral(
        "#Frame2{background-color:rgb(224,224,224);border:1px solid rgb(160,160,160);"
        "border-radius:3px;}"));
    bound.push_back({&form.Frame2, frame});
    add_label(form.Label_last_name, frame, left);
    add_label(form.Label_first_name, frame, left);
    add_label(form.label_patient_ID, frame, left);
    add_label(form.label_session, frame, left);
    add_label(form.Label2, frame, Qt::AlignLeft | Qt::AlignTop)->setWordWrap(true);
    add_label(form.countdown2, frame, Qt::AlignCenter);
    add_label(form.gating_label, frame, Qt::AlignCenter);
    add_label(form.Label4, frame, Qt::AlignCenter);

    add_picture(form.Image_Gating_Ready, QStringLiteral("gating_ready"));
    add_picture(form.Image_Gating_Closed, QStringLiteral("gating_closed"));
    add_picture(form.Image_Gating_Fault, QStringLiteral("gating_fault"));
    add_picture(form.iconA, QStringLiteral("logo"));
    add_button(form.cmdRecord, QStringLiteral("record"), &Form1::cmdRecord_Click);
    add_button(form.cmdPause, QStringLiteral("pause"), &Form1::cmdPause_Click);

    // Captions change up to 50 times a second; the screen follows at its own pace.
    connect(&refresh, &QTimer::timeout, this, &Form1View::sync);
    refresh.start(40);
    sync();
}

QLabel* Form1View::add_label(Control& control, QWidget* parent, Qt::Alignment alignment) {
    auto* label = new QLabel(parent);
    label->setAlignment(alignment);
    bound.push_back({&control, label});
    return label;
}

QLabel* Form1View::add_picture(Control& control, const QString& image) {
    auto* label = new QLabel(client);
    label->setPixmap(product_image(image));
    label->setScaledContents(true);
    bound.push_back({&control, label});
    return label;
}

QToolButton* Form1View::add_button(Control& control, const QString& image,
                                   void (Form1::*handler)()) {
    auto* button = new QToolButton(client);
    // The spacebar belongs to the breath-hold cycle, never to a button that has the focus.
    button->setFocusPolicy(Qt::NoFocus);
    connect(button, &QToolButton::clicked, this, [this, handler] {
        form.run_event("button", [this, handler] { (form.*handler)(); });
    });
    button->setIcon(QIcon(product_image(image)));
    button->setIconSize(QSize(32, 32));
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    bound.push_back({&control, button});
    return button;
}

QAction* Form1View::add_action(QMenu* menu, Control& control, void (Form1::*handler)()) {
    QAction* action = menu->addAction(control.Caption);
    if (handler)
        connect(action, &QAction::triggered, this, [this, handler] {
            form.run_event("menu", [this, handler] { (form.*handler)(); });
        });
    actions.emplace_back(&control, action);
    return action;
}

void Form1View::build_menus() {
    QMenuBar* bar = menuBar();
    auto menu = [&](Control& control) {
        QMenu* m = bar->addMenu(control.Caption);
        menus.emplace_back(&control, m);
        return m;
    };
    QMenu* file = menu(form.file_main);
    add_action(file, form.create_new_patient, &Form1::create_new_patient_Click);
    add_action(file, form.load_existing_patient, &Form1::load_existing_patient_Click);
    add_action(file, form.save_settings_as_default, &Form1::save_settings_as_default_Click);
    file->addSeparator();
    add_action(file, form.zel_exit, &Form1::zel_exit_Click);
    QMenu* settings = menu(form.set_params);
    add_action(settings, form.Control_Panel, &Form1::Control_Panel_Click);
    add_action(settings, form.Patient_Settings, &Form1::Patient_Settings_Click);
    QMenu* view = menu(form.mnuView);
    add_action(view, form.mnuSessionHistory, &Form1::mnuSessionHistory_Click);
    QMenu* data = menu(form.data_handle);
    add_action(data, form.mnuVisualizePatientCurves, &Form1::mnuVisualizePatientCurves_Click);
    // Stands in the menu as built, and is never shown.
    add_action(data, form.export_volume_curve, nullptr)->setVisible(false);
    QMenu* help = menu(form.Help_menu);
    add_action(help, form.About, &Form1::About_Click);
    add_action(help, form.Gating_Diagnostics, &Form1::Gating_Diagnostics_Click);
}

void Form1View::sync() {
    if (windowTitle() != form.Caption) setWindowTitle(form.Caption);
    const QRect place = pixel_rect(form.Pic);
    if (chart->geometry() != place) chart->setGeometry(place);
    for (const Bound& b : bound) render_control(*b.control, *b.widget);
    for (auto& [control, action] : actions) {
        if (action->text() != control->Caption) action->setText(control->Caption);
        if (action->isEnabled() != control->Enabled) action->setEnabled(control->Enabled);
    }
    for (auto& [control, m] : menus)
        if (m->title() != control->Caption) m->setTitle(control->Caption);
}

void Form1View::closeEvent(QCloseEvent* event) {
    // Exit ends the program itself, when it may.
    event->ignore();
    form.run_event("Form_QueryUnload", [this] { form.Form_QueryUnload(); });
}

}  // namespace zel
