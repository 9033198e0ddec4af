#pragma once
// The review window on screen: renders PatientCurves and hands it what the operator does.
#include <QMainWindow>
#include <QPointer>
#include <functional>
#include <vector>

#include "platform/qt_file_dialogs.h"
#include "platform/qt_system.h"
#include "review/patient_curves.h"

class QAction;
class QComboBox;
class QGroupBox;
class QRadioButton;
class QTreeWidget;

namespace zel {

class ReviewChartWidget;

class PatientCurvesView final : public QMainWindow {
public:
    // Every event of the window runs through `run_event`, the program's entry point that
    // reports what no routine handled.
    using RunEvent = std::function<void(const char* source, const std::function<void()>& handler)>;
    PatientCurvesView(const QString& data_directory, Locale& locale, RunEvent run_event,
                      QWidget* parent = nullptr);
    ~PatientCurvesView() override;

    // The window's load: the file dialog and the plotting, then the first rendering.
    void load();
    // The same, opened straight on these files.
    void load(const QStringList& paths);
    PatientCurves& model() { return curves; }
    ReviewChartWidget& chart() { return *chart_widget; }
    // Puts the model's state on the widgets.
    void sync();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QtFileDialogs dialogs;
    QtMessageBoxes boxes;
    PatientCurves curves;
    RunEvent run_event;
    QWidget* surface = nullptr;
    ReviewChartWidget* chart_widget = nullptr;
    QTreeWidget* list = nullptr;
    QComboBox* combo = nullptr;
    std::vector<std::pair<Control*, QWidget*>> bound;
    std::vector<std::pair<Control*, QGroupBox*>> frames;
    std::vector<std::pair<Control*, QRadioButton*>> options;
    std::vector<std::pair<Control*, QAction*>> actions;
    bool syncing = false;
    bool closing = false;
    int running = 0;           // handlers of the window under way, one within another
    bool close_asked = false;  // closed while one was: the window closes once they are done
    std::vector<QPointer<QWidget>> statistics_windows;  // opened from File, closed with this one
    bool loaded = false;  // the layout is recorded at load; sizes before it are the design's

    void run(const char* source, const std::function<void()>& handler);
    void build_menus();
    void sync_list();
    void sync_combo();
    void take_size();
};

}  // namespace zel
