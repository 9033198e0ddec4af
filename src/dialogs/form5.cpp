#include "dialogs/form5.h"

#include <QDir>
#include <QFile>
#include <algorithm>

#include "app/form1.h"
#include "app/helpers.h"
#include "data/file_access.h"
#include "data/file_fault.h"
#include "data/locale_number.h"
#include "data/text_reader.h"
#include "dialogs/entry_rules.h"
#include "language/messages.h"

namespace zel {

namespace {

// A field that repeats a patient already on disk, or a session already held.
constexpr Rgb marked_background{255, 192, 192};

constexpr auto place = place_pixels;

}  // namespace

Form5::Form5(Form1& form_) : form(form_) {
    lay_out();
    Check_automatic.Value = 0;
    Check_manual.Value = 0;
    // Neither trigger is chosen until the load chooses one, so that the choice always reaches
    // temp_inhale.
    Check_Inhalation.Value = 0;
    check_Exhalation.Value = 0;
    BreathHold_Scroll.Min = 1;
    BreathHold_Scroll.Max = 99;
    BreathHold_Scroll.Value = 1;
    BreathHold_Scroll.LargeChange = 5;
    Threshold_Scroll.LargeChange = 5;
    for (TextBox* box : {&Text_last_name, &Text_first_name, &Text_medical_id, &Text_session}) {
        box->MaxLength = 20;
        box->font = Font{QStringLiteral("Liberation Mono"), 11.25, false};
    }
    for (TextBox* box : {&BreathHold_Text, &Threshold_Text}) {
        box->BackColor = numeric_background;
        box->font = Font{QStringLiteral("Liberation Sans"), 14.25, true};
    }
    Label_message.font = Font{QStringLiteral("Liberation Sans"), 9, true};
    Label_message.ForeColor = message_colour;
}

void Form5::lay_out() {
    Width = 520 * twips_per_pixel;
    Height = 536 * twips_per_pixel;
    place(Frame_Patient_Info, 8, 8, 504, 132);
    Control* name_labels[] = {&Label_last_name, &Label_first_name, &Label_medical_ID};
    TextBox* name_boxes[] = {&Text_last_name, &Text_first_name, &Text_medical_id};
    for (int k = 0; k < 3; ++k) {
        place(*name_labels[k], 14, 30 + k * 34, 120, 22);
        place(*name_boxes[k], 140, 26 + k * 34, 230, 28);
    }
    place(Frame_Session, 8, 148, 504, 64);
    place(Label_Session_ID, 14, 30, 120, 22);
    place(Text_session, 140, 26, 230, 28);
    place(Frame_Gating_Options, 8, 220, 504, 78);
    place(Check_automatic, 14, 24, 150, 22);
    place(Check_manual, 180, 24, 150, 22);
    place(Label_gating_warning, 14, 50, 480, 20);
    place(Frame_Breath_Hold, 8, 306, 504, 150);
    place(Label_duration, 14, 31, 150, 22);
    place(BreathHold_Text, 170, 24, 80, 36);
    place(BreathHold_Scroll, 264, 31, 226, 22);
    place(Label_threshold, 14, 73, 150, 22);
    place(Threshold_Text, 170, 66, 80, 36);
    place(Threshold_Scroll, 264, 73, 226, 22);
    place(Check_Inhalation, 14, 114, 160, 22);
    place(check_Exhalation, 180, 114, 160, 22);
    place(Label_message, 8, 464, 504, 22);
    place(button_done, 300, 494, 100, 32);
    place(button_cancel, 412, 494, 100, 32);
}

bool Form5::session_mode() const { return form.new_patient_loading; }

QChar Form5::decimal_separator() const { return form.platform.locale.decimal_separator(); }

void Form5::Form_Load() {
    Caption = message_text(135);
    Caption = message_text(281);
    Frame_Patient_Info.Caption = message_text(284);
    Label_last_name.Caption = message_text(115);
    Label_first_name.Caption = message_text(282);
    Label_medical_ID.Caption = message_text(117);
    Frame_Session.Caption = message_text(285);
    Label_Session_ID.Caption = message_text(201);
    Frame_Gating_Options.Caption = message_text(286);
    Check_automatic.Caption = message_text(268);
    Check_manual.Caption = message_text(269);
    Label_gating_warning.Caption = message_text(283);
    Frame_Breath_Hold.Caption = message_text(287);
    Label_duration.Caption = message_text(159);
    Label_threshold.Caption = message_text(158);
    Check_Inhalation.Caption = message_text(236);
    check_Exhalation.Caption = message_text(237);
    button_done.Caption = message_text(session_mode() ? 113 : 266);
    button_cancel.Caption = message_text(114);

    Threshold_Scroll.Min = -100;
    Threshold_Scroll.Max = 100;

    const QChar separator = decimal_separator();
    const double duration = session_mode() ? form.temp_duration : form.duration;
    const float thresh = session_mode() ? form.temp_thresh : form.thresh;
    const bool inhale = session_mode() ? form.temp_trigger == QLatin1String("True") : form.inhale;
    // The scroll bars take the values first: their Change sets duration_temp and
    // threshold_temp, the values that Done keeps when no field is edited.
    BreathHold_Scroll.Value =
        std::clamp<int>(round_to_int16(duration), BreathHold_Scroll.Min, BreathHold_Scroll.Max);
    BreathHold_Scroll_Change();
    Threshold_Scroll.Value = std::clamp<int>(round_to_int16(static_cast<double>(thresh * 10.0f)),
                                             Threshold_Scroll.Min, Threshold_Scroll.Max);
    Threshold_Scroll_Change();
    BreathHold_Text.Text = number_text(duration, separator);
    Threshold_Text.Text = format_single(thresh, "#.#", separator);
    set_check(inhale ? Check_Inhalation : check_Exhalation, 1);

    Cancel_status = false;
    temp1.clear();
    temp2.clear();
    temp3.clear();

    if (!session_mode()) {
        for (Control* c :
             {&Check_manual, &Check_automatic, static_cast<Control*>(&Text_medical_id),
              static_cast<Control*>(&Text_first_name), static_cast<Control*>(&Text_last_name)})
            c->Enabled = true;
        set_text(Text_session, format_number(1, "#", separator));
    } else {
        for (Control* c :
             {static_cast<Control*>(&Text_last_name), static_cast<Control*>(&Text_first_name),
              static_cast<Control*>(&Text_medical_id), &Check_automatic, &Check_manual,
              static_cast<Control*>(&BreathHold_Text), static_cast<Control*>(&Threshold_Text),
              static_cast<Control*>(&BreathHold_Scroll), static_cast<Control*>(&Threshold_Scroll),
              &Check_Inhalation, &check_Exhalation})
            c->Enabled = false;
        const QString next = get_next_sessionID ? get_next_sessionID(form.temp_patient_last_name,
                                                                     form.temp_patient_first_name,
                                                                     form.temp_patient_medical_id)
                                                : QString();
        set_text(Text_session, next);
        Text_session.SelStart = static_cast<int>(Text_session.Text.size());
        set_text(Text_last_name, form.temp_patient_last_name);
        set_text(Text_first_name, form.temp_patient_first_name);
        set_text(Text_medical_id, form.temp_patient_medical_id);
        set_check(form.temp_gating == QLatin1String("True") ? Check_automatic : Check_manual, 1);
    }
    changes_made = false;
}

// ---- What the operator does -------------------------------------------------------------

void Form5::type_text(TextBox& box, const QString& text, int caret) {
    const QString kept = box.MaxLength > 0 ? text.left(box.MaxLength) : text;
    box.SelStart = std::clamp(caret, 0, static_cast<int>(kept.size()));
    if (kept == box.Text) return;
    box.Text = kept;
    text_changed(box);
}

void Form5::key_press(TextBox& box, int key_ascii) {
    if (&box == &BreathHold_Text) BreathHold_Text_KeyPress(key_ascii);
    if (&box == &Threshold_Text) Threshold_Text_KeyPress(key_ascii);
}

void Form5::lost_focus(TextBox& box) {
    if (&box == &BreathHold_Text) BreathHold_Text_LostFocus();
    if (&box == &Threshold_Text) Threshold_Text_LostFocus();
}

void Form5::scroll(ScrollBar& bar, int value) {
    value = std::clamp(value, bar.Min, bar.Max);
    if (value == bar.Value) return;
    bar.Value = value;
    if (&bar == &BreathHold_Scroll) BreathHold_Scroll_Change();
    if (&bar == &Threshold_Scroll) Threshold_Scroll_Change();
}

void Form5::click(Control& control) {
    if (&control == &Check_automatic || &control == &Check_manual) {
        set_check(control, control.Value ? 0 : 1);
    } else if (&control == &Check_Inhalation || &control == &check_Exhalation) {
        set_check(control, 1);
    } else if (&control == &button_done) {
        button_done_Click();
    } else if (&control == &button_cancel) {
        button_cancel_Click();
    }
}

void Form5::set_text(TextBox& box, const QString& text) {
    if (text == box.Text) return;
    box.Text = text;
    box.SelStart = 0;
    text_changed(box);
}

// A check box or option button whose value changes runs its Click; choosing an option
// clears the other of its pair.
void Form5::set_check(Control& box, int value) {
    if (box.Value == value) return;
    box.Value = value;
    if (&box == &Check_automatic) Check_automatic_Click();
    if (&box == &Check_manual) Check_manual_Click();
    if (&box == &Check_Inhalation || &box == &check_Exhalation) {
        if (value) {
            (&box == &Check_Inhalation ? check_Exhalation : Check_Inhalation).Value = 0;
            if (&box == &Check_Inhalation)
                Check_Inhalation_Click();
            else
                check_Exhalation_Click();
        }
    }
}

void Form5::text_changed(TextBox& box) {
    if (&box == &Text_last_name) Text_last_name_Change();
    if (&box == &Text_first_name) Text_first_name_Change();
    if (&box == &Text_medical_id) Text_medical_id_Change();
    if (&box == &Text_session) Text_session_Change();
}

// ---- Text fields --------------------------------------------------------------------------

void Form5::check_characters(const QString& text, bool& result) const {
    static const QString forbidden = QStringLiteral("\\,/?:*<>|");
    result = true;
    // The patient's files are 8-bit: a character beyond that set could name the folder but
    // never be written into the patient file.
    for (QChar c : text)
        if (forbidden.contains(c) || c.unicode() > 0xFF) result = false;
    // A leading "." would hide the patient's folder or file from the folder lists here.
    if (text.trimmed().startsWith(QLatin1Char('.'))) result = false;
}

bool Form5::filter_name_field(TextBox& box, QString& member) {
    bool result = false;
    check_characters(box.Text, result);
    if (result) return true;
    // The stored text goes back without the bad character, and the caret stays where the
    // operator was typing.
    const int caret = box.SelStart;
    set_text(box, member);
    box.SelStart = std::clamp(caret - 1, 0, static_cast<int>(box.Text.size()));
    Label_message.Caption = message_text(132);
    return false;
}

void Form5::Text_last_name_Change() {
    if (!filter_name_field(Text_last_name, temp2)) return;
    temp2 = Text_last_name.Text.trimmed();
    Label_message.Caption.clear();
    changes_made = true;
}

void Form5::Text_first_name_Change() {
    if (!filter_name_field(Text_first_name, temp4)) return;
    temp4 = Text_first_name.Text.trimmed();
    Label_message.Caption.clear();
    changes_made = true;
}

void Form5::Text_session_Change() {
    if (filter_name_field(Text_session, temp1) && session_mode()) {
        const bool exists = checkIfSessionExists && checkIfSessionExists(Text_session.Text);
        if (exists) {
            Label_message.Caption = message_text(140);
            Text_session.BackColor = marked_background;
        } else {
            Text_session.BackColor = text_box_background;
            Label_message.Caption.clear();
            changes_made = true;
        }
    }
    temp1 = Text_session.Text.trimmed();
}

void Form5::Text_medical_id_Change() {
    if (!filter_name_field(Text_medical_id, temp3)) return;
    if (!session_mode() && !Text_medical_id.Text.isEmpty()) {
        bool found = false;
        medical_id_exists(Text_medical_id.Text, found);
        if (found) {
            Label_message.Caption = message_text(197);
            Label_message.Visible = true;
        } else {
            Label_message.Caption.clear();
            changes_made = true;
        }
    }
    temp3 = Text_medical_id.Text.trimmed();
}

void Form5::medical_id_exists(const QString& id, bool& result) {
    result = false;
    const QDir data(form.data_directory);
    if (form.data_directory.isEmpty() || !data.exists())
        throw ZelError(err_path_not_found, QStringLiteral("medical_id_exists"),
                       QStringLiteral("Path not found"));
    const QStringList folders = data.entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot,
                                               QDir::Name | QDir::IgnoreCase);
    for (const QString& folder : folders) {
        temp_dir_name = data.filePath(folder);
        const QStringList files =
            QDir(temp_dir_name)
                .entryList({QStringLiteral("*.zel")}, QDir::Files | QDir::Hidden,
                           QDir::Name | QDir::IgnoreCase);
        if (files.isEmpty()) continue;
        temp_filename = QDir(temp_dir_name).filePath(files.first());
        QFile file(temp_filename);
        if (!file.open(QIODevice::ReadOnly))
            throw ZelError(err_path_file_access, QStringLiteral("medical_id_exists"),
                           QStringLiteral("Path/File access error"));
        TextReader reader(file);
        if (reader.line_input() != form.patient_parameter_filestamp) continue;
        for (int line = 2; line <= 5; ++line) temp_id = reader.line_input();
        temp_id = text_after_colon(temp_id);
        if (temp_id == id) {
            result = true;
            Text_medical_id.BackColor = marked_background;
            return;
        }
        Text_medical_id.BackColor = text_box_background;
    }
}

// ---- Numeric fields -------------------------------------------------------------------------

bool Form5::entered_number(const QString& text, double& value) const {
    return zel::entered_number(text, form.number_format, decimal_separator(), value);
}

void Form5::BreathHold_Text_KeyPress(int key_ascii) {
    if (key_ascii == 13)
        breath_hold_entered();
    else
        button_done.Enabled = false;
}

void Form5::BreathHold_Text_LostFocus() { breath_hold_entered(); }

void Form5::breath_hold_entered() {
    button_done.Enabled = true;
    if (BreathHold_Text.Text.isEmpty()) return;
    double value = 0;
    if (!entered_number(BreathHold_Text.Text, value)) {
        Label_message.Caption = message_text(186);
        BreathHold_Text.Text = QString::number(duration_temp);
        return;
    }
    // The range is tested before the rounding: 99.4 is refused, 98.6 becomes 99.
    if (value < 1 || value > 99) {
        Label_message.Caption = message_text(185);
        BreathHold_Text.Text = QString::number(duration_temp);
        return;
    }
    duration_temp = round_to_int16(round_to_places(value, 0));
    BreathHold_Text.Text = QString::number(duration_temp);
    BreathHold_Scroll.Value = duration_temp;
    if (form.duration != duration_temp) button_done.Enabled = true;
    Label_message.Caption.clear();
    changes_made = true;
}

void Form5::Threshold_Text_KeyPress(int key_ascii) {
    if (key_ascii == 13)
        threshold_entered();
    else
        button_done.Enabled = false;
}

void Form5::Threshold_Text_LostFocus() { threshold_entered(); }

void Form5::threshold_entered() {
    button_done.Enabled = true;
    if (Threshold_Text.Text.isEmpty()) return;
    const QChar separator = decimal_separator();
    double value = 0;
    if (!entered_number(Threshold_Text.Text, value)) {
        Label_message.Caption = message_text(186);
        Threshold_Text.Text = single_text(threshold_temp, separator);
        return;
    }
    // The rounding comes before the range test: 10.04 is 10.0 and passes, 10.06 does not.
    const double rounded = round_to_places(value, 1);
    if (rounded < -10.0 || rounded > 10.0) {
        Label_message.Caption = message_text(188);
        Threshold_Text.Text = single_text(threshold_temp, separator);
        return;
    }
    threshold_temp = static_cast<float>(rounded);
    Threshold_Text.Text = single_text(threshold_temp, separator);
    const double shown = locale_number(Threshold_Text.Text, separator, "Threshold_Text");
    Threshold_Scroll.Value = round_to_int16(shown * 10);
    if (form.thresh != threshold_temp) button_done.Enabled = true;
    Label_message.Caption.clear();
    changes_made = true;
}

void Form5::BreathHold_Scroll_Change() {
    BreathHold_Text.Text = QString::number(BreathHold_Scroll.Value);
    duration_temp = static_cast<int16_t>(BreathHold_Scroll.Value);
    if (form.duration != duration_temp) button_done.Enabled = true;
    Label_message.Caption.clear();
    changes_made = true;
}

void Form5::Threshold_Scroll_Change() {
    const QChar separator = decimal_separator();
    Threshold_Text.Text = number_text(Threshold_Scroll.Value / 10.0, separator);
    threshold_temp = static_cast<float>(
        round_to_places(locale_number(Threshold_Text.Text, separator, "Threshold_Scroll"), 1));
    if (form.thresh != threshold_temp) button_done.Enabled = true;
    Label_message.Caption.clear();
    changes_made = true;
}

// ---- Gating and trigger -------------------------------------------------------------------

// The two boxes are one exclusive pair; the click that the pair's own change causes finds the
// guard set and does nothing.
void Form5::Check_automatic_Click() {
    if (boolCheckClick) return;
    boolCheckClick = true;
    set_check(Check_automatic, 1);
    set_check(Check_manual, 0);
    boolCheckClick = false;
    changes_made = true;
}

void Form5::Check_manual_Click() {
    if (boolCheckClick) return;
    boolCheckClick = true;
    set_check(Check_manual, 1);
    set_check(Check_automatic, 0);
    boolCheckClick = false;
    changes_made = true;
}

void Form5::Check_Inhalation_Click() {
    temp_inhale = true;
    changes_made = true;
}

void Form5::check_Exhalation_Click() {
    temp_inhale = false;
    changes_made = true;
}

// ---- Done and Cancel ------------------------------------------------------------------------

void Form5::button_done_Click() {
    // A failure leaves the dialog open and the console's patient as it was.
    const QString session = form.session, last = form.patient_last_name,
                  medical_id = form.patient_medical_id, first = form.patient_first_name;
    const double duration = form.duration, max_y = form.max_y, min_y = form.min_y;
    const float thresh = form.thresh;
    const bool inhale = form.inhale, defined = form.patient_defined, gated = form.Gated_Treatment;
    const int16_t breath_holds = form.breath_holds;
    try {
        done_checks_and_writes();
    } catch (const ZelError& e) {
        form.session = session;
        form.patient_last_name = last;
        form.patient_medical_id = medical_id;
        form.patient_first_name = first;
        form.duration = duration;
        form.thresh = thresh;
        form.inhale = inhale;
        form.patient_defined = defined;
        form.max_y = max_y;
        form.min_y = min_y;
        form.Gated_Treatment = gated;
        form.breath_holds = breath_holds;
        Label_message.Caption = e.description;
        Label_message.Visible = true;
    }
}

void Form5::done_checks_and_writes() {
    if (temp1.isEmpty() || temp2.isEmpty() || temp3.isEmpty() || temp4.isEmpty() ||
        (Check_automatic.Value == 0 && Check_manual.Value == 0)) {
        Label_message.Caption = message_text(133);
        return;
    }
    const QString folder = form.data_directory + QLatin1Char('/') + temp2 + QLatin1Char('_') +
                           temp4 + QLatin1Char('_') + temp3 + QLatin1Char('/');
    if (session_mode()) {
        if (!QDir(folder).exists()) {
            Label_message.Caption = message_text(196);
            return;
        }
        if (checkIfSessionExists && checkIfSessionExists(temp1.trimmed())) {
            Label_message.Caption = message_text(140);
            return;
        }
    } else {
        bool found = false;
        medical_id_exists(temp3, found);
        if (found) {
            Label_message.Caption = message_text(197);
            Label_message.Visible = true;
            return;
        }
    }
    form.session = temp1;
    form.patient_last_name = temp2;
    form.patient_medical_id = temp3;
    form.patient_first_name = temp4;
    form.duration = duration_temp;
    form.thresh = threshold_temp;
    form.inhale = temp_inhale;
    form.patient_defined = true;
    if (!session_mode()) widen_chart_for_threshold(form.max_y, form.min_y, form.thresh);
    form.Gated_Treatment = Check_automatic.Value == 1;
    form.breath_holds = 0;
    Cancel_status = false;
    if (!session_mode()) {
        const QString patient_folder =
            form.data_directory + QLatin1Char('/') + form.patient_last_name + QLatin1Char('_') +
            form.patient_first_name + QLatin1Char('_') + form.patient_medical_id;
        if (const int error = make_folder(patient_folder)) {
            log_file_fault(error, "button_done_Click", patient_folder);
            throw ZelError(err_path_file_access, QStringLiteral("button_done_Click"),
                           QStringLiteral("Path/File access error"));
        }
        made_folder = patient_folder;
    }
    unload();
}

void Form5::button_cancel_Click() {
    if (changes_made) {
        form.confirm_cancel = false;
        form.show_Form_ConfirmCancel();
        if (!form.confirm_cancel) return;
    }
    Cancel_status = true;
    unload();
}

void Form5::unload() {
    unloaded = true;
    form.platform.windows.unload(Window::Form5);
}

// ---- Opening from the main window ------------------------------------------------------------

void Form1::show_Form5() {
    form5 = std::make_unique<Form5>(*this);
    form5->get_next_sessionID = [this](const QString& last, const QString& first,
                                       const QString& id) {
        return get_next_sessionID(last, first, id);
    };
    // A new session belongs to the patient being loaded, whose names are still in the holding
    // area: its history, not that of the patient before, holds the duplicates.
    form5->checkIfSessionExists = [this](const QString& id) {
        if (!new_patient_loading) return checkIfSessionExists(id);
        return session_exists(
            sessionfile(temp_patient_last_name, temp_patient_first_name, temp_patient_medical_id),
            id);
    };
    form5->Form_Load();
    show_settings_dialog(Window::Form5);
}

}  // namespace zel
