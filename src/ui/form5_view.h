#pragma once
// The Create New Patient dialog on screen: renders Form5 and hands it what the operator does.
#include "dialogs/form5.h"
#include "ui/entry_dialog_view.h"

namespace zel {

class Form1;

class Form5View final : public EntryDialogView {
  public:
    Form5View(Form1& form, Form5& model, QWidget* parent);

    void setVisible(bool visible) override;

  protected:
    QString caption() const override { return model.Caption; }
    bool model_unloaded() const override { return model.unloaded; }
    int closing_result() const override { return model.Cancel_status ? Rejected : Accepted; }
    void type_text(TextBox& box, const QString& text, int caret) override {
        model.type_text(box, text, caret);
    }
    void key_press(TextBox& box, int key_ascii) override { model.key_press(box, key_ascii); }
    void lost_focus(TextBox& box) override { model.lost_focus(box); }
    void scroll(ScrollBar& bar, int value) override { model.scroll(bar, value); }
    void click(Control& control) override { model.click(control); }
    // Escape and the window's close button count as Cancel, which asks before changes are lost.
    void reject() override;

  private:
    Form5& model;
};

}  // namespace zel
