#pragma once
// The Create New Patient dialog: a new patient with the settings of the whole course, or a new
// session for the patient just loaded. It edits copies and writes them to Form1 only on Done.
#include <QString>
#include <cstdint>
#include <functional>

#include "app/control.h"
#include "dialogs/entry_controls.h"

namespace zel {

class Form1;

class Form5 {
  public:
    explicit Form5(Form1& form);
    Form5(const Form5&) = delete;
    Form5& operator=(const Form5&) = delete;

    Form1& form;

    // The values being edited.
    QString temp1;  // session ID, trimmed
    QString temp2;  // last name, trimmed
    QString temp3;  // medical ID, trimmed
    QString temp4;  // first name, trimmed
    bool Cancel_status = false;
    float threshold_temp = 0;
    int16_t duration_temp = 0;
    bool temp_inhale = false;
    QString temp_filename, temp_dir_name, temp_id;  // the medical ID search's work strings
    QString temp_last_name, temp_first_name, patient_medical_id_temp;
    bool changes_made = false;
    bool boolCheckClick = false;

    // The session history's routines of Form1, bound when Form1 opens the dialog.
    std::function<QString(const QString& last, const QString& first, const QString& id)>
        get_next_sessionID;
    std::function<bool(const QString& id)> checkIfSessionExists;

    // The window and its controls; places in twips, children relative to their frame.
    QString Caption;
    double Width = 0, Height = 0;
    Control Frame_Patient_Info;
    Control Label_last_name, Label_first_name, Label_medical_ID;
    TextBox Text_last_name, Text_first_name, Text_medical_id;
    Control Frame_Session;
    Control Label_Session_ID;
    TextBox Text_session;
    Control Frame_Gating_Options;
    Control Check_automatic, Check_manual;  // check boxes: Value 1 ticked
    Control Label_gating_warning;
    Control Frame_Breath_Hold;
    Control Label_duration, Label_threshold;
    TextBox BreathHold_Text, Threshold_Text;
    ScrollBar BreathHold_Scroll, Threshold_Scroll;
    Control Check_Inhalation, check_Exhalation;  // option buttons: Value 1 chosen
    Control button_done, button_cancel;
    Control Label_message;
    // Done or Cancel has closed the dialog.
    bool unloaded = false;
    // The patient folder Done made, until the first save of the patient file has tried it.
    QString made_folder;

    void Form_Load();

    // What the operator does, as the window delivers it; each runs the control's handler.
    // A text typed or pasted, with the caret where it then stands.
    void type_text(TextBox& box, const QString& text, int caret);
    // A key that gives a character (13 for Enter) in a numeric field.
    void key_press(TextBox& box, int key_ascii);
    void lost_focus(TextBox& box);
    void scroll(ScrollBar& bar, int value);
    // A check box toggles, an option button is chosen, a button is pressed.
    void click(Control& control);

    // False if the text holds a character that a file or folder name can't hold, or one that
    // the 8-bit files can't hold, or begins with ".".
    void check_characters(const QString& text, bool& result) const;
    // True if the first parameter file of a patient folder holds this medical ID.
    void medical_id_exists(const QString& id, bool& result);

    void Text_last_name_Change();
    void Text_first_name_Change();
    void Text_medical_id_Change();
    void Text_session_Change();
    void BreathHold_Text_KeyPress(int key_ascii);
    void BreathHold_Text_LostFocus();
    void Threshold_Text_KeyPress(int key_ascii);
    void Threshold_Text_LostFocus();
    void BreathHold_Scroll_Change();
    void Threshold_Scroll_Change();
    void Check_automatic_Click();
    void Check_manual_Click();
    void Check_Inhalation_Click();
    void check_Exhalation_Click();
    void button_done_Click();
    void button_cancel_Click();

  private:
    bool session_mode() const;
    QChar decimal_separator() const;
    void lay_out();
    // A change made by the dialog itself; like the operator's, it runs the Change handler.
    void set_text(TextBox& box, const QString& text);
    void set_check(Control& box, int value);
    void text_changed(TextBox& box);
    // A name field's Change: the filter, then the trimmed text kept in `member`.
    bool filter_name_field(TextBox& box, QString& member);
    void breath_hold_entered();
    void threshold_entered();
    // The text as a number under the decimal separator rule; false if it is none.
    bool entered_number(const QString& text, double& value) const;
    void done_checks_and_writes();
    void unload();
};

}  // namespace zel
