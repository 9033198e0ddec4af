#pragma once
// The Create New Patient dialog on screen: renders Form5 and hands it what the operator does.
#include <QDialog>
#include <map>
#include <vector>

#include "dialogs/form5.h"

class QLineEdit;
class QScrollBar;
class QAbstractButton;
class QGroupBox;

namespace zel {

class Form1;

class Form5View final : public QDialog {
  public:
    Form5View(Form1& form, Form5& model, QWidget* parent);
    // Puts the model's state on the widgets; closes the window once the model has unloaded.
    void sync();

    void setVisible(bool visible) override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Escape and the window's close button count as Cancel, which asks before changes are lost.
    void reject() override;

  private:
    Form1& form;
    Form5& model;
    std::vector<std::pair<Control*, QWidget*>> bound;
    std::vector<std::pair<TextBox*, QLineEdit*>> fields;
    // The caret each field was last given, so that a selection the operator made stands until
    // the model moves the caret or changes the text.
    std::map<const TextBox*, int> synced_caret;
    std::vector<std::pair<ScrollBar*, QScrollBar*>> bars;
    std::vector<std::pair<Control*, QAbstractButton*>> ticks;
    std::vector<std::pair<Control*, QGroupBox*>> frames;
    bool syncing = false;

    void run(const char* source, const std::function<void()>& handler);
};

}  // namespace zel
