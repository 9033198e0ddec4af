#pragma once
// The System Settings dialog: the chart's seconds per division, sweep length and Y range, the
// language and the patient data directory, for the whole system. The display settings reach
// Form1 on Done; the language and the directory are stored at once and hold from the next start.
#include <QString>

#include "app/control.h"
#include "dialogs/entry_controls.h"

namespace zel {

class Form1;

class Form11 {
  public:
    explicit Form11(Form1& form);
    Form11(const Form11&) = delete;
    Form11& operator=(const Form11&) = delete;

    Form1& form;

    float x_scale_factor_temp = 0;
    float max_y_temp = 0;
    float max_x_temp = 0;
    float threshold_temp = 0;  // the Y range must stay above it
    bool gating_temp = false;
    QString patient_data_directory_temp;
    bool bodatapathchanged = false;
    bool languageChanged = false;
    bool changes_made = false;
    // Swallows the click that the load's own selection of the language fires.
    bool first_click = false;

    // The window and its controls; places in twips, children relative to their frame.
    QString Caption;
    double Width = 0, Height = 0;
    Control Label_Title;
    Control Frame1;
    Control Sec_Div_1, Sec_Div_2, Sec_Div_3;              // option buttons: Value 1 chosen
    Control Sec_Length_10, Sec_Length_20, Sec_Length_30;  // a second pair of options
    Control Frame2;
    Control Label1;
    TextBox Y_Range_Text;
    ScrollBar Y_Range_Scroll;
    Control Label_warning;  // the Y range's messages
    Control LanguageFrame;
    ComboBox LangCombo;
    Control Label_warningB;  // the language warning
    Control Frame10;
    TextBox Patient_directory_text;
    Control Change_directory;
    Control Done, Cancel;
    // Done or Cancel has closed the dialog.
    bool unloaded = false;

    void Form_Load();

    // What the operator does, as the window delivers it; each runs the control's handler.
    void type_text(TextBox& box, const QString& text, int caret);
    // A key that gives a character (13 for Enter) in a numeric field.
    void key_press(TextBox& box, int key_ascii);
    void lost_focus(TextBox& box);
    void scroll(ScrollBar& bar, int value);
    void click(Control& control);
    // An entry of the list is chosen, the one already selected too.
    void choose(ComboBox& combo, int index);

    void Sec_Div_Click(int seconds);
    void Sec_Length_Click(int seconds);
    void Y_Range_Scroll_Change();
    void Y_Range_Text_KeyPress(int key_ascii);
    void Y_Range_Text_LostFocus();
    void LangCombo_Click();
    void Change_directory_Click();
    void Done_Click();
    void Cancel_Click();

  private:
    void lay_out();
    QChar decimal_separator() const;
    // Chooses one option of a group and runs its Click, as a change of the choice does.
    void choose_option(Control& option);
    void y_range_entered();
    void unload();
};

}  // namespace zel
