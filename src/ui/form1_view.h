#pragma once
// The main window: renders Form1's controls, menus and chart, forwards events to Form1.
#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QTimer>
#include <QToolButton>
#include <vector>

#include "app/form1.h"
#include "platform/qt_chart_surface.h"

namespace zel {

class ChartWidget final : public QWidget {
public:
    ChartWidget(QtChartSurface& surface, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QtChartSurface& surface;
};

class Form1View final : public QMainWindow {
public:
    Form1View(Form1& form, QtChartSurface& surface);
    // Brings every widget in line with its control.
    void sync();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QLabel* add_label(Control& control, QWidget* parent, Qt::Alignment alignment);
    QLabel* add_picture(Control& control, const QString& image);
    QToolButton* add_button(Control& control, const QString& image, void (Form1::*handler)());
    QAction* add_action(QMenu* menu, Control& control, void (Form1::*handler)());
    void build_menus();

    Form1& form;
    QWidget* client;
    QWidget* frame;
    ChartWidget* chart;
    struct Bound {
        Control* control;
        QWidget* widget;
    };
    std::vector<Bound> bound;
    std::vector<std::pair<Control*, QAction*>> actions;
    std::vector<std::pair<Control*, QMenu*>> menus;
    QTimer refresh;
};

}  // namespace zel
