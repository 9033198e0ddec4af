// Leaving a patient, undoing one, and the menu entries that must not act during a hold.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "dialogs/form11.h"
#include "dialogs/form12.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct PatientRig : Rig {
    PatientRig() {
        form.patient_defined = true;
        form.patient_last_name = QStringLiteral("Doe");
        form.Label_last_name.Caption = QStringLiteral("Doe");
        form.Label_first_name.Caption = QStringLiteral("Jane");
        form.label_session.Caption = QStringLiteral("Session ID 1");
        form.Label2.Caption = QStringLiteral("Press spacebar to activate.");
        form.Patient_Settings.Enabled = true;
        form.mnuSessionHistory.Enabled = true;
        form.Gating_Diagnostics.Enabled = false;
        form.total_counts = 500;
        form.b_state = 1;
    }
};

TEST(PatientWorkflow, the_session_question_decides_whether_the_patient_is_left) {
    struct Case { int button; bool left; };
    // Yes, No, Cancel.
    const Case cases[] = {{0, true}, {1, true}, {2, false}};
    for (const auto& c : cases) {
        PatientRig rig;
        rig.fakes.windows.answer(c.button);
        EXPECT_EQ(rig.form.leave_current_patient(), c.left) << c.button;
        EXPECT_EQ(rig.form.patient_defined, !c.left) << c.button;
        EXPECT_EQ(rig.form.Label_last_name.Caption,
                  c.left ? message_text(226) : QStringLiteral("Doe"));
        EXPECT_EQ(rig.fakes.windows.log,
                  QStringList{QStringLiteral("ask ") + message_text(120)});
    }
}

TEST(PatientWorkflow, reset_patient_clears_the_patient_and_its_gating) {
    PatientRig rig;
    rig.form.Gated_Treatment = true;
    rig.form.Gating_OverRide = true;
    rig.form.Image_Gating_Ready.Visible = true;
    rig.form.reset_patient();
    EXPECT_FALSE(rig.form.patient_defined);
    EXPECT_EQ(rig.form.Label_last_name.Caption, message_text(226));
    for (const Control* label : {&rig.form.Label_first_name, &rig.form.label_session,
                                 &rig.form.label_patient_ID, &rig.form.gating_label,
                                 &rig.form.Label2, &rig.form.Label4})
        EXPECT_TRUE(label->Caption.isEmpty());
    EXPECT_FALSE(rig.form.Patient_Settings.Enabled);
    EXPECT_FALSE(rig.form.mnuSessionHistory.Enabled);
    EXPECT_TRUE(rig.form.Gating_Diagnostics.Enabled);
    EXPECT_FALSE(rig.form.cmdRecord.Enabled);
    EXPECT_FALSE(rig.form.Gated_Treatment);
    EXPECT_FALSE(rig.form.Gating_OverRide);
    EXPECT_FALSE(rig.form.Image_Gating_Ready.Visible);
    EXPECT_EQ(rig.form.total_counts, 0);
    EXPECT_EQ(rig.fakes.tarrow.calls, QStringList{"Close()"});
}

TEST(PatientWorkflow, reset_patient_ends_a_running_recording_read_only) {
    PatientRig rig;
    rig.form.data_directory = rig.app_data.path();
    rig.form.patient_first_name = QStringLiteral("Jane");
    rig.form.patient_medical_id = QStringLiteral("A1");
    rig.form.session = QStringLiteral("1");
    QDir().mkpath(rig.app_data.path() + QStringLiteral("/Doe_Jane_A1"));
    rig.form.cmdRecord_Click();
    rig.fakes.serial.receive(data_frame());
    rig.form.reset_patient();
    EXPECT_FALSE(rig.form.bRecord);
    EXPECT_FALSE(rig.form.curve_file);
    // The owner's write permission is what marks it: a root user writes regardless.
    EXPECT_FALSE(QFile::permissions(rig.form.record_filename) & QFile::WriteOwner);
    EXPECT_GT(QFileInfo(rig.form.record_filename).size(), 0);
}

// The File and Settings menus' handlers during a hold: no window, no box, no file, nothing to
// the module, no redraw.
TEST(PatientWorkflow, patient_and_settings_menu_entries_do_nothing_during_a_hold) {
    for (int16_t state : {2, 3, 4, 5}) {
        PatientRig rig;
        rig.form.b_state = state;
        rig.form.Timer_HeartBeat->set_Enabled(true);
        rig.form.create_new_patient_Click();
        rig.form.load_existing_patient_Click();
        rig.form.Patient_Settings_Click();
        rig.form.Control_Panel_Click();
        EXPECT_TRUE(rig.form.Timer_HeartBeat->Enabled()) << state;
        EXPECT_EQ(rig.fakes.chart.clears, 0) << state;
        EXPECT_TRUE(rig.fakes.windows.log.isEmpty()) << state;
        EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty()) << state;
        EXPECT_TRUE(rig.fakes.dialogs.opened_in.isEmpty()) << state;
        EXPECT_TRUE(rig.form.patient_defined) << state;
        EXPECT_TRUE(rig.fakes.serial.sent().isEmpty()) << state;
    }
}

TEST(PatientWorkflow, saving_the_defaults_asks_first_with_the_link_stopped) {
    struct Case { int button; bool written; };
    for (const Case c : {Case{0, true}, Case{1, false}}) {
        Rig rig;
        rig.fakes.timers.get("Timer_HeartBeat").set_Enabled(true);
        rig.fakes.windows.answer(c.button);
        rig.form.number_format = QStringLiteral("dot");
        rig.form.save_settings_as_default_Click();
        EXPECT_TRUE(rig.fakes.serial.sent().startsWith("D")) << "the stream stopped first";
        EXPECT_EQ(rig.fakes.windows.log, QStringList{QStringLiteral("ask ") + message_text(139)});
        EXPECT_EQ(QFile::exists(rig.form.AppDataPath + QStringLiteral("/zel.ini")), c.written);
        EXPECT_TRUE(rig.fakes.timers.get("Timer_module_connect").Enabled()) << "search again";
    }
}

TEST(PatientWorkflow, the_curve_review_opens_beside_with_the_link_stopped_while_it_loads) {
    Rig rig;
    rig.fakes.timers.get("Timer_HeartBeat").set_Enabled(true);
    QByteArray sent_before_window;
    rig.fakes.windows.during(Window::PatientCurves,
                             [&] { sent_before_window = rig.fakes.serial.sent(); });
    rig.form.mnuVisualizePatientCurves_Click();
    EXPECT_TRUE(sent_before_window.startsWith("D")) << "the stream stopped before the dialog";
    EXPECT_EQ(rig.fakes.windows.log, QStringList{QStringLiteral("show modeless PatientCurves")});
    EXPECT_TRUE(rig.fakes.timers.get("Timer_module_connect").Enabled()) << "search again";
}

// A module re-found in a hold behind a settings dialog: the dialog's Save and what follows it
// (the patient file, the upload, the redraw) wait until the hold has ended.
TEST(PatientWorkflow, settings_dialogs_change_nothing_of_a_hold_found_under_them) {
    enum class Hold { none, before_save, after_save };
    struct Case {
        Window window;
        Hold hold;
        bool applied, saved;
    };
    const Case cases[] = {
        {Window::Form12, Hold::none, true, true},
        {Window::Form12, Hold::before_save, false, false},
        {Window::Form12, Hold::after_save, true, false},
        {Window::Form11, Hold::none, true, true},
        {Window::Form11, Hold::before_save, false, false},
        {Window::Form11, Hold::after_save, true, false},
    };
    for (const Case& c : cases) {
        PatientRig rig;
        rig.form.data_directory = rig.app_data.path();
        rig.form.number_format = QStringLiteral("dot");
        rig.form.patient_first_name = QStringLiteral("Jane");
        rig.form.patient_medical_id = QStringLiteral("A1");
        rig.form.thresh = 1.2f;
        rig.form.max_y = 2;
        const QString folder = rig.app_data.path() + QStringLiteral("/Doe_Jane_A1");
        QDir().mkpath(folder);
        rig.fakes.serial.set_PortOpen(true);
        rig.fakes.windows.during(c.window, [&] {
            if (c.hold == Hold::before_save) rig.form.b_state = 2;
            if (c.window == Window::Form12) {
                Form12& f = *rig.form.form12;
                f.type_text(f.Threshold_Text, QStringLiteral("1.6"), 3);
                f.key_press(f.Threshold_Text, 13);
                f.Button_Save_Click();
            } else {
                Form11& f = *rig.form.form11;
                f.type_text(f.Y_Range_Text, QStringLiteral("3"), 1);
                f.key_press(f.Y_Range_Text, 13);
                f.Done_Click();
            }
            // A frame of the hold handled before the dialog's loop returned.
            if (c.hold == Hold::after_save) rig.form.b_state = 2;
        });
        if (c.window == Window::Form12)
            rig.form.Patient_Settings_Click();
        else
            rig.form.Control_Panel_Click();
        const bool applied =
            c.window == Window::Form12 ? rig.form.thresh == 1.6f : rig.form.max_y == 3.0;
        const int line = static_cast<int>(&c - cases);
        EXPECT_EQ(applied, c.applied) << line;
        EXPECT_EQ(QFile::exists(folder + QStringLiteral("/Doe.zel")), c.saved) << line;
        // Only Form12 uploads, and only with the file saved.
        EXPECT_EQ(rig.fakes.serial.sent().contains('L'), c.saved && c.window == Window::Form12)
            << line;
        EXPECT_EQ(rig.form.settings_dialogs_open, 0) << line;
    }
}

}  // namespace
}  // namespace zel::test
