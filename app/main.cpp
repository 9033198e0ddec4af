// Builds the platform, the main window's model and its view.
#include <QApplication>
#include <QDir>

#include "app/form1.h"
#include "language/messages.h"
#include "platform/qt_chart_surface.h"
#include "platform/qt_file_dialogs.h"
#include "platform/qt_gating_library.h"
#include "platform/qt_serial_port.h"
#include "platform/qt_system.h"
#include "platform/qt_timer.h"
#include "ui/form1_view.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const QString app_data_path = QDir::homePath() + QStringLiteral("/.local/share/zelmoor");

    zel::QtSerialPort serial(app_data_path);
    zel::QtTimerFactory timers;
    zel::QtClock clock;
    zel::QtLocale locale;
    zel::QtMessageBoxes boxes;
    zel::QtChartSurface chart(870, 499);
    zel::QtGatingLibrary tarrow(app_data_path);
    zel::QtFileDialogs dialogs;
    zel::Platform platform{serial, timers, clock, locale, boxes, chart, tarrow, dialogs};

    zel::load_default_messages();
    zel::Form1 form(platform, app_data_path);
    form.end_program = [](int code) { QApplication::exit(code); };
    serial.OnComm = [&form] { form.run_event("MSComm1_OnComm", [&form] { form.MSComm1_OnComm(); }); };

    zel::Form1View view(form, chart);
    boxes.parent = &view;
    dialogs.parent = &view;
    form.run_event("Form_Load", [&form] { form.Form_Load(); });
    view.show();
    return app.exec();
}
