#pragma once
// A console with a data directory and a patient's settings, and the dialogs opened on it.
#include <QTemporaryDir>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {

struct DialogRig : Rig {
    QTemporaryDir data;
    QStringList sessions_on_file;  // what the session history holds
    QStringList next_id_asked;     // the names get_next_sessionID was asked with

    explicit DialogRig(QChar separator = QLatin1Char('.'), float thresh = 1.2f) {
        // Set by the console's start, as every constant of the design.
        default_settings(form);
        form.duration = 15, form.thresh = thresh;
        fakes.locale.separator = separator;
        form.number_format =
            separator == QLatin1Char(',') ? QStringLiteral("comma") : QStringLiteral("dot");
        form.found_number_format = form.number_format;
        form.data_directory = data.path();
        form.language_file = QStringLiteral("English");
        form.language_name = {QStringLiteral("Deutsch"), QStringLiteral("Svenska")};
        // The holding area of the file last read: a new session takes it, the settings
        // dialogs must not.
        form.temp_patient_last_name = QStringLiteral("Doe"), form.temp_patient_first_name = "Jane";
        form.temp_patient_medical_id = QStringLiteral("MR77");
        form.temp_duration = 20, form.temp_thresh = -0.8f;
        form.temp_trigger = QStringLiteral("False"), form.temp_gating = QStringLiteral("True");
    }
    Form5& open5() {
        form.form5 = std::make_unique<Form5>(form);
        form.form5->get_next_sessionID = [this](const QString& last, const QString& first,
                                                const QString& id) {
            next_id_asked = {last, first, id};
            return QStringLiteral("4");
        };
        form.form5->checkIfSessionExists = [this](const QString& id) {
            return sessions_on_file.contains(id);
        };
        form.form5->Form_Load();
        return *form.form5;
    }
    // Patient Settings or System Settings, from its menu entry.
    void menu(Window window) {
        window == Window::Form12 ? form.Patient_Settings_Click() : form.Control_Panel_Click();
    }
    Form12& open12() { return open(form.form12); }
    Form11& open11() { return open(form.form11); }
    template <class Dialog>
    Dialog& open(std::unique_ptr<Dialog>& slot) {
        slot = std::make_unique<Dialog>(form);
        slot->Form_Load();
        return *slot;
    }
};

// The console's patient: names, session, duration, threshold, trigger, defined, chart,
// gating, breath holds.
inline QString console(const Form1& form) {
    return QStringList{form.patient_last_name, form.patient_first_name, form.patient_medical_id,
                       form.session, QString::number(form.duration),
                       QString::number(form.thresh), QString::number(form.inhale),
                       QString::number(form.patient_defined), QString::number(form.max_y),
                       QString::number(form.min_y), QString::number(form.Gated_Treatment),
                       QString::number(form.breath_holds)}
        .join(QLatin1Char('|'));
}

// Types the text over the field's whole content, the caret at its end.
template <class Dialog>
void type(Dialog& f, TextBox& box, const QString& text) {
    f.type_text(box, text, static_cast<int>(text.size()));
}

// Types the text over the field, then Enter.
template <class Dialog>
void enter(Dialog& f, TextBox& box, const QString& text) {
    type(f, box, text);
    f.key_press(box, 13);
}

}  // namespace zel::test
