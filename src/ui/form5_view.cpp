#include "ui/form5_view.h"

#include <QCheckBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

#include "app/form1.h"
#include "ui/control_widgets.h"

namespace zel {

namespace {
QString css_colour(Rgb c) { return QStringLiteral("rgb(%1,%2,%3)").arg(c.r).arg(c.g).arg(c.b); }
}  // namespace

Form5View::Form5View(Form1& form_, Form5& model_, QWidget* parent)
    : QDialog(parent), form(form_), model(model_) {
    Form5& m = model;
    setModal(true);
    setFixedSize(qRound(m.Width / twips_per_pixel), qRound(m.Height / twips_per_pixel));
    setStyleSheet(QStringLiteral("QDialog{background-color:rgb(224,224,224);}"));

    auto frame = [&](Control& c) {
        auto* box = new QGroupBox(this);
        // The frame's face is the dialog's, so that the labels on it don't stand out as bands.
        box->setStyleSheet(QStringLiteral(
            "QGroupBox{background-color:rgb(224,224,224);border:1px solid rgb(160,160,160);"
            "border-radius:3px;margin-top:16px;}"
            "QGroupBox::title{subcontrol-origin:margin;left:8px;padding:0 3px;}"));
        c.font = Font{QStringLiteral("Liberation Sans"), 9, true};
        bound.emplace_back(&c, box);
        frames.emplace_back(&c, box);
        return box;
    };
    auto label = [&](Control& c, QWidget* in) {
        auto* widget = new QLabel(in);
        widget->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        bound.emplace_back(&c, widget);
    };
    auto field = [&](TextBox& box, QWidget* in, bool numeric) {
        auto* edit = new QLineEdit(in);
        if (numeric) {
            edit->setAlignment(Qt::AlignCenter);
            edit->installEventFilter(this);
        }
        bound.emplace_back(&box, edit);
        fields.emplace_back(&box, edit);
        connect(edit, &QLineEdit::textEdited, this, [this, &box, edit](const QString& text) {
            run("Change", [&] { model.type_text(box, text, edit->cursorPosition()); });
        });
    };
    auto bar = [&](ScrollBar& sb, QWidget* in) {
        auto* widget = new QScrollBar(Qt::Horizontal, in);
        bound.emplace_back(&sb, widget);
        bars.emplace_back(&sb, widget);
        connect(widget, &QScrollBar::valueChanged, this, [this, &sb](int value) {
            if (syncing || value == sb.Value) return;
            run("Scroll_Change", [&] { model.scroll(sb, value); });
        });
    };
    auto tick = [&](Control& c, QWidget* in, bool option) {
        QAbstractButton* button =
            option ? static_cast<QAbstractButton*>(new QRadioButton(in)) : new QCheckBox(in);
        // The model decides which of a pair stands.
        button->setAutoExclusive(false);
        bound.emplace_back(&c, button);
        ticks.emplace_back(&c, button);
        connect(button, &QAbstractButton::clicked, this,
                [this, &c] { run("Click", [&] { model.click(c); }); });
    };
    auto button = [&](Control& c) {
        auto* widget = new QPushButton(this);
        // Enter belongs to the numeric fields; no button is the default.
        widget->setAutoDefault(false);
        widget->setDefault(false);
        c.font = Font{QStringLiteral("Liberation Sans"), 9, false};
        bound.emplace_back(&c, widget);
        connect(widget, &QPushButton::clicked, this,
                [this, &c] { run("Click", [&] { model.click(c); }); });
    };

    // Created in the order of the tab sequence.
    QWidget* patient = frame(m.Frame_Patient_Info);
    label(m.Label_last_name, patient);
    field(m.Text_last_name, patient, false);
    label(m.Label_first_name, patient);
    field(m.Text_first_name, patient, false);
    label(m.Label_medical_ID, patient);
    field(m.Text_medical_id, patient, false);
    QWidget* session = frame(m.Frame_Session);
    label(m.Label_Session_ID, session);
    field(m.Text_session, session, false);
    QWidget* gating = frame(m.Frame_Gating_Options);
    tick(m.Check_automatic, gating, false);
    tick(m.Check_manual, gating, false);
    label(m.Label_gating_warning, gating);
    QWidget* hold = frame(m.Frame_Breath_Hold);
    label(m.Label_duration, hold);
    field(m.BreathHold_Text, hold, true);
    bar(m.BreathHold_Scroll, hold);
    label(m.Label_threshold, hold);
    field(m.Threshold_Text, hold, true);
    bar(m.Threshold_Scroll, hold);
    tick(m.Check_Inhalation, hold, true);
    tick(m.check_Exhalation, hold, true);
    label(m.Label_message, this);
    button(m.button_done);
    button(m.button_cancel);

    sync();
}

void Form5View::setVisible(bool visible) {
    TextBox& first = model.form.new_patient_loading ? model.Text_session : model.Text_last_name;
    QLineEdit* edit = nullptr;
    for (auto& [box, widget] : fields)
        if (box == &first) edit = widget;
    if (visible && edit) edit->setFocus(Qt::OtherFocusReason);
    QDialog::setVisible(visible);
    // Showing hands the focus to the field as a tab would, which selects its text; the caret
    // stays where the model put it instead, so that the suggested session is not overtyped.
    if (visible && edit) {
        edit->deselect();
        edit->setCursorPosition(first.SelStart);
    }
}

void Form5View::run(const char* source, const std::function<void()>& handler) {
    form.run_event(source, handler);
    sync();
}

void Form5View::sync() {
    syncing = true;
    setWindowTitle(model.Caption);
    for (auto& [control, widget] : bound) render_control(*control, *widget);
    for (auto& [control, box] : frames)
        if (box->title() != control->Caption) box->setTitle(control->Caption);
    for (auto& [box, edit] : fields) {
        // A text the dialog itself puts in may be longer than what the operator may type.
        const int limit = box->MaxLength > 0
                              ? std::max(box->MaxLength, static_cast<int>(box->Text.size()))
                              : 32767;
        if (edit->maxLength() != limit) edit->setMaxLength(limit);
        const bool text_changed = edit->text() != box->Text;
        if (text_changed) edit->setText(box->Text);
        const auto synced = synced_caret.find(box);
        const bool caret_moved = synced == synced_caret.end() || synced->second != box->SelStart;
        if ((text_changed || caret_moved) && edit->cursorPosition() != box->SelStart)
            edit->setCursorPosition(box->SelStart);
        synced_caret[box] = box->SelStart;
        const QString style = QStringLiteral(
                                  "QLineEdit{color:%1;background-color:%2;}QLineEdit:disabled{"
                                  "color:rgb(128,128,128);}")
                                  .arg(css_colour(box->ForeColor), css_colour(box->BackColor));
        if (edit->styleSheet() != style) edit->setStyleSheet(style);
    }
    for (auto& [sb, widget] : bars) {
        widget->setRange(sb->Min, sb->Max);
        widget->setSingleStep(sb->SmallChange);
        widget->setPageStep(sb->LargeChange);
        if (widget->value() != sb->Value) widget->setValue(sb->Value);
    }
    for (auto& [control, button] : ticks)
        if (button->isChecked() != (control->Value != 0)) button->setChecked(control->Value != 0);
    syncing = false;
    if (model.unloaded && isVisible()) done(model.Cancel_status ? Rejected : Accepted);
}

bool Form5View::eventFilter(QObject* watched, QEvent* event) {
    TextBox* box = nullptr;
    for (auto& [b, edit] : fields)
        if (edit == watched) box = b;
    if (!box) return QDialog::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            run("KeyPress", [&] { model.key_press(*box, 13); });
            return true;
        }
        if (!key->text().isEmpty())
            run("KeyPress", [&] { model.key_press(*box, key->text().at(0).unicode()); });
    } else if (event->type() == QEvent::FocusOut) {
        // Another program's window taking the focus is not leaving the field.
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            run("LostFocus", [&] { model.lost_focus(*box); });
    }
    return QDialog::eventFilter(watched, event);
}

void Form5View::reject() {
    if (model.button_cancel.Enabled) run("Click", [&] { model.click(model.button_cancel); });
}

}  // namespace zel
