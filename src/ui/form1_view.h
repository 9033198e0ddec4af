#pragma once
// The main window: renders Form1's controls and its chart, forwards events to Form1.
#include <QLabel>
#include <QTimer>
#include <QWidget>
#include <map>

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

class Form1View final : public QWidget {
public:
    Form1View(Form1& form, QtChartSurface& surface);
    // Brings every widget in line with its control.
    void sync();

private:
    QLabel* add_label(Control& control);

    Form1& form;
    ChartWidget* chart;
    std::map<Control*, QLabel*> labels;
    QTimer refresh;
};

// Puts a control's caption, colours, font, place and visibility on a widget.
void render_control(const Control& control, QWidget& widget);

}  // namespace zel
