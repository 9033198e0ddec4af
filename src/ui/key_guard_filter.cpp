#include "ui/key_guard_filter.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

#include "app/form1.h"
#include "breathhold/key_guard.h"

namespace zel {

namespace {
// The X11 key symbol of the right Windows key; any other Windows key is taken as the left.
constexpr quint32 xk_super_r = 0xffec;

uint32_t virtual_key(const QKeyEvent& key) {
    switch (key.key()) {
        case Qt::Key_Tab:
        case Qt::Key_Backtab: return vk_tab;
        case Qt::Key_Escape: return vk_escape;
        case Qt::Key_Meta:
        case Qt::Key_Super_L:
        case Qt::Key_Super_R:
            return key.nativeVirtualKey() == xk_super_r || key.key() == Qt::Key_Super_R
                       ? vk_right_windows
                       : vk_left_windows;
        default: return 0;
    }
}

bool typing_into_text(QWidget* focus) {
    if (!focus) return false;
    if (qobject_cast<QLineEdit*>(focus) || qobject_cast<QTextEdit*>(focus) ||
        qobject_cast<QPlainTextEdit*>(focus) || qobject_cast<QAbstractSpinBox*>(focus))
        return true;
    auto* combo = qobject_cast<QComboBox*>(focus);
    return combo && combo->isEditable();
}
}  // namespace

KeyGuardFilter::KeyGuardFilter(Form1& form_) : form(form_) {}

bool KeyGuardFilter::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::KeyRelease &&
        type != QEvent::ShortcutOverride)
        return QObject::eventFilter(watched, event);
    // A key event passes the filter at each widget it travels through. What the guard acts on
    // it takes at the first, so it acts once; what it lets pass goes on as it would.
    if (!watched->isWidgetType()) return QObject::eventFilter(watched, event);
    QWidget* receiver = static_cast<QWidget*>(watched);
    auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers mods = key->modifiers();
    if (swallow_key(virtual_key(*key), mods & Qt::AltModifier, mods & Qt::ControlModifier))
        return true;
    if (key->key() == Qt::Key_Space && !typing_into_text(receiver)) {
        // A held spacebar is one press: the hold key must not toggle the balloon on repeat.
        if (type == QEvent::KeyPress && !key->isAutoRepeat())
            form.run_event("Form_KeyDown", [this, key] {
                form.Form_KeyDown(32, static_cast<int>(key->modifiers() >> 25));
            });
        // The spacebar belongs to the cycle: it never presses a button of a dialog.
        return true;
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace zel
