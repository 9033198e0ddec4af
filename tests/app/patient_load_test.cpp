// Creating a patient and loading one back: the files written, the tests of a load with the
// report and the fate of the folder for each, and the patient in force afterwards.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "app/patient_rig.h"
#include "data/patient_file.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct WorkflowRig : Rig {
    WorkflowRig() {
        default_settings(form);
        form.data_directory = app_data.path();
    }
    QString zel() const { return form.data_directory + QStringLiteral("/Doe_Jane_A1/Doe.zel"); }
    QString quarantined() const {
        return form.data_directory + '/' + message_text(342) + "/Doe_Jane_A1/Doe.zel";
    }
    // Chooses the file in the file dialog; the session dialog is given "2" and Done.
    void load(const QString& path) {
        fakes.dialogs.choose_file(path);
        fakes.windows.during(Window::Form5, [this] {
            form.form5->type_text(form.form5->Text_session, QStringLiteral("2"), 1);
            form.form5->click(form.form5->button_done);
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
    create_doe(rig);
    ASSERT_TRUE(rig.form.patient_defined);
    EXPECT_FALSE(QFile::permissions(rig.zel()) & QFile::WriteOwner);  // read-only
    EXPECT_TRUE(QFileInfo::exists(doe_folder(rig) + QStringLiteral("/Doe.sfv")));
    EXPECT_EQ(patient_view(rig.form) << rig.form.gating_start_mode,
              (QStringList{"Doe", message_text(201) + " 1", message_text(117) + " A1",
                           message_text(269), message_text(289),
                           "record 1 settings 1 history 1 diagnostics 0", message_text(269)}));
    EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("ask ") + message_text(202)));
    EXPECT_FLOAT_EQ(rig.form.thresh, 1.5f);

    // Leaving a gated patient for a Create that is cancelled: the gating library still hears
    // that no gated treatment stands, and keeps no relay permission of the patient before.
    rig.form.Gated_Treatment = true;
    rig.fakes.tarrow.calls.clear();
    rig.fakes.windows.answer(1);  // No to saving the session
    rig.fakes.windows.during(Window::Form5, [&] { rig.form.form5->click(rig.form.form5->button_cancel); });
    rig.form.create_new_patient_Click();
    EXPECT_FALSE(rig.form.patient_defined);
    EXPECT_EQ(patient_view(rig.form), (QStringList{message_text(226), "", "", message_text(269),
                                                   "", "record 0 settings 0 history 0 diagnostics 1"}));
    EXPECT_EQ(rig.fakes.tarrow.calls,
              (QStringList{"Close()", "SetRelayEnablePermission(1)", "Close()"}));
}

// A saved patient comes back with its settings for a new session, from a data folder too whose
// name holds ".zel" and ".dat"; a gated one opens the gating link, or fails without the library.
TEST(PatientLoad, a_saved_patient_comes_back_with_its_settings_for_a_new_session) {
    struct Case { bool gated, missing; const char* data = ""; };
    for (const Case c :
         {Case{false, false, "/site.zel.dat/patients"}, Case{true, false}, Case{true, true}}) {
        SCOPED_TRACE(testing::Message() << c.gated << c.missing);
        WorkflowRig rig;
        rig.form.data_directory += QLatin1String(c.data);
        QDir().mkpath(rig.form.data_directory);
        create_doe(rig, c.gated);
        rig.leave();
        rig.fakes.tarrow.calls.clear();
        rig.fakes.tarrow.missing = c.missing;
        // Settings of the console that the patient's file overrides.
        rig.form.thresh = 0.4f;
        rig.form.max_y = 5;
        rig.load(rig.zel());
        EXPECT_EQ(rig.form.patient_defined, !c.missing);
        EXPECT_EQ(rig.form.Gated_Treatment, c.gated && !c.missing);
        EXPECT_EQ(rig.fakes.boxes.shown, c.missing ? QStringList{message_text(355)} : QStringList{});
        EXPECT_EQ(rig.fakes.dialogs.filters.last(), "ZEL Patient Parameter File|*.zel");
        if (c.missing) {
            EXPECT_EQ(rig.form.Label_last_name.Caption, message_text(226));
            continue;
        }
        const QString mode = message_text(c.gated ? 268 : 269);
        EXPECT_EQ(patient_view(rig.form) << rig.form.gating_start_mode,
                  (QStringList{"Doe", message_text(201) + " 2", message_text(117) + " A1", mode,
                               message_text(289), "record 1 settings 1 history 1 diagnostics 0", mode}));
        EXPECT_FLOAT_EQ(rig.form.thresh, 1.5f);
        EXPECT_EQ(std::tuple(rig.form.max_y, rig.form.min_y, rig.form.duration, rig.form.inhale),
                  std::tuple(2.0, -2.0, 12.0, true));
        EXPECT_EQ(rig.fakes.tarrow.calls.value(0) == "ClearTimingViolation()", c.gated);
    }
}

TEST(PatientLoad, each_refusal_has_its_report_and_its_fate_for_the_folder) {
    // The patient file's lines are changed, or the files are spoiled on disk.
    struct Case {
        const char* name;
        std::function<void(WorkflowRig&, QStringList&)> spoil;
        const char* window;  // the message window shown
        int box;             // or the message box's text
        bool quarantined;
    };
    const Case cases[] = {
        {"no companion", [](WorkflowRig& r, QStringList&) {
             QFile::remove(doe_folder(r) + QStringLiteral("/Doe.sfv")); }, "Form_CorruptInfo", 0, true},
        {"edited", [](WorkflowRig& r, QStringList&) {
             QFile::setPermissions(r.zel(), QFile::ReadOwner | QFile::WriteOwner);
             QFile file(r.zel());
             ASSERT_TRUE(file.open(QIODevice::Append));
             file.write("Extra:1\r\n"); }, "Form_CorruptInfo", 0, true},
        {"other version", [](WorkflowRig&, QStringList& l) { l[1] = QStringLiteral("2.99.00"); },
         "Form_WrongVersion", 0, true},
        {"comma format", [](WorkflowRig&, QStringList& l) { l[13] = "Number Format:comma"; },
         "Form_NumberFormatWarning", 0, false},
        {"garbage", [](WorkflowRig&, QStringList& l) { l[7] = "Breath Hold Duration: long "; },
         nullptr, 129, false},
        {"cancel", {}, nullptr, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        WorkflowRig rig;
        create_doe(rig);
        rig.leave();
        QStringList lines = patient_file_lines(
            rig.form.patient_parameter_filestamp, rig.form.software_version,
            PatientParameters{"Doe", "Jane", "A1", 1.5f, 12, 2, true, 1, 1000, false},
            QStringLiteral("1/2/2026"), QStringLiteral("dot"), QLatin1Char('.'));
        const QStringList written = lines;
        if (c.spoil) c.spoil(rig, lines);
        ASSERT_TRUE(lines == written || write_patient_files(rig.zel(), lines));
        rig.fakes.windows.log.clear();
        rig.fakes.windows.message_texts.clear();
        rig.load(c.spoil ? rig.zel() : QString());
        EXPECT_FALSE(rig.form.patient_defined);
        EXPECT_EQ(QFileInfo::exists(doe_folder(rig)), !c.quarantined);
        EXPECT_EQ(QFileInfo::exists(rig.quarantined()), c.quarantined);
        EXPECT_EQ(rig.fakes.windows.log.filter("show "),
                  c.window ? QStringList{QStringLiteral("show ") + c.window} : QStringList{});
        EXPECT_EQ(rig.fakes.boxes.shown, c.box ? QStringList{message_text(c.box)} : QStringList{});
        // The link is searched for again after every ending.
        EXPECT_TRUE(rig.form.Timer_module_connect->Enabled() || rig.form.Timer_HeartBeat->Enabled());
        if (QLatin1String(c.window) == QLatin1String("Form_NumberFormatWarning")) {
            EXPECT_EQ(rig.fakes.windows.message_texts.back(),
                      (QStringList{message_text(343), message_text(345) + QStringLiteral(" dot"),
                                   message_text(344) + QStringLiteral(" comma")}));
        }
    }

    // A file that is no patient file at all stays where it is.
    WorkflowRig rig;
    const QString notes = doe_folder(rig) + QStringLiteral("/Notes.zel");
    QDir().mkpath(doe_folder(rig));
    ASSERT_TRUE(write_patient_files(notes, {QStringLiteral("Shopping list"), QStringLiteral("milk")}));
    rig.load(notes);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(128)});
    EXPECT_TRUE(QFileInfo::exists(notes) && !rig.form.patient_defined);
}

}  // namespace
}  // namespace zel::test
