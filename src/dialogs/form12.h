#pragma once
// The Patient Settings dialog: the threshold, the breath-hold duration and the trigger direction
// of the patient in force, for all further treatments. It works on copies and writes them to
// Form1 only on Save; the gating shows here and can't be changed.
#include <QString>

#include "app/control.h"
#include "dialogs/entry_controls.h"

namespace zel {

class Form1;

class Form12 {
  public:
    explicit Form12(Form1& form);
    Form12(const Form12&) = delete;
    Form12& operator=(const Form12&) = delete;

    Form1& form;

    float threshold_temp = 0;
    float duration_temp = 0;
    bool override_temp = false;
    // The last entry of each field passed; each field's warning is cleared only while the
    // other field's last entry passed too.
    bool thresh_entry_pass = true;
    bool duration_entry_pass = true;
    bool changes_made = false;

    // The window and its controls; places in twips, children relative to their frame.
    QString Caption;
    double Width = 0, Height = 0;
    Control Label_Title;
    Control Label_warning2;  // the standing warning against saving without need
    Control Frame_gating;
    Control Check_automatic, Check_manual, Check_overide;  // shown, never edited here
    Control Frame5;
    Control Label2, Label3;  // duration, threshold
    TextBox BreathHold_Text, Threshold_Text;
    ScrollBar BreathHold_Scroll, Threshold_Scroll;
    Control Inhalation_button, Exhalation_button;  // option buttons: Value 1 chosen
    Control Label_warningA, Label_warningB;        // the duration's and the threshold's messages
    Control Button_Save, Cancel;
    // Save or Cancel has closed the dialog.
    bool unloaded = false;

    void Form_Load();

    // What the operator does, as the window delivers it; each runs the control's handler.
    void type_text(TextBox& box, const QString& text, int caret);
    // A key that gives a character (13 for Enter) in a numeric field.
    void key_press(TextBox& box, int key_ascii);
    void lost_focus(TextBox& box);
    void scroll(ScrollBar& bar, int value);
    void click(Control& control);

    void BreathHold_Text_KeyPress(int key_ascii);
    void BreathHold_Text_LostFocus();
    void Threshold_Text_KeyPress(int key_ascii);
    void Threshold_Text_LostFocus();
    void BreathHold_Scroll_Change();
    void Threshold_Scroll_Change();
    void Inhalation_button_Click();
    void Exhalation_button_Click();
    void Button_Save_Click();
    void Cancel_Click();

  private:
    void lay_out();
    QChar decimal_separator() const;
    void choose_trigger(Control& button);
    void duration_entered();
    void threshold_entered();
    void unload();
};

}  // namespace zel
