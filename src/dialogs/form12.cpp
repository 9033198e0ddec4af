#include "dialogs/form12.h"

#include <algorithm>

#include "app/form1.h"
#include "app/helpers.h"
#include "data/locale_number.h"
#include "dialogs/entry_rules.h"
#include "language/messages.h"

namespace zel {

namespace {
constexpr auto place = place_pixels;
}  // namespace

Form12::Form12(Form1& form_) : form(form_) {
    lay_out();
    for (Control* box : {&Check_automatic, &Check_manual, &Check_overide}) box->Enabled = false;
    Inhalation_button.Value = 0;
    Exhalation_button.Value = 0;
    BreathHold_Scroll.Min = 1;
    BreathHold_Scroll.Max = 99;
    BreathHold_Scroll.Value = 1;
    BreathHold_Scroll.LargeChange = 5;
    Threshold_Scroll.LargeChange = 5;
    for (TextBox* box : {&BreathHold_Text, &Threshold_Text}) {
        box->BackColor = numeric_background;
        box->font = Font{QStringLiteral("Liberation Sans"), 14.25, true};
    }
    Label_Title.font = Font{QStringLiteral("Liberation Sans"), 14.25, true};
    Label_warning2.font = Font{QStringLiteral("Liberation Sans"), 9, true};
    Label_warning2.ForeColor = message_colour;
    for (Control* label : {&Label_warningA, &Label_warningB}) {
        label->font = Font{QStringLiteral("Liberation Sans"), 9, true};
        label->ForeColor = message_colour;
    }
}

void Form12::lay_out() {
    Width = 520 * twips_per_pixel;
    Height = 440 * twips_per_pixel;
    place(Label_Title, 8, 8, 504, 30);
    place(Label_warning2, 8, 42, 504, 64);
    place(Frame_gating, 8, 110, 504, 60);
    place(Check_automatic, 14, 26, 130, 22);
    place(Check_manual, 150, 26, 110, 22);
    place(Check_overide, 266, 26, 232, 22);
    place(Frame5, 8, 178, 504, 150);
    place(Label2, 14, 31, 150, 22);
    place(BreathHold_Text, 170, 24, 80, 36);
    place(BreathHold_Scroll, 264, 31, 226, 22);
    place(Label3, 14, 73, 150, 22);
    place(Threshold_Text, 170, 66, 80, 36);
    place(Threshold_Scroll, 264, 73, 226, 22);
    place(Inhalation_button, 14, 114, 160, 22);
    place(Exhalation_button, 180, 114, 160, 22);
    place(Label_warningA, 8, 336, 504, 20);
    place(Label_warningB, 8, 358, 504, 20);
    place(Button_Save, 300, 396, 100, 32);
    place(Cancel, 412, 396, 100, 32);
}

QChar Form12::decimal_separator() const { return form.platform.locale.decimal_separator(); }

void Form12::Form_Load() {
    Caption = message_text(281);
    Label_Title.Caption = message_text(281);
    Label_warning2.Caption = message_text(130);
    Frame_gating.Caption = message_text(286);
    Check_automatic.Caption = message_text(268);
    Check_manual.Caption = message_text(269);
    Check_overide.Caption = message_text(292);
    Frame5.Caption = message_text(235);
    Label2.Caption = message_text(159);
    Label3.Caption = message_text(158);
    Inhalation_button.Caption = message_text(236);
    Exhalation_button.Caption = message_text(237);
    Cancel.Caption = message_text(114);
    Button_Save.Caption = message_text(266);

    Check_automatic.Value = form.Gated_Treatment ? 1 : 0;
    Check_manual.Value = form.Gated_Treatment ? 0 : 1;
    Check_overide.Value = form.Gating_OverRide ? 1 : 0;

    Threshold_Scroll.Min = -100;
    Threshold_Scroll.Max = 100;
    // The live values, never the holding area of the file last read. The scroll bars take
    // them first: their Change sets the copies that Save writes when no field is edited.
    const QChar separator = decimal_separator();
    BreathHold_Scroll.Value = std::clamp<int>(round_to_int16(form.duration), BreathHold_Scroll.Min,
                                              BreathHold_Scroll.Max);
    BreathHold_Scroll_Change();
    Threshold_Scroll.Value =
        std::clamp<int>(round_to_int16(static_cast<double>(form.thresh * 10.0f)),
                        Threshold_Scroll.Min, Threshold_Scroll.Max);
    Threshold_Scroll_Change();
    BreathHold_Text.Text = number_text(form.duration, separator);
    Threshold_Text.Text = format_single(form.thresh, "#.#", separator);
    choose_trigger(form.inhale ? Inhalation_button : Exhalation_button);

    Button_Save.Enabled = false;
    changes_made = false;
}

// ---- What the operator does -------------------------------------------------------------

void Form12::type_text(TextBox& box, const QString& text, int caret) {
    box.Text = box.MaxLength > 0 ? text.left(box.MaxLength) : text;
    box.SelStart = std::clamp(caret, 0, static_cast<int>(box.Text.size()));
}

void Form12::key_press(TextBox& box, int key_ascii) {
    if (&box == &BreathHold_Text) BreathHold_Text_KeyPress(key_ascii);
    if (&box == &Threshold_Text) Threshold_Text_KeyPress(key_ascii);
}

void Form12::lost_focus(TextBox& box) {
    if (&box == &BreathHold_Text) BreathHold_Text_LostFocus();
    if (&box == &Threshold_Text) Threshold_Text_LostFocus();
}

void Form12::scroll(ScrollBar& bar, int value) {
    value = std::clamp(value, bar.Min, bar.Max);
    if (value == bar.Value) return;
    bar.Value = value;
    if (&bar == &BreathHold_Scroll) BreathHold_Scroll_Change();
    if (&bar == &Threshold_Scroll) Threshold_Scroll_Change();
}

void Form12::click(Control& control) {
    if (!control.Enabled) return;
    if (&control == &Inhalation_button || &control == &Exhalation_button) {
        if (control.Value == 0) choose_trigger(control);
    } else if (&control == &Button_Save) {
        Button_Save_Click();
    } else if (&control == &Cancel) {
        Cancel_Click();
    }
}

void Form12::choose_trigger(Control& button) {
    const bool inhalation = &button == &Inhalation_button;
    Inhalation_button.Value = inhalation ? 1 : 0;
    Exhalation_button.Value = inhalation ? 0 : 1;
    if (inhalation)
        Inhalation_button_Click();
    else
        Exhalation_button_Click();
}

// ---- Numeric fields -------------------------------------------------------------------------

void Form12::BreathHold_Text_KeyPress(int key_ascii) {
    if (key_ascii == 13)
        duration_entered();
    else
        Button_Save.Enabled = false;
}

void Form12::BreathHold_Text_LostFocus() { duration_entered(); }

void Form12::duration_entered() {
    Button_Save.Enabled = true;
    if (BreathHold_Text.Text.isEmpty()) return;
    const QChar separator = decimal_separator();
    double value = 0;
    const bool number = entered_number(BreathHold_Text.Text, form.number_format, separator, value);
    // The range is tested before the rounding: 99.4 is refused, 98.6 becomes 99.
    if (!number || value < 1 || value > 99) {
        Label_warningA.Caption = message_text(number ? 185 : 186);
        BreathHold_Text.Text = single_text(duration_temp, separator);
        duration_entry_pass = false;
        return;
    }
    duration_temp = static_cast<float>(round_to_places(value, 0));
    BreathHold_Text.Text = single_text(duration_temp, separator);
    BreathHold_Scroll.Value =
        round_to_int16(locale_number(BreathHold_Text.Text, separator, "BreathHold_Text"));
    duration_entry_pass = true;
    if (thresh_entry_pass) Label_warningA.Caption.clear();
    if (form.duration != duration_temp) Button_Save.Enabled = true;
    changes_made = true;
}

void Form12::Threshold_Text_KeyPress(int key_ascii) {
    if (key_ascii == 13)
        threshold_entered();
    else
        Button_Save.Enabled = false;
}

void Form12::Threshold_Text_LostFocus() { threshold_entered(); }

void Form12::threshold_entered() {
    Button_Save.Enabled = true;
    if (Threshold_Text.Text.isEmpty()) return;
    const QChar separator = decimal_separator();
    double value = 0;
    const bool number = entered_number(Threshold_Text.Text, form.number_format, separator, value);
    // The rounding comes before the range test: 10.04 is 10.0 and passes, 10.06 does not.
    const double rounded = number ? round_to_places(value, 1) : 0;
    if (!number || rounded < -10.0 || rounded > 10.0) {
        Label_warningB.Caption = message_text(number ? 188 : 186);
        Threshold_Text.Text = single_text(threshold_temp, separator);
        thresh_entry_pass = false;
        return;
    }
    threshold_temp = static_cast<float>(rounded);
    Threshold_Text.Text = single_text(threshold_temp, separator);
    Threshold_Scroll.Value = round_to_int16(static_cast<double>(threshold_temp) * 10);
    thresh_entry_pass = true;
    if (duration_entry_pass) Label_warningB.Caption.clear();
    if (form.thresh != threshold_temp) Button_Save.Enabled = true;
    changes_made = true;
}

// A move of a scroll bar puts a good value in its field, so its own warning goes.
void Form12::BreathHold_Scroll_Change() {
    BreathHold_Text.Text = QString::number(BreathHold_Scroll.Value);
    duration_temp = static_cast<float>(BreathHold_Scroll.Value);
    if (form.duration != duration_temp) Button_Save.Enabled = true;
    Label_warningA.Caption.clear();
    changes_made = true;
}

void Form12::Threshold_Scroll_Change() {
    const QChar separator = decimal_separator();
    Threshold_Text.Text = number_text(Threshold_Scroll.Value / 10.0, separator);
    threshold_temp = static_cast<float>(
        round_to_places(locale_number(Threshold_Text.Text, separator, "Threshold_Scroll"), 1));
    if (form.thresh != threshold_temp) Button_Save.Enabled = true;
    Label_warningB.Caption.clear();
    changes_made = true;
}

// ---- Trigger, Save and Cancel -----------------------------------------------------------------

void Form12::Inhalation_button_Click() {
    if (!form.inhale) Button_Save.Enabled = true;
    changes_made = true;
}

void Form12::Exhalation_button_Click() {
    if (form.inhale) Button_Save.Enabled = true;
    changes_made = true;
}

void Form12::Button_Save_Click() {
    // A hold under way (a module re-found in one behind the dialog) keeps the settings it was
    // armed with; Save works again once the hold has ended.
    if (form.b_state > 1) return;
    form.thresh = static_cast<float>(round_to_places(threshold_temp, 1));
    form.inhale = Inhalation_button.Value == 1;
    form.duration = round_to_places(duration_temp, 0);
    widen_chart_for_threshold(form.max_y, form.min_y, form.thresh);
    form.form12_open = false;
    unload();
}

void Form12::Cancel_Click() {
    if (changes_made) {
        form.confirm_cancel = false;
        form.show_Form_ConfirmCancel();
        if (!form.confirm_cancel) return;
    }
    form.form12_open = false;
    form.patient_settings_cancel = true;
    unload();
}

void Form12::unload() {
    unloaded = true;
    form.platform.windows.unload(Window::Form12);
}

}  // namespace zel
