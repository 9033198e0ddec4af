// The views forward events to the models and show their captions; the rules are the models'.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <cstring>

#include "fakes/rig.h"
#include "language/messages.h"
#include "platform/qt_chart_surface.h"
#include "ui/form1_view.h"
#include "ui/images.h"
#include "ui/key_guard_filter.h"

namespace zel::test {
namespace {

// A dialog of the program with a button and a text field, as the settings dialogs have.
struct OtherWindow {
    QDialog dialog;
    QPushButton* button = new QPushButton(QStringLiteral("Done"), &dialog);
    QLineEdit* field = new QLineEdit(&dialog);
    int clicks = 0;
    OtherWindow() {
        auto* layout = new QVBoxLayout(&dialog);
        layout->addWidget(button);
        layout->addWidget(field);
        QObject::connect(button, &QPushButton::clicked, [this] { ++clicks; });
        dialog.show();
    }
};

TEST(KeyGuard, brings_the_spacebar_to_the_console_from_another_window) {
    Rig rig;
    rig.form.b_state = 1;
    KeyGuardFilter guard(rig.form);
    qApp->installEventFilter(&guard);
    OtherWindow other;
    other.button->setFocus();
    QTest::keyClick(other.button, Qt::Key_Space);
    // No patient: the console refuses with its message, and the dialog's button is not pressed.
    EXPECT_EQ(rig.form.Label2.Caption, message_text(131));
    EXPECT_EQ(other.clicks, 0);
    // Typing into a text field is typing: the space stays there.
    rig.form.Label2.Caption.clear();
    other.field->setFocus();
    QTest::keyClick(other.field, Qt::Key_Space);
    EXPECT_EQ(other.field->text(), QStringLiteral(" "));
    EXPECT_TRUE(rig.form.Label2.Caption.isEmpty());
    qApp->removeEventFilter(&guard);
}

// A text field that counts the key events it is given.
class CountingField final : public QLineEdit {
public:
    int events = 0;

protected:
    void keyPressEvent(QKeyEvent* e) override {
        ++events;
        QLineEdit::keyPressEvent(e);
    }
    void keyReleaseEvent(QKeyEvent* e) override {
        ++events;
        QLineEdit::keyReleaseEvent(e);
    }
};

TEST(KeyGuard, swallows_alt_tab_alt_esc_and_ctrl_esc_on_their_way_down_and_up) {
    Rig rig;
    KeyGuardFilter guard(rig.form);
    qApp->installEventFilter(&guard);
    QDialog dialog;
    auto* field = new CountingField;
    (new QVBoxLayout(&dialog))->addWidget(field);
    dialog.show();
    field->setFocus();
    struct Case { Qt::Key key; Qt::KeyboardModifiers mods; int reaching; };
    const Case cases[] = {
        {Qt::Key_Tab, Qt::AltModifier, 0},        {Qt::Key_Escape, Qt::AltModifier, 0},
        {Qt::Key_Escape, Qt::ControlModifier, 0}, {Qt::Key_A, Qt::NoModifier, 2},
        {Qt::Key_Tab, Qt::NoModifier, 2},
    };
    for (const auto& c : cases) {
        field->events = 0;
        for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, c.key, c.mods);
            QApplication::sendEvent(field, &event);
        }
        EXPECT_EQ(field->events, c.reaching) << c.key << " " << int(c.mods);
    }
    qApp->removeEventFilter(&guard);
}

TEST(Form1View, shows_the_captions_and_closing_the_frame_is_exit_when_exit_may_run) {
    init_images();
    Rig rig;
    QtChartSurface surface(870, 499);
    rig.form.Label2.Caption = QStringLiteral("Press spacebar to activate.");
    rig.form.countdown2.Caption = QStringLiteral("7");
    Form1View view(rig.form, surface);
    view.sync();
    QStringList texts;
    for (const QLabel* label : view.findChildren<QLabel*>()) texts.append(label->text());
    EXPECT_TRUE(texts.contains(QStringLiteral("Press spacebar to activate.")));
    EXPECT_TRUE(texts.contains(QStringLiteral("7")));
    EXPECT_EQ(view.size(), QSize(1024, 768));
    // During a hold the Exit entry is off, and so is the frame's close box.
    rig.form.patient_defined = true;
    rig.form.disable_menus();
    view.show();
    view.close();
    EXPECT_TRUE(rig.ended.isEmpty());
    EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("ask")).isEmpty());
    EXPECT_TRUE(view.isVisible());
    rig.form.patient_defined = false;
    rig.form.enable_menus();
    view.close();
    EXPECT_EQ(rig.ended, QStringList{QStringLiteral("0")});
}

// Each entry of the main window's menus reaches its own handler, seen by what only that
// handler opens or does.
TEST(Form1View, each_menu_entry_runs_its_own_handler) {
    init_images();
    struct Case {
        Control Form1::*entry;
        const char* seen;
    };
    const Case cases[] = {
        {&Form1::create_new_patient, "show Form5"},
        {&Form1::load_existing_patient, "file chooser"},
        {&Form1::save_settings_as_default, "ask"},
        {&Form1::zel_exit, "ended"},
        {&Form1::Control_Panel, "show Form11"},
        {&Form1::Patient_Settings, "show Form12"},
        {&Form1::mnuSessionHistory, "show DialogSessionHistory"},
        {&Form1::mnuVisualizePatientCurves, "show modeless PatientCurves"},
        {&Form1::About, "show Form10"},
        {&Form1::Gating_Diagnostics, "show Form_Gating"},
    };
    for (const Case& c : cases) {
        Rig rig;
        rig.form.b_state = 1;
        int k = 0;
        for (const Case& each : cases)
            (rig.form.*each.entry).Caption = QStringLiteral("entry %1").arg(k++);
        rig.form.enable_menus();
        (rig.form.*c.entry).Enabled = true;
        QtChartSurface surface(870, 499);
        Form1View view(rig.form, surface);
        view.sync();
        QAction* action = nullptr;
        for (QAction* a : view.findChildren<QAction*>())
            if (a->text() == (rig.form.*c.entry).Caption) action = a;
        ASSERT_NE(action, nullptr) << c.seen;
        action->trigger();
        QStringList seen = rig.fakes.windows.log;
        if (!rig.fakes.dialogs.opened_in.isEmpty()) seen.append(QStringLiteral("file chooser"));
        if (!rig.ended.isEmpty()) seen.append(QStringLiteral("ended"));
        EXPECT_FALSE(seen.filter(QString::fromLatin1(c.seen)).isEmpty())
            << c.seen << ": " << seen.join(QStringLiteral(", ")).toStdString();
        for (const Case& other : cases)
            if (&other != &c && std::strncmp(other.seen, "show", 4) == 0) {
                EXPECT_FALSE(seen.contains(QString::fromLatin1(other.seen)))
                    << c.seen << " also did " << other.seen;
            }
    }
}

}  // namespace
}  // namespace zel::test
