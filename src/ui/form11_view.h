#pragma once
// The System Settings dialog on screen: renders Form11 and hands it what the operator does.
#include "dialogs/form11.h"
#include "ui/entry_dialog_view.h"

namespace zel {

class Form11View final : public EntryDialogView {
  public:
    Form11View(Form1& form, Form11& model, QWidget* parent);

  protected:
    QString caption() const override { return model.Caption; }
    bool model_unloaded() const override { return model.unloaded; }
    void type_text(TextBox& box, const QString& text, int caret) override {
        model.type_text(box, text, caret);
    }
    void key_press(TextBox& box, int key_ascii) override { model.key_press(box, key_ascii); }
    void lost_focus(TextBox& box) override { model.lost_focus(box); }
    void scroll(ScrollBar& bar, int value) override { model.scroll(bar, value); }
    void click(Control& control) override { model.click(control); }
    void choose(ComboBox& combo, int index) override { model.choose(combo, index); }
    // Escape and the window's close button count as Cancel, which asks before changes are lost.
    void reject() override;

  private:
    Form11& model;
};

}  // namespace zel
