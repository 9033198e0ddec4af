// Leaving a patient, undoing one, and the menu entries that must not act during a hold.
#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>

#include "app/patient_rig.h"
#include "dialogs/dialog_rig.h"
#include "dialogs/form11.h"
#include "dialogs/form12.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct PatientRig : Rig {
    PatientRig() {
        define_patient(*this);
        form.show_patient_labels();
        form.Label2.Caption = QStringLiteral("Press spacebar to activate.");
        form.Patient_Settings.Enabled = form.mnuSessionHistory.Enabled = true;
        form.Gating_Diagnostics.Enabled = false, form.total_counts = 500, form.b_state = 1;
    }
};

TEST(PatientWorkflow, the_session_question_decides_whether_the_patient_is_left) {
    struct Case { int button; bool left; };
    // Yes, No, Cancel.
    for (const Case c : {Case{0, true}, Case{1, true}, Case{2, false}}) {
        PatientRig rig;
        rig.fakes.windows.answer(c.button);
        EXPECT_EQ(rig.form.leave_current_patient(), c.left) << c.button;
        EXPECT_EQ(rig.form.patient_defined, !c.left) << c.button;
        EXPECT_EQ(rig.form.Label_last_name.Caption, c.left ? message_text(226) : "Doe");
        EXPECT_EQ(rig.fakes.windows.log, QStringList{QStringLiteral("ask ") + message_text(120)});
    }
}

// The patient's gating, its recording (left read-only: the owner's write permission is what
// marks it, as a root user writes regardless) and its checksum log all end with it.
TEST(PatientWorkflow, reset_patient_clears_the_patient_and_ends_what_it_had_open) {
    PatientRig rig;
    rig.form.Gated_Treatment = rig.form.Gating_OverRide = true;
    rig.form.Image_Gating_Ready.Visible = true;
    rig.form.cmdRecord_Click();
    rig.fakes.serial.receive(data_frame());
    rig.fakes.serial.receive(bad_sum(data_frame()));
    ASSERT_TRUE(rig.form.checksum_log_open);
    rig.fakes.tarrow.calls.clear();
    rig.form.reset_patient();
    EXPECT_EQ(patient_view(rig.form) << rig.form.Label_first_name.Caption << rig.form.Label2.Caption,
              (QStringList{message_text(226), "", "", "", "",
                           "record 0 settings 0 history 0 diagnostics 1", "", ""}));
    EXPECT_FALSE(rig.form.patient_defined || rig.form.Gated_Treatment || rig.form.Gating_OverRide ||
                 rig.form.Image_Gating_Ready.Visible || rig.form.total_counts);
    EXPECT_EQ(rig.fakes.tarrow.calls, QStringList{"Close()"});
    EXPECT_FALSE(rig.form.bRecord || rig.form.curve_file || rig.form.checksum_log_open ||
                 rig.form.checksum_log);
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
        EXPECT_TRUE(rig.form.Timer_HeartBeat->Enabled() && rig.form.patient_defined) << state;
        EXPECT_EQ(rig.fakes.chart.clears, 0) << state;
        EXPECT_TRUE(rig.fakes.windows.log.isEmpty() && rig.fakes.boxes.shown.isEmpty() &&
                    rig.fakes.dialogs.opened_in.isEmpty() && rig.fakes.serial.sent().isEmpty())
            << state;
    }
}

// The link is stopped before the question or the window, and searched for again after.
TEST(PatientWorkflow, saving_the_defaults_and_the_curve_review_stop_the_link_first) {
    struct Case { const char* name; int button; bool review; const char* log; bool written; };
    const Case cases[] = {
        {"defaults saved", 0, false, "ask ", true}, {"defaults not saved", 1, false, "ask ", false},
        {"curve review", 0, true, "show modeless PatientCurves", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig;
        rig.fakes.timers.get("Timer_HeartBeat").set_Enabled(true);
        rig.fakes.windows.answer(c.button);
        rig.form.number_format = QStringLiteral("dot");
        QByteArray sent_before_window;
        rig.fakes.windows.during(Window::PatientCurves,
                                 [&] { sent_before_window = rig.fakes.serial.sent(); });
        if (c.review) {
            rig.form.mnuVisualizePatientCurves_Click();
            EXPECT_TRUE(sent_before_window.startsWith("D"));
        } else {
            rig.form.save_settings_as_default_Click();
            EXPECT_TRUE(rig.fakes.serial.sent().startsWith("D"));
        }
        EXPECT_EQ(rig.fakes.windows.log,
                  QStringList{c.log + (c.review ? QString() : message_text(139))});
        EXPECT_EQ(QFile::exists(rig.form.AppDataPath + QStringLiteral("/zel.ini")), c.written);
        EXPECT_TRUE(rig.fakes.timers.get("Timer_module_connect").Enabled());
    }
}

// A module re-found in a hold behind a settings dialog: the dialog's Save and what follows it
// (the patient file, the upload, the redraw) wait until the hold has ended.
TEST(PatientWorkflow, settings_dialogs_change_nothing_of_a_hold_found_under_them) {
    enum class Hold { none, before_save, after_save };
    struct Case { Window window; Hold hold; bool applied, saved; };
    const Case cases[] = {
        {Window::Form12, Hold::none, true, true}, {Window::Form12, Hold::before_save, false, false},
        {Window::Form12, Hold::after_save, true, false}, {Window::Form11, Hold::none, true, true},
        {Window::Form11, Hold::before_save, false, false},
        {Window::Form11, Hold::after_save, true, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(&c - cases));
        PatientRig rig;
        rig.form.thresh = 1.2f;
        rig.form.max_y = 2;
        rig.fakes.serial.set_PortOpen(true);
        rig.fakes.windows.during(c.window, [&] {
            if (c.hold == Hold::before_save) rig.form.b_state = 2;
            if (c.window == Window::Form12) {
                Form12& f = *rig.form.form12;
                enter(f, f.Threshold_Text, QStringLiteral("1.6"));
                f.Button_Save_Click();
            } else {
                Form11& f = *rig.form.form11;
                enter(f, f.Y_Range_Text, QStringLiteral("3"));
                f.Done_Click();
            }
            // A frame of the hold handled before the dialog's loop returned.
            if (c.hold == Hold::after_save) rig.form.b_state = 2;
        });
        const bool form12 = c.window == Window::Form12;
        form12 ? rig.form.Patient_Settings_Click() : rig.form.Control_Panel_Click();
        EXPECT_EQ(form12 ? rig.form.thresh == 1.6f : rig.form.max_y == 3.0, c.applied);
        EXPECT_EQ(QFile::exists(doe_folder(rig) + QStringLiteral("/Doe.zel")), c.saved);
        // Only Form12 uploads, and only with the file saved.
        EXPECT_EQ(rig.fakes.serial.sent().contains('L'), c.saved && form12);
        EXPECT_EQ(rig.form.settings_dialogs_open, 0);
    }
}

}  // namespace
}  // namespace zel::test
