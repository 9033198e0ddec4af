#pragma once
// The simulator's window: what the module is doing, and its controls for a trainer or a
// service engineer. Every control goes through the script language, so that what the window
// does can be written down and replayed headless.
#include <QWidget>
#include <deque>
#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace zelsim {

class SimHost;

// The last seconds of the volume as the module reports it, with the threshold.
class VolumeTrace final : public QWidget {
  public:
    explicit VolumeTrace(QWidget* parent = nullptr);
    void add(double litres, bool holding, double threshold_litres);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    struct Sample {
        double litres;
        bool holding;
    };
    std::deque<Sample> samples;
    double threshold = 0.0;
};

class SimWindow final : public QWidget {
    Q_OBJECT
  public:
    explicit SimWindow(SimHost& host, QWidget* parent = nullptr);

  private:
    void run(const QString& line);
    void refresh();
    QWidget* module_group();
    QWidget* patient_group();
    QWidget* faults_group();
    QWidget* supplies_group();
    QWidget* line_group();
    QWidget* gating_group();
    QWidget* command_group();
    // A number control; `value` reads the simulator's present value, so that the box follows
    // what a script changes.
    QDoubleSpinBox* number_box(double low, double high, double step, int decimals,
                               const QString& suffix, std::function<double()> value,
                               const QString& instruction);
    // Keeps a control in step with the simulator, unless the user is at it.
    void follow(QWidget* widget, std::function<void()> update);

    SimHost& host;
    QLabel* stream_label = nullptr;
    QLabel* balloon_label = nullptr;
    QLabel* volume_label = nullptr;
    QLabel* time_left_label = nullptr;
    QLabel* settings_label = nullptr;
    QLabel* relay_label = nullptr;
    QLabel* error_label = nullptr;
    QPushButton* switch_button = nullptr;
    QCheckBox* fault_boxes[4] = {};
    VolumeTrace* trace = nullptr;
    QPlainTextEdit* received = nullptr;
    QLineEdit* command = nullptr;
    std::vector<std::function<void()>> followers;
    int refreshes = 0;
};

}  // namespace zelsim
