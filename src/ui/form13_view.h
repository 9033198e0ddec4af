#pragma once
// The system check window.
#include <QDialog>
#include <QTimer>
#include <vector>

#include "app/form1.h"

namespace zel {

class Form13View final : public QDialog {
public:
    Form13View(Form1& form, QWidget* parent);
    void sync();

protected:
    void reject() override;  // Escape and the frame's close do nothing: the exit button decides

private:
    Form1& form;
    std::vector<std::pair<Control*, QWidget*>> bound;
    QTimer refresh;
};

}  // namespace zel
