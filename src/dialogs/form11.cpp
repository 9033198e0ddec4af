#include "dialogs/form11.h"

#include <algorithm>
#include <cmath>

#include "app/form1.h"
#include "app/helpers.h"
#include "data/locale_number.h"
#include "dialogs/entry_rules.h"
#include "language/messages.h"

namespace zel {

namespace {

constexpr auto place = place_pixels;

// The caption under the main chart for a number of seconds per division; empty for a number
// that isn't offered.
QString division_caption(float seconds) {
    if (seconds == 1.0f) return message_text(190);
    if (seconds == 2.0f) return message_text(191);
    if (seconds == 3.0f) return message_text(192);
    return QString();
}

}  // namespace

Form11::Form11(Form1& form_) : form(form_) {
    lay_out();
    Y_Range_Text.BackColor = numeric_background;
    Y_Range_Text.font = Font{QStringLiteral("Liberation Sans"), 14.25, true};
    Y_Range_Scroll.LargeChange = 5;
    Patient_directory_text.Locked = true;
    Label_Title.font = Font{QStringLiteral("Liberation Sans"), 14.25, true};
    for (Control* label : {&Label_warning, &Label_warningB}) {
        label->font = Font{QStringLiteral("Liberation Sans"), 9, true};
        label->ForeColor = message_colour;
    }
}

void Form11::lay_out() {
    Width = 520 * twips_per_pixel;
    Height = 496 * twips_per_pixel;
    place(Label_Title, 8, 8, 504, 30);
    place(Frame1, 8, 44, 504, 92);
    Control* divisions[] = {&Sec_Div_1, &Sec_Div_2, &Sec_Div_3};
    Control* lengths[] = {&Sec_Length_10, &Sec_Length_20, &Sec_Length_30};
    for (int k = 0; k < 3; ++k) {
        place(*divisions[k], 14 + k * 164, 26, 156, 22);
        place(*lengths[k], 14 + k * 164, 58, 156, 22);
    }
    place(Frame2, 8, 144, 504, 100);
    place(Label1, 14, 31, 150, 22);
    place(Y_Range_Text, 170, 24, 80, 36);
    place(Y_Range_Scroll, 264, 31, 226, 22);
    place(Label_warning, 14, 68, 480, 22);
    place(LanguageFrame, 8, 252, 504, 104);
    place(LangCombo, 14, 26, 220, 28);
    place(Label_warningB, 14, 60, 480, 36);
    place(Frame10, 8, 364, 504, 72);
    place(Patient_directory_text, 14, 30, 376, 28);
    place(Change_directory, 400, 28, 94, 32);
    place(Done, 300, 452, 100, 32);
    place(Cancel, 412, 452, 100, 32);
}

QChar Form11::decimal_separator() const { return form.platform.locale.decimal_separator(); }

void Form11::Form_Load() {
    first_click = true;
    bodatapathchanged = false;
    languageChanged = false;
    threshold_temp = form.thresh;

    patient_data_directory_temp = form.data_directory;
    Patient_directory_text.Text = form.data_directory;

    // The scroll bar's lowest value rests on the threshold's size, while a typed range is
    // tested against the signed threshold: for a negative threshold the two differ.
    Y_Range_Scroll.Min = round_to_int16((std::fabs(static_cast<double>(form.thresh)) + 0.1) * 10);
    Y_Range_Scroll.Max = 200;

    // Choosing the options runs their Click, which carries the values in force into the
    // copies; a value that isn't offered chooses none and leaves its copy at 0.
    if (form.x_scale_factor == 1.0f) choose_option(Sec_Div_1);
    if (form.x_scale_factor == 2.0f) choose_option(Sec_Div_2);
    if (form.x_scale_factor == 3.0f) choose_option(Sec_Div_3);
    const double sweep_seconds = form.max_x / form.count_frequency;
    if (sweep_seconds == 10) choose_option(Sec_Length_10);
    if (sweep_seconds == 20) choose_option(Sec_Length_20);
    if (sweep_seconds == 30) choose_option(Sec_Length_30);

    // The scroll bar takes the range first: its Change sets max_y_temp, which Done writes
    // when the field isn't edited.
    const QChar separator = decimal_separator();
    Y_Range_Scroll.Value =
        std::clamp<int>(round_to_int16(form.max_y * 10), Y_Range_Scroll.Min, Y_Range_Scroll.Max);
    Y_Range_Scroll_Change();
    Y_Range_Text.Text = format_number(form.max_y, "#.#", separator);

    Caption = message_text(315);
    Label_Title.Caption = message_text(315);
    Frame1.Caption = message_text(230);
    Sec_Div_1.Caption = message_text(190);
    Sec_Div_2.Caption = message_text(191);
    Sec_Div_3.Caption = message_text(192);
    Sec_Length_10.Caption = message_text(232);
    Sec_Length_20.Caption = message_text(233);
    Sec_Length_30.Caption = message_text(234);
    Frame10.Caption = message_text(238);
    Change_directory.Caption = message_text(239);
    Frame2.Caption = message_text(231);
    Label1.Caption = message_text(240);
    LanguageFrame.Caption = message_text(242);
    Done.Caption = message_text(form.patient_defined ? 266 : 113);
    Cancel.Caption = message_text(114);

    LangCombo.items = {QStringLiteral("English")};
    for (const QString& name : form.language_name) LangCombo.items.append(name);
    const int in_force = static_cast<int>(LangCombo.items.indexOf(form.language_file));
    if (in_force >= 0 && in_force != LangCombo.ListIndex) {
        LangCombo.ListIndex = in_force;
        LangCombo_Click();
    }

    Done.Enabled = false;
    changes_made = false;
}

// ---- What the operator does -------------------------------------------------------------

void Form11::type_text(TextBox& box, const QString& text, int caret) {
    if (box.Locked) return;
    box.Text = text;
    box.SelStart = std::clamp(caret, 0, static_cast<int>(box.Text.size()));
}

void Form11::key_press(TextBox& box, int key_ascii) {
    if (&box == &Y_Range_Text) Y_Range_Text_KeyPress(key_ascii);
}

void Form11::lost_focus(TextBox& box) {
    if (&box == &Y_Range_Text) Y_Range_Text_LostFocus();
}

void Form11::scroll(ScrollBar& bar, int value) {
    value = std::clamp(value, bar.Min, bar.Max);
    if (value == bar.Value) return;
    bar.Value = value;
    if (&bar == &Y_Range_Scroll) Y_Range_Scroll_Change();
}

void Form11::click(Control& control) {
    if (!control.Enabled) return;
    for (Control* option :
         {&Sec_Div_1, &Sec_Div_2, &Sec_Div_3, &Sec_Length_10, &Sec_Length_20, &Sec_Length_30})
        if (&control == option && control.Value == 0) choose_option(control);
    if (&control == &Change_directory) Change_directory_Click();
    if (&control == &Done) Done_Click();
    if (&control == &Cancel) Cancel_Click();
}

void Form11::choose(ComboBox& combo, int index) {
    if (!combo.Enabled || index < 0 || index >= combo.items.size()) return;
    combo.ListIndex = index;
    if (&combo == &LangCombo) LangCombo_Click();
}

void Form11::choose_option(Control& option) {
    Control* divisions[] = {&Sec_Div_1, &Sec_Div_2, &Sec_Div_3};
    Control* lengths[] = {&Sec_Length_10, &Sec_Length_20, &Sec_Length_30};
    for (int k = 0; k < 3; ++k) {
        if (&option == divisions[k]) {
            for (Control* other : divisions) other->Value = other == &option ? 1 : 0;
            Sec_Div_Click(k + 1);
        }
        if (&option == lengths[k]) {
            for (Control* other : lengths) other->Value = other == &option ? 1 : 0;
            Sec_Length_Click(10 * (k + 1));
        }
    }
}

// ---- Chart settings ---------------------------------------------------------------------------

void Form11::Sec_Div_Click(int seconds) {
    x_scale_factor_temp = static_cast<float>(seconds);
    if (x_scale_factor_temp != form.x_scale_factor) Done.Enabled = true;
    changes_made = true;
}

void Form11::Sec_Length_Click(int seconds) {
    max_x_temp = form.count_frequency * static_cast<float>(seconds);
    if (max_x_temp != form.max_x) Done.Enabled = true;
    changes_made = true;
}

void Form11::Y_Range_Scroll_Change() {
    const QChar separator = decimal_separator();
    Y_Range_Text.Text = number_text(Y_Range_Scroll.Value / 10.0, separator);
    max_y_temp = locale_single(Y_Range_Text.Text, separator, "Y_Range_Scroll");
    Label_warning.Caption.clear();
    if (form.max_y != max_y_temp) Done.Enabled = true;
    changes_made = true;
}

void Form11::Y_Range_Text_KeyPress(int key_ascii) {
    if (key_ascii == 13)
        y_range_entered();
    else
        Done.Enabled = false;
}

void Form11::Y_Range_Text_LostFocus() { y_range_entered(); }

void Form11::y_range_entered() {
    Done.Enabled = true;
    if (Y_Range_Text.Text.isEmpty()) return;
    const QChar separator = decimal_separator();
    double value = 0;
    if (!entered_number(Y_Range_Text.Text, form.number_format, separator, value)) {
        Label_warning.Caption = message_text(186);
        Y_Range_Text.Text = single_text(max_y_temp, separator);
        return;
    }
    // Rounded first, then tested against the signed threshold, strictly.
    const double v = round_to_places(value, 1);
    if (!(v <= 20 && v > threshold_temp)) {
        Label_warning.Caption = message_text(189);
        Y_Range_Text.Text = single_text(max_y_temp, separator);
        return;
    }
    max_y_temp = static_cast<float>(v);
    Y_Range_Text.Text = single_text(max_y_temp, separator);
    // A range below the bar's lowest value (a negative threshold) leaves the bar at its end.
    Y_Range_Scroll.Value = std::clamp<int>(round_to_int16(static_cast<double>(max_y_temp) * 10),
                                           Y_Range_Scroll.Min, Y_Range_Scroll.Max);
    Label_warning.Caption.clear();
    if (form.max_y != max_y_temp) Done.Enabled = true;
    changes_made = true;
}

// ---- Language and data directory -----------------------------------------------------------

void Form11::LangCombo_Click() {
    if (first_click) {
        first_click = false;
        return;
    }
    Done.Enabled = true;
    const QString chosen =
        LangCombo.ListIndex >= 0 ? LangCombo.items[LangCombo.ListIndex] : QString();
    if (chosen == form.language_file) {
        Label_warningB.Caption.clear();
        languageChanged = false;
    } else {
        Label_warningB.Caption = message_text(301);
        languageChanged = true;
    }
}

void Form11::Change_directory_Click() {
    if (form.platform.boxes.MsgBox(message_text(205), vbOKCancel | vbQuestion) != vbOK) return;
    Patient_directory_text.Text = patient_data_directory_temp;
    patient_data_directory_temp = form.Select_patient_datapath();
    if (patient_data_directory_temp.isEmpty()) {
        patient_data_directory_temp = Patient_directory_text.Text;
        return;
    }
    Patient_directory_text.Text = patient_data_directory_temp;
    bodatapathchanged = true;
    Done.Enabled = true;
}

// ---- Done and Cancel ------------------------------------------------------------------------

void Form11::Done_Click() {
    // Nothing of the display or the patient's file changes under a hold; Done works again once
    // the hold has ended.
    if (form.b_state > 1) return;
    // The language goes to the settings file before the display values change, so that file
    // holds the new language and the old display; the display reaches it only by the menu.
    if (languageChanged) {
        form.language_file = LangCombo.items[LangCombo.ListIndex];
        form.save_ini_file();
    }
    form.max_y = round_to_places(max_y_temp, 1);
    form.min_y = round_to_places(-max_y_temp, 1);
    form.max_x = max_x_temp;
    form.x_scale_factor = x_scale_factor_temp;
    if (const QString caption = division_caption(form.x_scale_factor); !caption.isEmpty())
        form.Label1.Caption = caption;
    if (bodatapathchanged) {
        bodatapathchanged = false;
        // The console goes on with the directory it started with; a failed write says
        // nothing and leaves the stored one in force.
        QString path = Patient_directory_text.Text;
        if (form.write_data_path(path))
            form.platform.boxes.MsgBox(message_text(194), vbInformation);
    }
    unload();
}

void Form11::Cancel_Click() {
    if (changes_made) {
        form.confirm_cancel = false;
        form.show_Form_ConfirmCancel();
        if (!form.confirm_cancel) return;
    }
    unload();
}

void Form11::unload() {
    unloaded = true;
    form.platform.windows.unload(Window::Form11);
}

}  // namespace zel
