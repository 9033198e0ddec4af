// The settings dialogs' windows: they hand the operator's actions to the models and show the
// models' state; the rules are the models'.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include "fakes/rig.h"
#include "language/messages.h"
#include "platform/qt_chart_surface.h"
#include "ui/form10_view.h"
#include "ui/form11_view.h"
#include "ui/form12_view.h"
#include "ui/form1_view.h"
#include "ui/form_gating_view.h"
#include "ui/key_guard_filter.h"
#include "ui/qt_windows.h"

namespace zel::test {
namespace {

struct ViewRig : Rig {
    QTemporaryDir data;
    ViewRig() {
        form.number_format = QStringLiteral("dot");
        form.data_directory = data.path();
        form.duration = 15;
        form.thresh = 1.2f;
        form.language_file = QStringLiteral("English");
        form.language_name = {QStringLiteral("Deutsch")};
    }
};

template <class W>
W* find(QWidget* in, const QString& text) {
    for (W* w : in->findChildren<W*>())
        if (w->text() == text) return w;
    return nullptr;
}

// Every caption fits its control; with ZEL_SCREENSHOT_DIR set, the window is saved as a
// picture for a look.
void expect_captions_fit(QWidget& view, const char* picture) {
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
    const QString dir = qEnvironmentVariable("ZEL_SCREENSHOT_DIR");
    if (!dir.isEmpty()) view.grab().save(dir + QLatin1Char('/') + picture);
}

TEST(Form12View, shows_its_captions_and_passes_a_choice_of_trigger) {
    ViewRig rig;
    rig.form.inhale = true;
    rig.form.Gated_Treatment = true;
    rig.form.form12 = std::make_unique<Form12>(rig.form);
    Form12& f = *rig.form.form12;
    f.Form_Load();
    Form12View view(rig.form, f, nullptr);
    view.show();
    EXPECT_EQ(view.windowTitle(), message_text(281));
    auto* save = find<QPushButton>(&view, message_text(266));
    ASSERT_NE(save, nullptr);
    EXPECT_FALSE(save->isEnabled());
    auto* exhalation = find<QRadioButton>(&view, message_text(237));
    ASSERT_NE(exhalation, nullptr);
    QTest::mouseClick(exhalation, Qt::LeftButton);
    EXPECT_EQ(f.Exhalation_button.Value, 1);
    EXPECT_FALSE(find<QRadioButton>(&view, message_text(236))->isChecked());
    EXPECT_TRUE(save->isEnabled());

    // A refused entry: both warnings and the standing one fit.
    f.type_text(f.BreathHold_Text, QStringLiteral("100"), 3);
    f.key_press(f.BreathHold_Text, 13);
    f.type_text(f.Threshold_Text, QStringLiteral("abc"), 3);
    f.key_press(f.Threshold_Text, 13);
    view.sync();
    ASSERT_NE(find<QLabel>(&view, message_text(185)), nullptr);
    expect_captions_fit(view, "form12.png");
}

TEST(Form11View, shows_its_captions_and_passes_a_language_choice) {
    ViewRig rig;
    rig.form.form11 = std::make_unique<Form11>(rig.form);
    Form11& f = *rig.form.form11;
    f.Form_Load();
    Form11View view(rig.form, f, nullptr);
    view.show();
    EXPECT_EQ(view.windowTitle(), message_text(315));
    auto* combo = view.findChild<QComboBox*>();
    ASSERT_NE(combo, nullptr);
    EXPECT_EQ(combo->currentText(), QStringLiteral("English"));
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down);
    EXPECT_EQ(f.LangCombo.ListIndex, 1);
    EXPECT_TRUE(f.languageChanged);
    EXPECT_TRUE(find<QPushButton>(&view, message_text(113))->isEnabled());
    ASSERT_NE(find<QLabel>(&view, message_text(301)), nullptr);
    auto* directory = find<QLineEdit>(&view, rig.data.path());
    ASSERT_NE(directory, nullptr);
    EXPECT_TRUE(directory->isReadOnly());
    f.type_text(f.Y_Range_Text, QStringLiteral("0.5"), 3);
    f.key_press(f.Y_Range_Text, 13);
    view.sync();
    expect_captions_fit(view, "form11.png");
}

TEST(SettingsViews, the_console_shows_them_modally_until_cancel_closes_them) {
    ViewRig rig;
    QtChartSurface surface(870, 499);
    Form1View main_window(rig.form, surface);
    QtWindows windows(rig.form, main_window);
    for (Window window : {Window::Form12, Window::Form11}) {
        QTimer::singleShot(0, [] {
            QWidget* dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            find<QPushButton>(dialog, message_text(114))->click();
        });
        if (window == Window::Form12) {
            rig.form.form12 = std::make_unique<Form12>(rig.form);
            rig.form.form12->Form_Load();
        } else {
            rig.form.form11 = std::make_unique<Form11>(rig.form);
            rig.form.form11->Form_Load();
        }
        windows.show_modal(window);
        EXPECT_TRUE(window == Window::Form12 ? rig.form.form12->unloaded
                                             : rig.form.form11->unloaded);
    }
    EXPECT_TRUE(rig.form.patient_settings_cancel);
}

// Patient Settings or System Settings as its menu entry opens it, with its real window shown
// by what `during` gives the console's show.
void open_from_menu(ViewRig& rig, Window window) {
    if (window == Window::Form12)
        rig.form.Patient_Settings_Click();
    else
        rig.form.Control_Panel_Click();
}

std::unique_ptr<EntryDialogView> shown_view(ViewRig& rig, Window window) {
    std::unique_ptr<EntryDialogView> view;
    if (window == Window::Form12)
        view = std::make_unique<Form12View>(rig.form, *rig.form.form12, nullptr);
    else
        view = std::make_unique<Form11View>(rig.form, *rig.form.form11, nullptr);
    view->show();
    return view;
}

// The operator must always be able to stop a hold, and never arm one behind these dialogs,
// whose Save would alter it. The keys go to the focused widget of the shown window, through the
// console's key guard, as the operator's would.
TEST(SettingsViews, the_spacebar_inside_arms_nothing_and_still_stops_a_hold) {
    for (Window window : {Window::Form12, Window::Form11}) {
        ViewRig rig;
        rig.form.patient_defined = true;
        rig.form.b_state = 1;
        rig.fakes.serial.set_PortOpen(true);
        KeyGuardFilter guard(rig.form);
        qApp->installEventFilter(&guard);
        QByteArray in_standby, in_hold;
        rig.fakes.windows.during(window, [&] {
            const std::unique_ptr<EntryDialogView> view = shown_view(rig, window);
            ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
            // An option button, as the operator's click on a trigger direction leaves it.
            auto* option = view->findChildren<QRadioButton*>().value(0);
            ASSERT_NE(option, nullptr);
            option->setFocus();
            QTest::keyClick(option, Qt::Key_Space);
            in_standby = rig.fakes.serial.sent();
            rig.form.b_state = 4;
            QTest::keyClick(option, Qt::Key_Space);
            in_hold = rig.fakes.serial.sent().mid(in_standby.size());
            rig.form.b_state = 1;
            QTest::mouseClick(find<QPushButton>(view.get(), message_text(114)), Qt::LeftButton);
        });
        open_from_menu(rig, window);
        qApp->removeEventFilter(&guard);
        const int w = static_cast<int>(window);
        EXPECT_FALSE(in_standby.contains('A') || in_standby.contains('B'))
            << w << ": " << in_standby.toStdString();
        EXPECT_EQ(in_hold, QByteArray("X")) << w;
    }
}

// Opened untouched: Save stays off, and Cancel closes without asking whether to discard.
TEST(SettingsViews, open_with_nothing_edited_until_the_operator_edits) {
    for (Window window : {Window::Form12, Window::Form11}) {
        ViewRig rig;
        rig.form.patient_defined = true;
        rig.form.b_state = 1;
        bool save_enabled = true;
        rig.fakes.windows.during(window, [&] {
            const std::unique_ptr<EntryDialogView> view = shown_view(rig, window);
            ASSERT_TRUE(QTest::qWaitForWindowActive(view.get()));
            EXPECT_EQ(qobject_cast<QLineEdit*>(QApplication::focusWidget()), nullptr);
            QTest::mouseClick(view.get(), Qt::LeftButton, {}, QPoint(5, 5));
            QTest::mouseClick(find<QPushButton>(view.get(), message_text(114)), Qt::LeftButton);
            save_enabled = find<QPushButton>(view.get(), message_text(266))->isEnabled();
        });
        open_from_menu(rig, window);
        const int w = static_cast<int>(window);
        EXPECT_FALSE(save_enabled) << w;
        EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("ask")).isEmpty()) << w;
        EXPECT_TRUE(window == Window::Form12 ? rig.form.form12->unloaded
                                             : rig.form.form11->unloaded)
            << w;
    }
}

TEST(HelpWindows, show_their_captions_and_done_closes_them) {
    ViewRig rig;
    rig.form.Gated_Treatment = true;
    rig.form.tarrow_DLL_firmware = QStringLiteral("1.0.0.7");
    rig.form.software_version = QStringLiteral("3.00.01");
    rig.form.zel_version_id = QStringLiteral("ZEL 2.14");
    rig.form.form10 = std::make_unique<Form10>();
    rig.form.form10->Form_Load(rig.form);
    // The version rows: the controls named for the versions carry the captions, and the
    // numbered labels beside them the values.
    const Form10& box = *rig.form.form10;
    const struct {
        const Control& caption;
        const Control& value;
        QString caption_text, value_text;
    } rows[] = {{box.software_version, box.Label3, message_text(118), QStringLiteral("3.00.01")},
                {box.firmware_version, box.Label20, message_text(119), QStringLiteral("ZEL 2.14")}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.caption.Caption, row.caption_text);
        EXPECT_EQ(row.value.Caption, row.value_text);
        EXPECT_LT(row.caption.Left, row.value.Left) << row.value_text.toStdString();
        EXPECT_EQ(row.caption.Top, row.value.Top) << row.value_text.toStdString();
    }
    std::unique_ptr<QDialog> about(make_form10_view(rig.form, nullptr));
    about->show();
    expect_captions_fit(*about, "form10.png");
    EXPECT_EQ(about->windowTitle(), message_text(136));
    ASSERT_NE(find<QLabel>(about.get(), QStringLiteral("1.0.0.7")), nullptr);
    QTest::mouseClick(find<QPushButton>(about.get(), message_text(113)), Qt::LeftButton);
    EXPECT_FALSE(rig.form.about_visible);
    EXPECT_FALSE(about->isVisible());

    rig.form.form_gating = std::make_unique<FormGating>(rig.fakes.tarrow, rig.fakes.timers);
    rig.form.form_gating->Form_Load();
    rig.form.form_gating->Timer_Tarrow_Diagnostics_Timer();
    std::unique_ptr<QDialog> gating(make_form_gating_view(rig.form, nullptr));
    gating->show();
    expect_captions_fit(*gating, "form_gating.png");
    ASSERT_NE(find<QLabel>(gating.get(), message_text(333)), nullptr);
    QTest::mouseClick(find<QPushButton>(gating.get(), message_text(113)), Qt::LeftButton);
    EXPECT_FALSE(rig.form.form_gating->Timer_Tarrow_Diagnostics->Enabled());
    EXPECT_FALSE(gating->isVisible());
}

}  // namespace
}  // namespace zel::test
