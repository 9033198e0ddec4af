#pragma once
// A modal window made of a model's labels, frames and buttons, redrawn from the model ten
// times a second while it is up: for the windows whose values change under them (levels from
// the status frames, the gating system's letters from a timer).
#include <QDialog>
#include <functional>
#include <vector>

#include "app/control.h"

class QGroupBox;

namespace zel {

class ControlDialog final : public QDialog {
public:
    using RunEvent = std::function<void(const char* source, const std::function<void()>& handler)>;
    ControlDialog(const QString& title, double width_twips, double height_twips, RunEvent run_event,
                  QWidget* parent);
    QGroupBox* frame(Control& control);
    void label(Control& control, QWidget* in = nullptr);
    void button(Control& control, std::function<void()> click);
    // What the window's close button does; the window closes when `unloaded` holds.
    void on_close(std::function<void()> close, std::function<bool()> unloaded);
    void sync();

protected:
    void reject() override;

private:
    RunEvent run_event;
    std::vector<std::pair<Control*, QWidget*>> bound;
    std::vector<std::pair<Control*, QGroupBox*>> frames;
    std::function<void()> close_handler;
    std::function<bool()> is_unloaded;
};

}  // namespace zel
