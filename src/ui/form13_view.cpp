#include "ui/form13_view.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "ui/control_widgets.h"

namespace zel {

Form13View::Form13View(Form1& form_, QWidget* parent) : QDialog(parent), form(form_) {
    Form13& f = form.form13;
    setWindowTitle(f.Label1.Caption);
    setModal(true);
    setFixedSize(420, 330);
    setStyleSheet(QStringLiteral("QDialog{background-color:rgb(224,224,224);}"));
    auto* grid = new QGridLayout(this);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(10);

    auto label = [&](Control& c, int row, int column, Qt::Alignment alignment, double size,
                     bool bold) {
        c.font = Font{QStringLiteral("Liberation Sans"), size, bold};
        auto* widget = new QLabel(this);
        widget->setAlignment(alignment);
        grid->addWidget(widget, row, column, alignment);
        bound.emplace_back(&c, widget);
    };
    auto picture = [&](Control& c, const QString& image, int row, int column) {
        auto* widget = new QLabel(this);
        widget->setPixmap(product_image(image));
        widget->setFixedSize(widget->pixmap().size().expandedTo(QSize(32, 32)));
        grid->addWidget(widget, row, column, Qt::AlignCenter);
        bound.emplace_back(&c, widget);
    };
    const Qt::Alignment left = Qt::AlignLeft | Qt::AlignVCenter;
    label(f.Label1, 0, 0, Qt::AlignLeft | Qt::AlignVCenter, 14, true);
    grid->addWidget(bound.back().second, 0, 0, 1, 3);
    label(f.Label_check_01, 1, 0, left, 10, true);
    picture(f.Image_connected, QStringLiteral("connected"), 1, 1);
    picture(f.Image_not_connected, QStringLiteral("not_connected"), 1, 1);
    const struct {
        Control *caption, *pass, *fail, *result;
    } rows[] = {{&f.Label2, &f.Image_02_pass, &f.Image_02_fail, &f.Label_check_02},
                {&f.Label3, &f.Image_03_pass, &f.Image_03_fail, &f.Label_check_03},
                {&f.Label4, &f.Image_04_pass, &f.Image_04_fail, &f.Label_check_04},
                {&f.Label5, &f.Image_05_pass, &f.Image_05_fail, &f.Label_check_05}};
    int row = 2;
    for (const auto& r : rows) {
        label(*r.caption, row, 0, left, 10, false);
        picture(*r.pass, QStringLiteral("check_pass"), row, 1);
        picture(*r.fail, QStringLiteral("check_fail"), row, 1);
        label(*r.result, row, 2, left, 10, true);
        ++row;
    }
    auto* exit = new QPushButton(this);
    exit->setAutoDefault(false);
    f.Command1.font = Font{QStringLiteral("Liberation Sans"), 10, false};
    ++row;
    grid->addWidget(exit, row + 1, 2, Qt::AlignRight);
    bound.emplace_back(&f.Command1, exit);
    connect(exit, &QPushButton::clicked, this, [this] {
        form.run_event("Command1_Click", [this] { form.Form13_Command1_Click(); });
    });
    grid->setColumnStretch(0, 1);
    grid->setRowStretch(row, 1);

    connect(&refresh, &QTimer::timeout, this, &Form13View::sync);
    refresh.start(50);
    sync();
}

void Form13View::sync() {
    for (auto& [control, widget] : bound) render_control(*control, *widget, false);
}

void Form13View::reject() {}

}  // namespace zel
