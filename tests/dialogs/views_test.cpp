// The dialogs' windows: they hand the operator's actions to the models and show the models'
// state; the rules are the models'.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <functional>

#include "dialog_rig.h"
#include "platform/qt_chart_surface.h"
#include "ui/form10_view.h"
#include "ui/form11_view.h"
#include "ui/form12_view.h"
#include "ui/form1_view.h"
#include "ui/form5_view.h"
#include "ui/form_gating_view.h"
#include "ui/key_guard_filter.h"
#include "ui/qt_windows.h"

namespace zel::test {
namespace {

// The widget of that text; a failure and a stand-in when there is none.
template <class W>
W* find(QWidget* in, const QString& text) {
    for (W* w : in->findChildren<W*>())
        if (w->text() == text) return w;
    ADD_FAILURE() << "nothing shows " << text.toStdString();
    return new W;  // NOLINT: left to the failed test
}

// Every caption and entry fits its control, and each label named shows; with
// ZEL_SCREENSHOT_DIR set, the window is saved as a picture for a look.
void expect_captions_fit(QWidget& view, const char* picture, std::initializer_list<int> labels) {
    for (const int n : labels) find<QLabel>(&view, message_text(n));
    for (QLabel* label : view.findChildren<QLabel*>()) {
        if (label->wordWrap())
            EXPECT_LE(label->heightForWidth(label->width()), label->height())
                << label->text().toStdString();
        else
            EXPECT_LE(label->sizeHint().width(), label->width()) << label->text().toStdString();
    }
    for (QAbstractButton* button : view.findChildren<QAbstractButton*>())
        EXPECT_LE(button->sizeHint().width(), button->width()) << button->text().toStdString();
    for (QGroupBox* box : view.findChildren<QGroupBox*>())
        EXPECT_LE(box->minimumSizeHint().width(), box->width()) << box->title().toStdString();
    for (QLineEdit* edit : view.findChildren<QLineEdit*>())
        EXPECT_LE(edit->fontMetrics().horizontalAdvance(edit->text()) + 8, edit->width())
            << edit->text().toStdString();
    const QString dir = qEnvironmentVariable("ZEL_SCREENSHOT_DIR");
    if (!dir.isEmpty()) view.grab().save(dir + QLatin1Char('/') + picture);
}

// The window of a dialog opened on the rig, shown.
std::unique_ptr<EntryDialogView> shown_view(DialogRig& rig, Window window) {
    Form1& c = rig.form;
    std::unique_ptr<EntryDialogView> view;
    if (window == Window::Form5) view = std::make_unique<Form5View>(c, *c.form5, nullptr);
    else if (window == Window::Form12) view = std::make_unique<Form12View>(c, *c.form12, nullptr);
    else view = std::make_unique<Form11View>(c, *c.form11, nullptr);
    view->show();
    return view;
}

TEST(Form5View, passes_a_click_to_the_gating_pair_and_enter_tests_a_field_closing_nothing) {
    DialogRig rig;
    Form5& f = rig.open5();
    const auto view = shown_view(rig, Window::Form5);
    EXPECT_EQ(view->windowTitle(), message_text(281));
    auto* automatic = find<QCheckBox>(view.get(), message_text(268));
    auto* manual = find<QCheckBox>(view.get(), message_text(269));
    QTest::mouseClick(manual, Qt::LeftButton);
    QTest::mouseClick(automatic, Qt::LeftButton);
    EXPECT_TRUE(f.Check_automatic.Value == 1 && automatic->isChecked() && !manual->isChecked());
    QLineEdit* hold = find<QLineEdit>(view.get(), QStringLiteral("15"));
    hold->setFocus();
    hold->selectAll();
    QTest::keyClicks(hold, QStringLiteral("98.6"));
    EXPECT_FALSE(f.button_done.Enabled);
    QTest::keyClick(hold, Qt::Key_Return);
    EXPECT_EQ(f.duration_temp, 99);
    EXPECT_TRUE(hold->text() == "99" && view->isVisible());
    EXPECT_TRUE(find<QPushButton>(view.get(), message_text(266))->isEnabled());

    // Ctrl+A is a key the model sees (it disables Done); the selection must survive it.
    QLineEdit* threshold = find<QLineEdit>(view.get(), QStringLiteral("1.2"));
    threshold->setFocus();
    threshold->setCursorPosition(0);
    QTest::keyClick(threshold, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(threshold, QStringLiteral("1.5"));
    QTest::keyClick(threshold, Qt::Key_Return);
    EXPECT_TRUE(threshold->text() == "1.5" && f.threshold_temp == 1.5f);
}

// In session mode the caret stands behind the suggested session, so that it is not overtyped.
TEST(Form5View, every_caption_fits_in_both_modes_and_the_session_keeps_its_caret) {
    for (const bool session_mode : {false, true}) {
        SCOPED_TRACE(session_mode);
        DialogRig rig;
        rig.form.new_patient_loading = session_mode;
        Form5& f = rig.open5();
        if (!session_mode) {
            f.type_text(f.Text_last_name, QStringLiteral("WWWWWWWWWWWWWWWWWWWW"), 20);
            f.type_text(f.Text_first_name, QStringLiteral("Margaret"), 8);
            f.type_text(f.Text_medical_id, QStringLiteral("MR-2026-0042"), 12);
            f.click(f.Check_automatic);
            f.scroll(f.Threshold_Scroll, -15);
            enter(f, f.BreathHold_Text, QStringLiteral("100"));  // refused: the message shows
        }
        const auto view = shown_view(rig, Window::Form5);
        expect_captions_fit(*view, session_mode ? "form5-session.png" : "form5-new.png",
                            {115, 282, 117, 201, 283, 159, 158});
        if (!session_mode) continue;
        QLineEdit* session = find<QLineEdit>(view.get(), QStringLiteral("4"));
        EXPECT_EQ(view->focusWidget(), session);
        EXPECT_FALSE(session->hasSelectedText());
        EXPECT_EQ(session->cursorPosition(), 1);
    }
}

TEST(SettingsViews, show_their_captions_and_pass_a_trigger_and_a_language_to_the_model) {
    DialogRig rig;
    rig.form.Gated_Treatment = true;
    Form12& f = rig.open12();
    const auto view = shown_view(rig, Window::Form12);
    EXPECT_EQ(view->windowTitle(), message_text(281));
    auto* save = find<QPushButton>(view.get(), message_text(266));
    EXPECT_FALSE(save->isEnabled());
    QTest::mouseClick(find<QRadioButton>(view.get(), message_text(237)), Qt::LeftButton);
    EXPECT_EQ(f.Exhalation_button.Value, 1);
    EXPECT_FALSE(find<QRadioButton>(view.get(), message_text(236))->isChecked());
    EXPECT_TRUE(save->isEnabled());
    // Refused entries: both warnings and the standing one fit.
    enter(f, f.BreathHold_Text, QStringLiteral("100"));
    enter(f, f.Threshold_Text, QStringLiteral("abc"));
    view->sync();
    expect_captions_fit(*view, "form12.png", {281, 130, 159, 158, 185, 186});

    Form11& g = rig.open11();
    const auto view11 = shown_view(rig, Window::Form11);
    EXPECT_EQ(view11->windowTitle(), message_text(315));
    auto* combo = view11->findChild<QComboBox*>();
    ASSERT_NE(combo, nullptr);
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    EXPECT_TRUE(g.LangCombo.ListIndex == 1 && g.languageChanged);
    EXPECT_TRUE(find<QPushButton>(view11.get(), message_text(113))->isEnabled());
    EXPECT_TRUE(find<QLineEdit>(view11.get(), rig.data.path())->isReadOnly());
    enter(g, g.Y_Range_Text, QStringLiteral("0.5"));
    view11->sync();
    expect_captions_fit(*view11, "form11.png", {315, 240, 301, 189});
}

TEST(DialogViews, the_console_shows_them_modally_until_cancel_closes_them) {
    DialogRig rig;
    QtChartSurface surface(870, 499);
    Form1View main_window(rig.form, surface);
    QtWindows windows(rig.form, main_window);
    for (const Window window : {Window::Form5, Window::Form12, Window::Form11}) {
        SCOPED_TRACE(static_cast<int>(window));
        QTimer::singleShot(0, [] {
            const QPointer<QWidget> dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            find<QPushButton>(dialog, message_text(114))->click();
            if (dialog && dialog->isVisible()) dialog->close();  // no Cancel: fail, don't hang
        });
        const bool* unloaded = window == Window::Form5    ? &rig.open5().unloaded
                               : window == Window::Form12 ? &rig.open12().unloaded
                                                          : &rig.open11().unloaded;
        windows.show_modal(window);
        EXPECT_TRUE(*unloaded);
    }
    EXPECT_TRUE(rig.form.form5->Cancel_status && rig.form.patient_settings_cancel);
}

// Patient Settings or System Settings opened from its menu entry, with its real window shown
// by what `during` gives the console's show: `inside` runs on it, then Cancel closes it.
void from_menu(DialogRig& rig, Window window, const std::function<void(QWidget&)>& inside) {
    rig.form.patient_defined = true, rig.form.b_state = 1;
    rig.fakes.windows.during(window, [&] {
        const auto view = shown_view(rig, window);
        ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
        inside(*view);
        QTest::mouseClick(find<QPushButton>(view.get(), message_text(114)), Qt::LeftButton);
    });
    rig.menu(window);
}

// The operator must always be able to stop a hold, and never arm one behind these dialogs,
// whose Save would alter it. The keys go to the focused widget of the shown window, through the
// console's key guard, as the operator's would.
TEST(SettingsViews, the_spacebar_inside_arms_nothing_and_still_stops_a_hold) {
    for (const Window window : {Window::Form12, Window::Form11}) {
        SCOPED_TRACE(static_cast<int>(window));
        DialogRig rig;
        rig.fakes.serial.set_PortOpen(true);
        KeyGuardFilter guard(rig.form);
        qApp->installEventFilter(&guard);
        QByteArray in_standby, in_hold;
        from_menu(rig, window, [&](QWidget& view) {
            // An option button, as the operator's click on a trigger direction leaves it.
            auto* option = view.findChildren<QRadioButton*>().value(0);
            ASSERT_NE(option, nullptr);
            option->setFocus();
            QTest::keyClick(option, Qt::Key_Space);
            in_standby = rig.fakes.serial.sent();
            rig.form.b_state = 4;
            QTest::keyClick(option, Qt::Key_Space);
            in_hold = rig.fakes.serial.sent().mid(in_standby.size());
            rig.form.b_state = 1;
        });
        qApp->removeEventFilter(&guard);
        EXPECT_FALSE(in_standby.contains('A') || in_standby.contains('B'))
            << in_standby.toStdString();
        EXPECT_EQ(in_hold, QByteArray("X"));
    }
}

// Opened untouched: Save stays off, and Cancel closes without asking whether to discard.
TEST(SettingsViews, open_with_nothing_edited_until_the_operator_edits) {
    for (const Window window : {Window::Form12, Window::Form11}) {
        SCOPED_TRACE(static_cast<int>(window));
        DialogRig rig;
        bool save_enabled = true;
        from_menu(rig, window, [&](QWidget& view) {
            EXPECT_EQ(qobject_cast<QLineEdit*>(QApplication::focusWidget()), nullptr);
            QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(5, 5));
            save_enabled = find<QPushButton>(&view, message_text(266))->isEnabled();
        });
        EXPECT_FALSE(save_enabled);
        EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("ask")).isEmpty());
        EXPECT_TRUE(window == Window::Form12 ? rig.form.form12->unloaded
                                             : rig.form.form11->unloaded);
    }
}

TEST(HelpWindows, show_their_captions_and_done_closes_them) {
    DialogRig rig;
    rig.form.Gated_Treatment = true;
    rig.form.tarrow_DLL_firmware = QStringLiteral("1.0.0.7");
    rig.form.software_version = "3.00.01", rig.form.zel_version_id = "ZEL 2.14";
    rig.form.form10 = std::make_unique<Form10>();
    rig.form.form10->Form_Load(rig.form);
    std::unique_ptr<QDialog> about(make_form10_view(rig.form, nullptr));
    about->show();
    expect_captions_fit(*about, "form10.png", {});
    EXPECT_EQ(about->windowTitle(), message_text(136));
    find<QLabel>(about.get(), QStringLiteral("1.0.0.7"));
    QTest::mouseClick(find<QPushButton>(about.get(), message_text(113)), Qt::LeftButton);
    EXPECT_FALSE(rig.form.about_visible || about->isVisible());

    rig.form.form_gating = std::make_unique<FormGating>(rig.fakes.tarrow, rig.fakes.timers);
    rig.form.form_gating->Form_Load();
    rig.form.form_gating->Timer_Tarrow_Diagnostics_Timer();
    std::unique_ptr<QDialog> gating(make_form_gating_view(rig.form, nullptr));
    gating->show();
    expect_captions_fit(*gating, "form_gating.png", {333});
    QTest::mouseClick(find<QPushButton>(gating.get(), message_text(113)), Qt::LeftButton);
    EXPECT_FALSE(rig.form.form_gating->Timer_Tarrow_Diagnostics->Enabled() || gating->isVisible());
}

// The review stands beside the console. Closed, it is gone: the next opening asks for files
// anew rather than showing the old window and its curves again.
TEST(DialogViews, the_review_closed_is_gone_and_the_next_opening_asks_for_files_anew) {
    DialogRig rig;
    QtChartSurface surface(870, 499);
    Form1View main_window(rig.form, surface);
    QtWindows windows(rig.form, main_window);
    int asked = 0;
    for (int opening = 0; opening < 2; ++opening) {
        QTimer::singleShot(0, [&] {
            if (auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                ++asked;
                chooser->reject();
            }
        });
        windows.show_modeless(Window::PatientCurves);
        for (QWidget* w : QApplication::topLevelWidgets())
            if (qobject_cast<QMainWindow*>(w) && w != &main_window) w->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_EQ(asked, 2);
}

}  // namespace
}  // namespace zel::test
