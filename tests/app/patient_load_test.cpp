// Creating a patient and loading one back: the files written, the tests of a load with the
// report and the fate of the folder for each, and the patient in force afterwards.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "data/patient_file.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

const QString stamp = QStringLiteral("ZEL Patient Parameter File");

struct WorkflowRig : Rig {
    WorkflowRig() {
        form.data_directory = app_data.path();
        form.patient_parameter_filestamp = stamp;
        form.number_format = QStringLiteral("dot");
        form.duration = 12;
        form.thresh = 1.2f;
        form.max_y = 2;
        form.min_y = -2;
        form.max_x = 1000;
        form.x_scale_factor = 1;
        form.inhale = true;
    }
    QString folder() const { return app_data.path() + QStringLiteral("/Doe_Jane_A1"); }
    QString zel() const { return folder() + QStringLiteral("/Doe.zel"); }
    QString quarantine() const { return app_data.path() + QLatin1Char('/') + message_text(342); }

    static void type(Form5& f, TextBox& box, const QString& text) {
        f.type_text(box, text, static_cast<int>(text.size()));
    }
    // The operator fills the new-patient dialog and presses Done; the recording question is
    // answered No.
    void create(bool automated = false, const QString& threshold = QStringLiteral("1.5")) {
        fakes.windows.during(Window::Form5, [this, automated, threshold] {
            Form5& f = *form.form5;
            type(f, f.Text_last_name, QStringLiteral("Doe"));
            type(f, f.Text_first_name, QStringLiteral("Jane"));
            type(f, f.Text_medical_id, QStringLiteral("A1"));
            f.click(automated ? f.Check_automatic : f.Check_manual);
            type(f, f.Threshold_Text, threshold);
            f.key_press(f.Threshold_Text, 13);
            f.click(f.button_done);
        });
        fakes.windows.answer(1);
        form.create_new_patient_Click();
    }
    // Chooses the file in the file dialog; the session dialog is given `session` and Done.
    void load(const QString& path, const QString& session = QStringLiteral("2")) {
        fakes.dialogs.choose_file(path);
        fakes.windows.during(Window::Form5, [this, session] {
            Form5& f = *form.form5;
            type(f, f.Text_session, session);
            f.click(f.button_done);
        });
        fakes.windows.answer(1);
        form.load_existing_patient_Click();
    }
    // The patient is left without saving the session.
    void leave() {
        fakes.windows.answer(1);
        ASSERT_TRUE(form.leave_current_patient());
    }
};

TEST(PatientCreate, writes_the_patient_files_and_puts_the_patient_in_force) {
    WorkflowRig rig;
    rig.create();
    ASSERT_TRUE(rig.form.patient_defined);
    EXPECT_TRUE(QFileInfo(rig.zel()).exists());
    EXPECT_FALSE(QFile::permissions(rig.zel()) & QFile::WriteOwner);  // read-only
    EXPECT_TRUE(QFileInfo::exists(rig.folder() + QStringLiteral("/Doe.sfv")));
    EXPECT_EQ(rig.form.Label_last_name.Caption, QStringLiteral("Doe"));
    EXPECT_EQ(rig.form.label_session.Caption, message_text(201) + QStringLiteral(" 1"));
    EXPECT_EQ(rig.form.label_patient_ID.Caption, message_text(117) + QStringLiteral(" A1"));
    EXPECT_EQ(rig.form.gating_label.Caption, message_text(269));
    EXPECT_EQ(rig.form.gating_start_mode, message_text(269));
    EXPECT_EQ(rig.form.Label4.Caption, message_text(289));
    EXPECT_TRUE(rig.form.cmdRecord.Enabled);
    EXPECT_TRUE(rig.form.Patient_Settings.Enabled);
    EXPECT_TRUE(rig.form.mnuSessionHistory.Enabled);
    EXPECT_FALSE(rig.form.Gating_Diagnostics.Enabled);
    EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("ask ") + message_text(202)));
    EXPECT_FLOAT_EQ(rig.form.thresh, 1.5f);
}

// Leaving a gated patient for a Create that is cancelled: the gating library still hears that
// no gated treatment stands, and keeps no relay permission of the patient before.
TEST(PatientCreate, a_cancelled_dialog_leaves_no_patient_and_no_names) {
    WorkflowRig rig;
    rig.create();
    rig.form.Gated_Treatment = true;
    rig.fakes.tarrow.calls.clear();
    rig.fakes.windows.answer(1);  // No to saving the session
    rig.fakes.windows.during(Window::Form5, [&rig] { rig.form.form5->click(rig.form.form5->button_cancel); });
    rig.form.create_new_patient_Click();
    EXPECT_FALSE(rig.form.patient_defined);
    EXPECT_EQ(rig.form.Label_last_name.Caption, message_text(226));
    EXPECT_TRUE(rig.form.label_session.Caption.isEmpty());
    EXPECT_FALSE(rig.form.cmdRecord.Enabled);
    EXPECT_EQ(rig.form.gating_label.Caption, message_text(269));
    EXPECT_EQ(rig.fakes.tarrow.calls,
              (QStringList{"Close()", "SetRelayEnablePermission(1)", "Close()"}));
}

TEST(PatientLoad, a_saved_patient_comes_back_with_its_settings_for_a_new_session) {
    WorkflowRig rig;
    rig.create(false, QStringLiteral("1.5"));
    rig.form.session = QStringLiteral("1");
    rig.leave();
    // Settings of the console that the patient's file overrides.
    rig.form.thresh = 0.4f;
    rig.form.max_y = 5;
    rig.load(rig.zel());
    ASSERT_TRUE(rig.form.patient_defined);
    EXPECT_EQ(rig.form.session, QStringLiteral("2"));
    EXPECT_FLOAT_EQ(rig.form.thresh, 1.5f);
    EXPECT_EQ(rig.form.max_y, 2);
    EXPECT_EQ(rig.form.min_y, -2);
    EXPECT_EQ(rig.form.duration, 12);
    EXPECT_TRUE(rig.form.inhale);
    EXPECT_FALSE(rig.form.Gated_Treatment);
    EXPECT_EQ(rig.form.gating_start_mode, message_text(269));
    EXPECT_EQ(rig.form.Label_last_name.Caption, QStringLiteral("Doe"));
    EXPECT_EQ(rig.form.label_session.Caption, message_text(201) + QStringLiteral(" 2"));
    EXPECT_TRUE(rig.form.Patient_Settings.Enabled);
    EXPECT_FALSE(rig.form.Gating_Diagnostics.Enabled);
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
    EXPECT_EQ(rig.fakes.dialogs.filters.last(), QStringLiteral("ZEL Patient Parameter File|*.zel"));
}

TEST(PatientLoad, a_gated_patient_opens_the_gating_link_or_fails_without_the_library) {
    for (const bool missing : {false, true}) {
        WorkflowRig rig;
        rig.create(true);
        rig.leave();
        rig.fakes.tarrow.calls.clear();
        rig.fakes.tarrow.missing = missing;
        rig.load(rig.zel());
        if (!missing) {
            EXPECT_TRUE(rig.form.patient_defined);
            EXPECT_TRUE(rig.form.Gated_Treatment);
            EXPECT_EQ(rig.form.gating_label.Caption, message_text(268));
            EXPECT_EQ(rig.fakes.tarrow.calls.first(), QStringLiteral("ClearTimingViolation()"));
        } else {
            EXPECT_FALSE(rig.form.patient_defined);
            EXPECT_FALSE(rig.form.Gated_Treatment);
            EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(355)});
            EXPECT_EQ(rig.form.Label_last_name.Caption, message_text(226));
        }
    }
}

TEST(PatientLoad, each_refusal_has_its_report_and_its_fate_for_the_folder) {
    enum Spoil { no_companion, edited, other_version, comma_format, cancel, garbage };
    struct Case {
        Spoil spoil;
        const char* window;  // the message window shown, or the box's message number
        int box;
        bool quarantined;
    };
    const Case cases[] = {
        {no_companion, "Form_CorruptInfo", 0, true},
        {edited, "Form_CorruptInfo", 0, true},
        {other_version, "Form_WrongVersion", 0, true},
        {comma_format, "Form_NumberFormatWarning", 0, false},
        {cancel, nullptr, 0, false},
        {garbage, nullptr, 129, false},
    };
    for (const auto& c : cases) {
        WorkflowRig rig;
        rig.create();
        rig.leave();
        QStringList lines = patient_file_lines(stamp, rig.form.software_version,
                                               PatientParameters{QStringLiteral("Doe"),
                                                                 QStringLiteral("Jane"),
                                                                 QStringLiteral("A1"), 1.5f, 12,
                                                                 2, true, 1, 1000, false},
                                               QStringLiteral("1/2/2026"),
                                               QStringLiteral("dot"), QLatin1Char('.'));
        switch (c.spoil) {
            case no_companion: QFile::remove(rig.folder() + QStringLiteral("/Doe.sfv")); break;
            case edited: {
                QFile::setPermissions(rig.zel(), QFile::ReadOwner | QFile::WriteOwner);
                QFile file(rig.zel());
                ASSERT_TRUE(file.open(QIODevice::Append));
                file.write("Extra:1\r\n");
                break;
            }
            case other_version: lines[1] = QStringLiteral("2.99.00"); break;
            case comma_format: lines[13] = QStringLiteral("Number Format:comma"); break;
            case garbage: lines[7] = QStringLiteral("Breath Hold Duration: long "); break;
            case cancel: break;
        }
        if (c.spoil == other_version || c.spoil == comma_format || c.spoil == garbage) {
            ASSERT_TRUE(write_patient_files(rig.zel(), lines));
        }
        rig.fakes.windows.log.clear();
        rig.fakes.windows.message_texts.clear();
        rig.load(c.spoil == cancel ? QString() : rig.zel());
        EXPECT_FALSE(rig.form.patient_defined) << c.spoil;
        EXPECT_EQ(QFileInfo::exists(rig.folder()), !c.quarantined) << c.spoil;
        EXPECT_EQ(QFileInfo::exists(rig.quarantine() + QStringLiteral("/Doe_Jane_A1/Doe.zel")),
                  c.quarantined)
            << c.spoil;
        if (c.window) {
            EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("show ") +
                                                       QString::fromLatin1(c.window)))
                << c.spoil << rig.fakes.windows.log.join(QLatin1Char('|')).toStdString();
        }
        EXPECT_EQ(rig.fakes.boxes.shown,
                  c.box ? QStringList{message_text(c.box)} : QStringList{})
            << c.spoil;
        EXPECT_FALSE(rig.fakes.windows.log.contains(QStringLiteral("show Form5"))) << c.spoil;
        // The link is searched for again after every ending.
        EXPECT_TRUE(rig.form.Timer_module_connect->Enabled() ||
                    rig.form.Timer_HeartBeat->Enabled())
            << c.spoil;
        if (c.spoil == comma_format) {
            EXPECT_EQ(rig.fakes.windows.message_texts.back(),
                      (QStringList{message_text(343), message_text(345) + QStringLiteral(" dot"),
                                   message_text(344) + QStringLiteral(" comma")}));
        }
    }
}

TEST(PatientLoad, a_file_that_is_no_patient_file_draws_message_128_and_stays) {
    WorkflowRig rig;
    QDir().mkpath(rig.folder());
    const QString path = rig.folder() + QStringLiteral("/Notes.zel");
    ASSERT_TRUE(write_patient_files(path, {QStringLiteral("Shopping list"), QStringLiteral("milk")}));
    rig.load(path);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(128)});
    EXPECT_TRUE(QFileInfo::exists(path));
    EXPECT_FALSE(rig.form.patient_defined);
}

TEST(PatientLoad, the_second_quarantine_of_a_name_goes_beside_the_first) {
    WorkflowRig rig;
    for (int round = 1; round <= 2; ++round) {
        rig.create();
        rig.leave();
        QFile::remove(rig.folder() + QStringLiteral("/Doe.sfv"));
        rig.load(rig.zel());
    }
    EXPECT_TRUE(QFileInfo::exists(rig.quarantine() + QStringLiteral("/Doe_Jane_A1/Doe.zel")));
    EXPECT_TRUE(QFileInfo::exists(rig.quarantine() + QStringLiteral("/Doe_Jane_A1( 2)/Doe.zel")));
    EXPECT_FALSE(QFileInfo::exists(rig.folder()));
}

TEST(PatientLoad, the_session_dialog_refuses_a_session_of_the_loaded_patients_history) {
    WorkflowRig rig;
    rig.create();
    rig.form.session = QStringLiteral("1");
    rig.fakes.windows.answer(0);  // Yes: the session is saved
    ASSERT_TRUE(rig.form.leave_current_patient());
    // Another patient's names are still in the members when the load begins.
    rig.form.patient_last_name = QStringLiteral("Roe");
    QString suggested;
    bool refused = false;
    rig.fakes.dialogs.choose_file(rig.zel());
    rig.fakes.windows.during(Window::Form5, [&] {
        Form5& f = *rig.form.form5;
        suggested = f.Text_session.Text;
        WorkflowRig::type(f, f.Text_session, QStringLiteral("1"));
        f.click(f.button_done);
        refused = !f.unloaded;
        f.click(f.button_cancel);
    });
    rig.form.load_existing_patient_Click();
    EXPECT_EQ(suggested, QStringLiteral("2"));
    EXPECT_TRUE(refused);
    EXPECT_FALSE(rig.form.patient_defined);
}

}  // namespace
}  // namespace zel::test
