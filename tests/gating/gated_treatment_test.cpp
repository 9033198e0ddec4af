// Supervision of the gating system in a gated treatment: each branch of the poll's analysis
// with its lamp, its text and its dialog, the lost connection, and the missing library.
#include <gtest/gtest.h>

#include <QFile>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

struct GatingRig : Rig {
    GatingRig() {
        form.Gated_Treatment = true;
        form.patient_defined = true;
        form.b_state = 1;
        form.data_directory = app_data.path();
        form.patient_last_name = QStringLiteral("Doe");
        form.patient_first_name = QStringLiteral("Jane");
        form.patient_medical_id = QStringLiteral("A1");
        form.session = QStringLiteral("2");
        QDir().mkpath(folder());
    }
    QString folder() const { return app_data.path() + QStringLiteral("/Doe_Jane_A1"); }
    void poll(const char* status) {
        fakes.tarrow.set_status(status);
        form.poll_tarrow_status();
    }
    QString lamp() const {
        QStringList on;
        if (form.Image_Gating_Ready.Visible) on.append(QStringLiteral("ready"));
        if (form.Image_Gating_Closed.Visible) on.append(QStringLiteral("closed"));
        if (form.Image_Gating_Fault.Visible) on.append(QStringLiteral("fault"));
        return on.join(QLatin1Char('+'));
    }
    QStringList shown() const { return fakes.windows.log.filter(QStringLiteral("show ")); }
};

TEST(GatedTreatment, each_branch_of_the_analysis_shows_its_lamp_text_and_dialog) {
    struct Case {
        const char* name;
        const char* status;
        int16_t b_state;
        const char* lamp;
        int label2;  // message shown in Label2, 0 for untouched
        const char* dialog;
        int dialog_text;
        bool abort;
    };
    const Case cases[] = {
        {"all well, open", "^O:?EL", 1, "ready", 0, "", 0, false},
        {"all well, closed", "^C:?EL", 4, "closed", 0, "", 0, false},
        {"all well, closing", "^c:?EL", 4, "closed", 0, "", 0, false},
        {"disabled", "^O:?DL", 1, "", 274, "", 0, false},
        {"fault mode, in a hold: no abort", "^C:?FL", 4, "", 278, "", 0, false},
        {"relay not opening", "^X:?EL", 1, "fault", 0, "show Form_OverRide_Enable", 276, false},
        {"relay not closing in a hold", "^Y:?EL", 4, "fault", 0, "show Form_OverRide_Enable", 277,
         true},
        {"relay link down wins", "_Y:?EL", 2, "fault", 0, "show Form_OverRide_Enable", 272, true},
        {"relay state unknown, link down", "_U:?DL", 3, "fault", 0, "show Form_OverRide_Enable",
         272, true},
    };
    for (const auto& c : cases) {
        GatingRig rig;
        rig.form.b_state = c.b_state;
        rig.form.Label2.Caption = QStringLiteral("before");
        rig.poll(c.status);
        EXPECT_EQ(rig.lamp(), QString::fromLatin1(c.lamp)) << c.name;
        EXPECT_EQ(rig.form.Label2.Caption,
                  c.label2 ? message_text(c.label2) : QStringLiteral("before"))
            << c.name;
        EXPECT_EQ(rig.shown(), c.dialog[0] ? QStringList{c.dialog} : QStringList{}) << c.name;
        if (c.dialog_text) {
            EXPECT_EQ(rig.fakes.windows.message_texts.at(0),
                      (QStringList{message_text(c.dialog_text), message_text(275)}))
                << c.name;
        }
        EXPECT_EQ(rig.fakes.serial.sent(), QByteArray(c.abort ? "X" : "")) << c.name;
        EXPECT_EQ(rig.form.abort_by, c.abort ? QStringLiteral("tarrow") : QString()) << c.name;
        EXPECT_TRUE(rig.form.tarrowNewData);
    }
}

TEST(GatedTreatment, the_operator_chooses_manual_or_automated_after_a_hardware_problem) {
    for (int button : {0, 1}) {
        GatingRig rig;
        rig.fakes.windows.press(Window::Form_OverRide_Enable, button);
        rig.poll("^X:?EL");
        EXPECT_EQ(rig.form.Gating_OverRide, button == 1);
        EXPECT_EQ(rig.form.gating_label.Caption, message_text(button == 1 ? 269 : 268));
        EXPECT_FALSE(rig.form.tarrow_error_lock);
        if (button == 1) {
            EXPECT_EQ(rig.form.gating_start_mode, message_text(316));
        }
    }
}

TEST(GatedTreatment, the_way_back_from_manual_waits_for_the_end_of_the_hold) {
    GatingRig rig;
    rig.form.Gating_OverRide = true;
    rig.form.b_state = 4;
    rig.poll("^C:?EL");
    EXPECT_TRUE(rig.shown().isEmpty()) << "held back during the hold";
    EXPECT_TRUE(rig.form.Gating_OverRide);
    rig.form.b_state = 1;
    rig.poll("^O:?EL");
    EXPECT_EQ(rig.shown(), QStringList{QStringLiteral("show Form_OverRide_Disable")});
    EXPECT_EQ(rig.fakes.windows.message_texts.at(0), QStringList{message_text(295)});
    EXPECT_FALSE(rig.form.Gating_OverRide);
    EXPECT_EQ(rig.form.gating_label.Caption, message_text(268));
    EXPECT_FALSE(rig.form.tarrow_error_lock);
}

TEST(GatedTreatment, a_question_withdrawn_when_the_system_recovers_and_never_stacked) {
    GatingRig rig;
    int polls_under_the_dialog = 0;
    rig.fakes.windows.during(Window::Form_OverRide_Enable, [&] {
        // Polls go on under the dialog: a new problem updates the text, no second dialog.
        ++polls_under_the_dialog;
        rig.poll("_O:?EL");
        EXPECT_EQ(rig.form.gating_dialog_message, message_text(272));
        rig.poll("^O:?EL");  // recovered: the dialog is taken away
    });
    rig.poll("^X:?EL");
    EXPECT_EQ(polls_under_the_dialog, 1);
    EXPECT_EQ(rig.shown(), QStringList{QStringLiteral("show Form_OverRide_Enable")});
    EXPECT_EQ(rig.fakes.windows.message_texts.at(0).at(0), message_text(276)) << "the old text";
    EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("unload Form_OverRide_Enable")));
    EXPECT_FALSE(rig.form.Gating_OverRide) << "unloaded, not answered";
    EXPECT_FALSE(rig.form.tarrow_error_lock);
}

TEST(GatedTreatment, the_prompt_returns_once_the_system_is_enabled_again) {
    GatingRig rig;
    rig.poll("^O:?DL");
    EXPECT_TRUE(rig.form.tarrow_Enable_error);
    EXPECT_EQ(rig.form.gating_error_message, message_text(274));
    rig.poll("^O:?EU");
    EXPECT_EQ(rig.form.Label2.Caption, message_text(261));
    EXPECT_FALSE(rig.form.tarrow_Enable_error);
    EXPECT_TRUE(rig.fakes.tarrow.calls.contains(QStringLiteral("SetRelayEnablePermission(0)")));
}

TEST(GatedTreatment, a_lost_connection_is_retried_twice_silently_then_asked_about) {
    GatingRig rig;
    rig.form.b_state = 4;
    rig.fakes.tarrow.connected_result = 1;
    for (int k = 0; k < 2; ++k) {
        rig.fakes.tarrow.calls.clear();
        rig.form.poll_tarrow_status();
        EXPECT_EQ(rig.fakes.tarrow.calls, (QStringList{"Connected()", "Close()", "Open()"})) << k;
        EXPECT_TRUE(rig.shown().isEmpty()) << k;
        EXPECT_TRUE(rig.fakes.serial.sent().isEmpty()) << k;
    }
    rig.fakes.tarrow.calls.clear();
    rig.form.poll_tarrow_status();
    EXPECT_EQ(rig.fakes.serial.sent(), QByteArray("X"));
    EXPECT_EQ(rig.form.abort_by, QStringLiteral("tarrow"));
    EXPECT_EQ(rig.lamp(), QStringLiteral("fault"));
    EXPECT_EQ(rig.shown(), QStringList{QStringLiteral("show Form_OverRide_Enable")});
    EXPECT_EQ(rig.fakes.windows.message_texts.at(0).at(0), message_text(271));
    EXPECT_EQ(rig.fakes.tarrow.calls, (QStringList{"Connected()", "Close()", "Open()"}));
}

TEST(GatedTreatment, a_timing_violation_is_cleared_by_ok_and_logged_with_one_header) {
    GatingRig rig;
    rig.fakes.clock.when = QDateTime(QDate(2026, 11, 22), QTime(9, 5, 7));
    rig.form.total_counts = 3050;  // 61 s
    rig.poll("^O!?EL");
    EXPECT_EQ(rig.shown(), QStringList{QStringLiteral("show Form_FastGatingClear")});
    EXPECT_TRUE(rig.fakes.tarrow.calls.contains(QStringLiteral("ClearTimingViolation()")));
    rig.poll("^O!?EL");
    EXPECT_EQ(rig.shown().size(), 1) << "locked until a clean poll";
    rig.poll("^O:?EL");
    EXPECT_FALSE(rig.form.tarrow_error_lock);
    rig.poll("^O!?EL");
    EXPECT_EQ(rig.shown().size(), 2);

    QFile log(rig.folder() + QStringLiteral("/tarrow_log.txt"));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QString entry = QString(70, QLatin1Char('*')) + QStringLiteral("\r\n") +
                          rig.fakes.locale.medium_date(rig.fakes.clock.when.date()) +
                          QStringLiteral("   ") +
                          rig.fakes.locale.medium_time(rig.fakes.clock.when.time()) +
                          QStringLiteral("\r\nTiming Violation Detected Session ID 2 ") +
                          message_text(221) + QStringLiteral(" 0:1:1\r\n\r\n");
    EXPECT_EQ(QString::fromLatin1(log.readAll()),
              QStringLiteral("Last Name : Doe\r\nFirst Name : Jane\r\nMedical ID : A1\r\n\r\n") +
                  entry + entry);
}

TEST(GatedTreatment, a_missing_library_ends_gated_operation_and_the_patient) {
    GatingRig rig;
    rig.fakes.tarrow.missing = true;
    rig.form.poll_tarrow_status();
    EXPECT_FALSE(rig.form.Gated_Treatment);
    EXPECT_FALSE(rig.form.patient_defined);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(355)});
}

}  // namespace
}  // namespace zel::test
