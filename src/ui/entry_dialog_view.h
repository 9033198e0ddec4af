#pragma once
// What the settings dialogs share on screen: frames, labels, entry fields, scroll bars, option
// buttons, check boxes, lists and buttons, each bound to its control in the model; the
// operator's actions go to the model's handlers and the model's state comes back on the
// widgets after each of them.
#include <QDialog>
#include <functional>
#include <map>
#include <vector>

#include "app/control.h"
#include "dialogs/entry_controls.h"

class QAbstractButton;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QScrollBar;

namespace zel {

class Form1;

class EntryDialogView : public QDialog {
  public:
    // Puts the model's state on the widgets; closes the window once the model has unloaded.
    void sync();

  protected:
    EntryDialogView(Form1& form, QWidget* parent);

    // The model's side, which each dialog's view forwards to its model.
    virtual QString caption() const = 0;
    virtual bool model_unloaded() const = 0;
    // The answer the window closes with once the model has unloaded.
    virtual int closing_result() const { return Accepted; }
    virtual void type_text(TextBox& box, const QString& text, int caret) = 0;
    virtual void key_press(TextBox& box, int key_ascii) = 0;
    virtual void lost_focus(TextBox& box) = 0;
    virtual void scroll(ScrollBar& bar, int value) = 0;
    virtual void click(Control& control) = 0;
    virtual void choose(ComboBox&, int) {}

    // The widgets, created in the order of the tab sequence.
    QGroupBox* frame(Control& c);
    QLabel* label(Control& c, QWidget* in, bool wrap = false);
    QLineEdit* field(TextBox& box, QWidget* in, bool numeric);
    QScrollBar* bar(ScrollBar& sb, QWidget* in);
    QAbstractButton* tick(Control& c, QWidget* in, bool option);
    QAbstractButton* button(Control& c, QWidget* in = nullptr);
    QComboBox* list(ComboBox& combo, QWidget* in);
    QLineEdit* line_edit_of(const TextBox& box) const;

    bool eventFilter(QObject* watched, QEvent* event) override;
    // Gives the focus to `opening_focus` as the window opens.
    void setVisible(bool visible) override;
    // Where the focus stands when the window opens: not in an entry field, whose leaving
    // would count as an entry and turn Save on before anything was edited.
    QWidget* opening_focus = nullptr;
    // A window that comes to the front again shows what changed behind it, as a gating
    // override taken in a message window over it.
    bool event(QEvent* event) override;

    void run(const char* source, const std::function<void()>& handler);

    Form1& form;

  private:
    std::vector<std::pair<Control*, QWidget*>> bound;
    std::vector<std::pair<TextBox*, QLineEdit*>> fields;
    // The caret each field was last given, so that a selection the operator made stands until
    // the model moves the caret or changes the text.
    std::map<const TextBox*, int> synced_caret;
    std::vector<std::pair<ScrollBar*, QScrollBar*>> bars;
    std::vector<std::pair<Control*, QAbstractButton*>> ticks;
    std::vector<std::pair<Control*, QGroupBox*>> frames;
    std::vector<std::pair<ComboBox*, QComboBox*>> lists;
    bool syncing = false;
};

}  // namespace zel
