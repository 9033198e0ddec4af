#include "ui/entry_dialog_view.h"

#include <QCheckBox>
#include <QComboBox>
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

EntryDialogView::EntryDialogView(Form1& form_, QWidget* parent) : QDialog(parent), form(form_) {
    setModal(true);
    setStyleSheet(QStringLiteral("QDialog{background-color:rgb(224,224,224);}"));
}

QGroupBox* EntryDialogView::frame(Control& c) {
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
}

QLabel* EntryDialogView::label(Control& c, QWidget* in, bool wrap) {
    auto* widget = new QLabel(in);
    widget->setAlignment(Qt::AlignLeft | (wrap ? Qt::AlignTop : Qt::AlignVCenter));
    widget->setWordWrap(wrap);
    bound.emplace_back(&c, widget);
    return widget;
}

QLineEdit* EntryDialogView::field(TextBox& box, QWidget* in, bool numeric) {
    auto* edit = new QLineEdit(in);
    if (numeric) {
        edit->setAlignment(Qt::AlignCenter);
        edit->installEventFilter(this);
    }
    edit->setReadOnly(box.Locked);
    bound.emplace_back(&box, edit);
    fields.emplace_back(&box, edit);
    connect(edit, &QLineEdit::textEdited, this, [this, &box, edit](const QString& text) {
        run("Change", [&] { type_text(box, text, edit->cursorPosition()); });
    });
    return edit;
}

QScrollBar* EntryDialogView::bar(ScrollBar& sb, QWidget* in) {
    auto* widget = new QScrollBar(Qt::Horizontal, in);
    bound.emplace_back(&sb, widget);
    bars.emplace_back(&sb, widget);
    connect(widget, &QScrollBar::valueChanged, this, [this, &sb](int value) {
        if (syncing || value == sb.Value) return;
        run("Scroll_Change", [&] { scroll(sb, value); });
    });
    return widget;
}

QAbstractButton* EntryDialogView::tick(Control& c, QWidget* in, bool option) {
    QAbstractButton* button =
        option ? static_cast<QAbstractButton*>(new QRadioButton(in)) : new QCheckBox(in);
    // The model decides which of a group stands.
    button->setAutoExclusive(false);
    bound.emplace_back(&c, button);
    ticks.emplace_back(&c, button);
    connect(button, &QAbstractButton::clicked, this,
            [this, &c] { run("Click", [&] { click(c); }); });
    return button;
}

QAbstractButton* EntryDialogView::button(Control& c, QWidget* in) {
    auto* widget = new QPushButton(in ? in : this);
    // Enter belongs to the numeric fields; no button is the default.
    widget->setAutoDefault(false);
    widget->setDefault(false);
    c.font = Font{QStringLiteral("Liberation Sans"), 9, false};
    bound.emplace_back(&c, widget);
    connect(widget, &QPushButton::clicked, this, [this, &c] { run("Click", [&] { click(c); }); });
    return widget;
}

QComboBox* EntryDialogView::list(ComboBox& combo, QWidget* in) {
    auto* widget = new QComboBox(in);
    bound.emplace_back(&combo, widget);
    lists.emplace_back(&combo, widget);
    connect(widget, &QComboBox::activated, this, [this, &combo](int index) {
        if (syncing) return;
        run("Click", [&] { choose(combo, index); });
    });
    return widget;
}

QLineEdit* EntryDialogView::line_edit_of(const TextBox& box) const {
    for (const auto& [b, edit] : fields)
        if (b == &box) return edit;
    return nullptr;
}

void EntryDialogView::run(const char* source, const std::function<void()>& handler) {
    form.run_event(source, handler);
    sync();
}

void EntryDialogView::sync() {
    syncing = true;
    setWindowTitle(caption());
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
    for (auto& [combo, widget] : lists) {
        QStringList shown;
        for (int k = 0; k < widget->count(); ++k) shown.append(widget->itemText(k));
        if (shown != combo->items) {
            widget->clear();
            widget->addItems(combo->items);
        }
        if (widget->currentIndex() != combo->ListIndex) widget->setCurrentIndex(combo->ListIndex);
    }
    syncing = false;
    if (model_unloaded() && isVisible()) done(closing_result());
}

bool EntryDialogView::eventFilter(QObject* watched, QEvent* event) {
    TextBox* box = nullptr;
    for (auto& [b, edit] : fields)
        if (edit == watched) box = b;
    if (!box) return QDialog::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            run("KeyPress", [&] { key_press(*box, 13); });
            return true;
        }
        if (!key->text().isEmpty())
            run("KeyPress", [&] { key_press(*box, key->text().at(0).unicode()); });
    } else if (event->type() == QEvent::FocusOut) {
        // Another program's window taking the focus is not leaving the field.
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            run("LostFocus", [&] { lost_focus(*box); });
    }
    return QDialog::eventFilter(watched, event);
}

void EntryDialogView::setVisible(bool visible) {
    if (visible && opening_focus) opening_focus->setFocus(Qt::OtherFocusReason);
    QDialog::setVisible(visible);
}

bool EntryDialogView::event(QEvent* event) {
    // Not once closed: a late activation may reach a closed window after the next opening
    // of the dialog has replaced the model that the closed one showed.
    if (event->type() == QEvent::WindowActivate && !syncing && isVisible()) sync();
    return QDialog::event(event);
}

}  // namespace zel
