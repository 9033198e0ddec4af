#include "review_mode.h"

#include <QApplication>
#include <QFileInfo>
#include <cstdio>
#include <cstdlib>

#include "app/zel_error.h"
#include "language/language_catalogue.h"
#include "language/messages.h"
#include "platform/qt_system.h"
#include "ui/patient_curves_view.h"

namespace zel {

int run_review(const QString& app_data_path, const QStringList& files) {
    QtLocale locale;
    // The curve files' stamp is a message of the catalogue: the review reads them in the
    // language the console at this site writes them in.
    load_default_messages();
    load_language_in_force(app_data_path, locale.decimal_separator());
    QStringList absolute;
    for (const QString& file : files.mid(0, 5)) absolute.append(QFileInfo(file).absoluteFilePath());
    // The files are read while the window is being made.
    std::vector<CurveReading> ahead = read_curves(absolute, locale.decimal_separator());
    QtMessageBoxes boxes;
    // The file dialog of the window's Load opens where the first file lies.
    const QString folder =
        files.isEmpty() ? QString() : QFileInfo(files.front()).absolutePath();
    auto* view = new PatientCurvesView(
        folder, locale, [&boxes](const char* source, const std::function<void()>& handler) {
            const QString report = run_time_error(source, handler);
            if (report.isNull()) return;
            // The same one report as the console's, then the end: nothing is being recorded
            // or gated here, so there is nothing to stop first.
            boxes.MsgBox(report, vbCritical, message_text(108).trimmed());
            std::fflush(nullptr);
            std::_Exit(1);
        });
    view->setAttribute(Qt::WA_DeleteOnClose);
    boxes.parent = view;
    view->model().readings_ahead = std::move(ahead);
    for (const QString& file : files.mid(5)) absolute.append(QFileInfo(file).absoluteFilePath());
    view->load(absolute);
    if (view->model().unloaded) return 0;
    view->show();
    return QApplication::exec();
}

}  // namespace zel
