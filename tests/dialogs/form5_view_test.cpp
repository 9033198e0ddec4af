// The new patient dialog's window: it hands the operator's actions to the model and shows the
// model's state; the rules are the model's.
#include "ui/form5_view.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "fakes/rig.h"
#include "language/messages.h"
#include "platform/qt_chart_surface.h"
#include "ui/form1_view.h"
#include "ui/qt_windows.h"

namespace zel::test {
namespace {

struct ViewRig : Rig {
    QTemporaryDir data;
    std::unique_ptr<Form5View> view;
    explicit ViewRig(bool session_mode) {
        form.data_directory = data.path();
        // Set by the console's start, as every constant of the design.
        form.patient_parameter_filestamp = QStringLiteral("ZEL Patient Parameter File");
        form.number_format = QStringLiteral("dot");
        form.duration = 15;
        form.thresh = 1.2f;
        form.new_patient_loading = session_mode;
        form.temp_patient_last_name = QStringLiteral("Doe");
        form.temp_patient_first_name = QStringLiteral("Jane");
        form.temp_patient_medical_id = QStringLiteral("MR77");
        form.temp_duration = 20;
        form.temp_thresh = -0.8f;
        form.temp_trigger = QStringLiteral("False");
        form.temp_gating = QStringLiteral("True");
        form.form5 = std::make_unique<Form5>(form);
        form.form5->get_next_sessionID = [](const QString&, const QString&, const QString&) {
            return QStringLiteral("4");
        };
        form.form5->checkIfSessionExists = [](const QString&) { return false; };
        form.form5->Form_Load();
        view = std::make_unique<Form5View>(form, *form.form5, nullptr);
        view->show();
    }
    template <class W>
    W* widget(const QString& text) {
        for (W* w : view->findChildren<W*>())
            if (w->text() == text) return w;
        return nullptr;
    }
};

TEST(Form5View, shows_the_captions_and_passes_a_click_to_the_gating_pair) {
    ViewRig rig(false);
    EXPECT_EQ(rig.view->windowTitle(), message_text(281));
    ASSERT_NE(rig.widget<QPushButton>(message_text(266)), nullptr);
    auto* automatic = rig.widget<QCheckBox>(message_text(268));
    auto* manual = rig.widget<QCheckBox>(message_text(269));
    ASSERT_TRUE(automatic && manual);
    QTest::mouseClick(manual, Qt::LeftButton);
    QTest::mouseClick(automatic, Qt::LeftButton);
    EXPECT_EQ(rig.form.form5->Check_automatic.Value, 1);
    EXPECT_TRUE(automatic->isChecked());
    EXPECT_FALSE(manual->isChecked());
}

TEST(Form5View, enter_in_a_numeric_field_tests_it_and_closes_nothing) {
    ViewRig rig(false);
    QLineEdit* hold = rig.widget<QLineEdit>(QStringLiteral("15"));
    ASSERT_NE(hold, nullptr);
    hold->setFocus();
    hold->selectAll();
    QTest::keyClicks(hold, QStringLiteral("98.6"));
    EXPECT_FALSE(rig.form.form5->button_done.Enabled);
    QTest::keyClick(hold, Qt::Key_Return);
    EXPECT_EQ(rig.form.form5->duration_temp, 99);
    EXPECT_EQ(hold->text(), QStringLiteral("99"));
    EXPECT_TRUE(rig.view->isVisible());
    EXPECT_TRUE(rig.widget<QPushButton>(message_text(266))->isEnabled());
}

TEST(Form5View, a_selection_made_with_the_keyboard_is_typed_over) {
    ViewRig rig(false);
    QLineEdit* threshold = rig.widget<QLineEdit>(QStringLiteral("1.2"));
    ASSERT_NE(threshold, nullptr);
    threshold->setFocus();
    threshold->setCursorPosition(0);
    // Ctrl+A is a key the model sees (it disables Done); the selection must survive it.
    QTest::keyClick(threshold, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(threshold, QStringLiteral("1.5"));
    QTest::keyClick(threshold, Qt::Key_Return);
    EXPECT_EQ(threshold->text(), QStringLiteral("1.5"));
    EXPECT_FLOAT_EQ(rig.form.form5->threshold_temp, 1.5f);
}

TEST(Form5View, the_console_shows_it_modally_until_cancel_closes_it) {
    Rig rig;
    QTemporaryDir data;
    rig.form.data_directory = data.path();
    rig.form.number_format = QStringLiteral("dot");
    rig.form.form5 = std::make_unique<Form5>(rig.form);
    rig.form.form5->Form_Load();
    QtChartSurface surface(870, 499);
    Form1View main_window(rig.form, surface);
    QtWindows windows(rig.form, main_window);
    QTimer::singleShot(0, [] {
        auto* dialog = dynamic_cast<Form5View*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        for (QPushButton* button : dialog->findChildren<QPushButton*>())
            if (button->text() == message_text(114)) button->click();
    });
    windows.show_modal(Window::Form5);
    EXPECT_TRUE(rig.form.form5->Cancel_status);
}

TEST(Form5View, session_mode_puts_the_caret_behind_the_suggested_session) {
    ViewRig rig(true);
    QLineEdit* session = rig.widget<QLineEdit>(QStringLiteral("4"));
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(rig.view->focusWidget(), session);
    EXPECT_FALSE(session->hasSelectedText());
    EXPECT_EQ(session->cursorPosition(), 1);
}

// Every caption fits its control; with ZEL_SCREENSHOT_DIR set, the two modes are saved as
// pictures for a look.
TEST(Form5View, every_caption_fits_in_both_modes) {
    for (bool session_mode : {false, true}) {
        ViewRig rig(session_mode);
        Form5& f = *rig.form.form5;
        if (!session_mode) {
            f.type_text(f.Text_last_name, QStringLiteral("WWWWWWWWWWWWWWWWWWWW"), 20);
            f.type_text(f.Text_first_name, QStringLiteral("Margaret"), 8);
            f.type_text(f.Text_medical_id, QStringLiteral("MR-2026-0042"), 12);
            f.click(f.Check_automatic);
            f.scroll(f.Threshold_Scroll, -15);
            f.type_text(f.BreathHold_Text, QStringLiteral("100"), 3);
            f.key_press(f.BreathHold_Text, 13);  // refused: the message line shows
            rig.view->sync();
        }
        for (QLabel* label : rig.view->findChildren<QLabel*>())
            EXPECT_LE(label->sizeHint().width(), label->width()) << label->text().toStdString();
        for (QAbstractButton* button : rig.view->findChildren<QAbstractButton*>())
            EXPECT_LE(button->sizeHint().width(), button->width()) << button->text().toStdString();
        for (QGroupBox* box : rig.view->findChildren<QGroupBox*>())
            EXPECT_LE(box->minimumSizeHint().width(), box->width()) << box->title().toStdString();
        for (QLineEdit* edit : rig.view->findChildren<QLineEdit*>())
            EXPECT_LE(edit->fontMetrics().horizontalAdvance(edit->text()) + 8, edit->width())
                << edit->text().toStdString();
        const QString dir = qEnvironmentVariable("ZEL_SCREENSHOT_DIR");
        if (!dir.isEmpty())
            rig.view->grab().save(dir + (session_mode ? "/form5-session.png" : "/form5-new.png"));
    }
}

}  // namespace
}  // namespace zel::test
