// The views forward events to the models and show their captions; the rules are the models'.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QImage>
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

TEST(Images, the_resource_holds_every_picture_at_its_size) {
    init_images();
    struct Case { const char* name; int width, height; };
    const Case cases[] = {
        {"gating_ready", 45, 45}, {"gating_closed", 45, 45}, {"gating_fault", 45, 45},
        {"record", 57, 57},       {"pause", 57, 57},         {"logo", 96, 96},
        {"banner", 480, 270},     {"check_pass", 32, 32},    {"check_fail", 32, 32},
        {"connected", 48, 32},    {"not_connected", 48, 32},
    };
    for (const auto& c : cases)
        EXPECT_EQ(QImage(QStringLiteral(":/images/") + QLatin1String(c.name)).size(),
                  QSize(c.width, c.height)) << c.name;
}

// A widget of a dialog of the program that counts the key events it is given.
template <class Widget>
class Counting final : public Widget {
public:
    int events = 0;

protected:
    void keyPressEvent(QKeyEvent* e) override {
        ++events;
        Widget::keyPressEvent(e);
    }
    void keyReleaseEvent(QKeyEvent* e) override {
        ++events;
        Widget::keyReleaseEvent(e);
    }
};

TEST(KeyGuard, takes_the_spacebar_to_the_console_and_swallows_the_task_switch_keys) {
    Rig rig;
    rig.form.b_state = 1;
    KeyGuardFilter guard(rig.form);
    qApp->installEventFilter(&guard);
    QDialog dialog;
    auto* button = new Counting<QPushButton>;
    auto* field = new Counting<QLineEdit>;
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(button);
    layout->addWidget(field);
    // The button takes no focus, so that a plain Tab stays in the field.
    button->setFocusPolicy(Qt::NoFocus);
    dialog.show();
    field->setFocus();
    struct Case { bool on_button; Qt::Key key; Qt::KeyboardModifiers mods; int reaching; };
    const Case cases[] = {
        // No patient: the console refuses with its message, and the button is not pressed.
        {true, Qt::Key_Space, Qt::NoModifier, 0},
        // Typing into a text field is typing: the space stays there.
        {false, Qt::Key_Space, Qt::NoModifier, 2},
        {false, Qt::Key_Tab, Qt::AltModifier, 0},        {false, Qt::Key_Escape, Qt::AltModifier, 0},
        {false, Qt::Key_Escape, Qt::ControlModifier, 0}, {false, Qt::Key_A, Qt::NoModifier, 2},
        {false, Qt::Key_Tab, Qt::NoModifier, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.on_button << " " << c.key << " " << int(c.mods));
        QWidget* target = c.on_button ? static_cast<QWidget*>(button) : field;
        button->events = field->events = 0;
        field->clear();
        rig.form.Label2.Caption.clear();
        for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, c.key, c.mods, c.key == Qt::Key_Space ? QStringLiteral(" ") : QString());
            QApplication::sendEvent(target, &event);
        }
        EXPECT_EQ(c.on_button ? button->events : field->events, c.reaching);
        const bool space = c.key == Qt::Key_Space;
        EXPECT_EQ(rig.form.Label2.Caption, space && c.on_button ? message_text(131) : QString());
        EXPECT_EQ(field->text(), space && !c.on_button ? QStringLiteral(" ") : QString());
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
