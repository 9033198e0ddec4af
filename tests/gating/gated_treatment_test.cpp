// Supervision of the gating system in a gated treatment: each branch of the poll's analysis
// with its lamp, its text and its dialog, the lost connection, and the missing library; and
// the windows that show the gating system and the module's levels.
#include <gtest/gtest.h>

#include <functional>

#include "app/patient_rig.h"
#include "fakes/files.h"
#include "language/messages.h"

namespace zel::test {
namespace {

const QString enable_dialog = QStringLiteral("show Form_OverRide_Enable");

struct GatingRig : Rig {
    GatingRig() {
        define_patient(*this);
        form.session = QStringLiteral("2"), form.Gated_Treatment = true, form.b_state = 1;
    }
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
    // The first message window's texts.
    QStringList texts() const { return fakes.windows.message_texts.at(0); }
};

TEST(GatedTreatment, each_branch_of_the_analysis_shows_its_lamp_text_and_dialog) {
    // Label2's message (0: untouched) and the first text of the override question (0: none).
    struct Case {
        const char *name, *status;
        int16_t b_state;
        const char* lamp;
        int label2, dialog_text;
        bool abort;
    };
    const Case cases[] = {
        {"all well, open", "^O:?EL", 1, "ready", 0, 0, false},
        {"all well, closed", "^C:?EL", 4, "closed", 0, 0, false},
        {"all well, closing", "^c:?EL", 4, "closed", 0, 0, false},
        {"disabled", "^O:?DL", 1, "", 274, 0, false},
        {"fault mode, in a hold: no abort", "^C:?FL", 4, "", 278, 0, false},
        {"relay not opening", "^X:?EL", 1, "fault", 0, 276, false},
        {"relay not closing in a hold", "^Y:?EL", 4, "fault", 0, 277, true},
        {"relay link down wins", "_Y:?EL", 2, "fault", 0, 272, true},
        {"relay state unknown, link down", "_U:?DL", 3, "fault", 0, 272, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        GatingRig rig;
        rig.form.b_state = c.b_state;
        rig.form.Label2.Caption = QStringLiteral("before");
        rig.poll(c.status);
        EXPECT_EQ(rig.lamp(), QString::fromLatin1(c.lamp));
        EXPECT_EQ(rig.form.Label2.Caption, c.label2 ? message_text(c.label2) : "before");
        EXPECT_EQ(rig.shown(), c.dialog_text ? QStringList{enable_dialog} : QStringList{});
        EXPECT_EQ(rig.fakes.windows.message_texts.size(), c.dialog_text ? 1u : 0u);
        EXPECT_TRUE(!c.dialog_text ||
                    rig.texts() == (QStringList{message_text(c.dialog_text), message_text(275)}));
        EXPECT_EQ(rig.fakes.serial.sent() + rig.form.abort_by.toLatin1(), c.abort ? "Xtarrow" : "");
        EXPECT_TRUE(rig.form.tarrowNewData);
    }
}

TEST(GatedTreatment, the_operator_chooses_manual_or_automated_after_a_hardware_problem) {
    for (int button : {0, 1}) {
        GatingRig rig;
        rig.fakes.windows.press(Window::Form_OverRide_Enable, button);
        rig.poll("^X:?EL");
        // The operator's choice is read off the buttons: automated first, manual second.
        EXPECT_EQ(rig.fakes.windows.message_buttons.at(0),
                  (QStringList{message_text(268), message_text(269)}));
        EXPECT_TRUE(rig.form.Gating_OverRide == (button == 1) && !rig.form.tarrow_error_lock);
        EXPECT_EQ((QStringList{rig.form.gating_label.Caption, rig.form.gating_start_mode}),
                  (button == 1 ? QStringList{message_text(269), message_text(316)}
                               : QStringList{message_text(268), message_text(268)}));
    }
}

TEST(GatedTreatment, the_way_back_from_manual_waits_for_the_end_of_the_hold) {
    GatingRig rig;
    rig.form.Gating_OverRide = true;
    rig.form.b_state = 4;
    rig.poll("^C:?EL");
    EXPECT_TRUE(rig.shown().isEmpty() && rig.form.Gating_OverRide) << "held back during the hold";
    rig.form.b_state = 1;
    rig.poll("^O:?EL");
    EXPECT_EQ(rig.shown(), QStringList{QStringLiteral("show Form_OverRide_Disable")});
    EXPECT_EQ(rig.texts(), QStringList{message_text(295)});
    EXPECT_FALSE(rig.form.Gating_OverRide || rig.form.tarrow_error_lock);
    EXPECT_EQ(rig.form.gating_label.Caption, message_text(268));

    // A system that answers again but is not enabled offers the way back all the same.
    GatingRig disabled;
    disabled.form.Gating_OverRide = true;
    disabled.poll("^O:?DL");
    EXPECT_EQ(disabled.shown(), QStringList{QStringLiteral("show Form_OverRide_Disable")});
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
    EXPECT_EQ(rig.shown(), QStringList{enable_dialog});
    EXPECT_EQ(rig.texts().at(0), message_text(276)) << "the old text";
    EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("unload Form_OverRide_Enable")));
    EXPECT_FALSE(rig.form.Gating_OverRide || rig.form.tarrow_error_lock) << "unloaded, not answered";
}

TEST(GatedTreatment, the_prompt_returns_once_the_system_is_enabled_again) {
    GatingRig rig;
    rig.poll("^O:?DL");
    EXPECT_TRUE(rig.form.tarrow_Enable_error && rig.form.gating_error_message == message_text(274));
    rig.poll("^O:?EU");
    EXPECT_TRUE(!rig.form.tarrow_Enable_error && rig.form.Label2.Caption == message_text(261));
    EXPECT_TRUE(rig.fakes.tarrow.calls.contains(QStringLiteral("SetRelayEnablePermission(0)")));
}

// A lost connection is reopened twice without a word; the third loss of the treatment aborts
// the hold and asks. A good poll between two losses does not give the retries back.
TEST(GatedTreatment, a_lost_connection_is_retried_twice_silently_then_asked_about) {
    GatingRig rig;
    rig.form.b_state = 4;
    int losses = 0;
    for (const bool up : {false, true, false, true, false}) {
        rig.fakes.tarrow.calls.clear();
        rig.fakes.tarrow.connected_result = up ? 0 : 1;
        rig.poll("^C:?EL");
        if (up) continue;
        ++losses;
        EXPECT_EQ(rig.fakes.tarrow.calls, (QStringList{"Connected()", "Close()", "Open()"}));
        EXPECT_EQ(rig.shown().size(), losses == 3 ? 1 : 0) << losses;
        EXPECT_EQ(rig.fakes.serial.sent(), QByteArray(losses == 3 ? "X" : "")) << losses;
    }
    EXPECT_EQ(rig.form.gating_start_attempts, 2);
    EXPECT_EQ((QStringList{rig.form.abort_by, rig.lamp(), rig.texts().at(0)}),
              (QStringList{"tarrow", "fault", message_text(271)}));

    // A new treatment's link, opened with the relay's permission locked, has both again: its
    // first loss is retried without a word.
    rig.fakes.tarrow.calls.clear();
    rig.form.open_tarrow_link();
    EXPECT_EQ(rig.fakes.tarrow.calls, (QStringList{"Open()", "SetRelayEnablePermission(0)"}));
    rig.fakes.tarrow.connected_result = 1;
    rig.poll("^O:?EL");
    EXPECT_EQ(rig.shown().size(), 1);
}

TEST(GatedTreatment, a_timing_violation_is_cleared_by_ok_and_logged_with_one_header) {
    GatingRig rig;
    rig.fakes.clock.when = QDateTime(QDate(2026, 11, 22), QTime(9, 5, 7));
    rig.form.total_counts = 3050;  // 61 s
    rig.poll("^O!?EL");
    EXPECT_EQ(rig.shown(), QStringList{QStringLiteral("show Form_FastGatingClear")});
    EXPECT_EQ(rig.fakes.windows.message_captions, QStringList{message_text(147)});
    EXPECT_TRUE(rig.fakes.tarrow.calls.contains(QStringLiteral("ClearTimingViolation()")));
    rig.poll("^O!?EL");
    EXPECT_EQ(rig.shown().size(), 1) << "locked until a clean poll";
    rig.poll("^O:?EL");
    EXPECT_FALSE(rig.form.tarrow_error_lock);
    rig.poll("^O!?EL");
    EXPECT_EQ(rig.shown().size(), 2);

    const QString entry = QString(70, QLatin1Char('*')) + QStringLiteral("\r\n") +
                          rig.fakes.locale.medium_date(rig.fakes.clock.when.date()) + "   " +
                          rig.fakes.locale.medium_time(rig.fakes.clock.when.time()) +
                          QStringLiteral("\r\nTiming Violation Detected Session ID 2 ") +
                          message_text(221) + QStringLiteral(" 0:1:1\r\n\r\n");
    EXPECT_EQ(QString::fromLatin1(contents(doe_folder(rig) + QStringLiteral("/tarrow_log.txt"))),
              QStringLiteral("Last Name : Doe\r\nFirst Name : Jane\r\nMedical ID : A1\r\n\r\n") +
                  entry + entry);
}

TEST(GatedTreatment, a_missing_library_ends_gated_operation_and_the_patient) {
    GatingRig rig;
    rig.fakes.tarrow.missing = true;
    rig.form.poll_tarrow_status();
    EXPECT_FALSE(rig.form.Gated_Treatment || rig.form.patient_defined);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(355)});
}

// Once the library is closed no call reaches the relay: a relay closed for a hold is opened
// on every path that lets the library go, before it goes.
TEST(GatedTreatment, every_path_that_lets_the_library_go_opens_a_closed_relay_first) {
    using Path = std::function<void(GatingRig&)>;
    struct Case { const char* name; Path path; bool patient_stays; };
    const Case cases[] = {
        {"exit", [](GatingRig& r) { r.fakes.windows.answer(1); r.form.zel_exit_Click(); }, true},
        {"leaving the patient",
         [](GatingRig& r) { r.fakes.windows.answer(1); r.form.leave_current_patient(); }, false},
        {"closing the link", [](GatingRig& r) { r.form.close_tarrow_link(); }, true},
        {"a lost connection retried",
         [](GatingRig& r) { r.fakes.tarrow.connected_result = 1; r.form.poll_tarrow_status(); }, true},
        {"a function missing from the library",
         [](GatingRig& r) { r.fakes.tarrow.lacks = "GetStatus"; r.form.poll_tarrow_status(); }, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        GatingRig rig;
        rig.form._Tarrow_SetRelayState(1);
        rig.fakes.tarrow.calls.clear();
        c.path(rig);
        const QStringList& calls = rig.fakes.tarrow.calls;
        const qsizetype opened = calls.indexOf(QStringLiteral("SetRelayState(0)"));
        ASSERT_GE(opened, 0) << calls.join(' ').toStdString();
        const qsizetype closed = calls.indexOf(QStringLiteral("Close()"));
        EXPECT_TRUE(closed < 0 || opened < closed) << calls.join(' ').toStdString();
        EXPECT_FALSE(rig.form.relay_close_commanded);
        EXPECT_EQ(rig.form.patient_defined, c.patient_stays);
    }
}

TEST(GatedTreatment, each_poll_gives_its_gating_fields_to_one_curve_line) {
    GatingRig rig;
    rig.form.gating_start_mode.clear();
    const QString path = doe_folder(rig) + QStringLiteral("/curve.dat");
    rig.form.curve_file = std::make_unique<AppendFile>(path, "test");
    rig.form.curve_file->open(AppendFile::Start::anew);
    rig.poll("^O:?EL");
    // An empty start mode is taken as automated by the poll.
    EXPECT_EQ(rig.form.gating_start_mode, message_text(268));
    for (int k = 0; k < 2; ++k) rig.form.write_recording_line();
    rig.poll("^C:?EL");
    rig.form.write_recording_line();
    rig.form.curve_file->close();
    QStringList ends;  // the three gating fields of each line
    for (const QByteArray& line : contents(path).split('\n'))
        ends.append(QString::fromLatin1(line).section(u';', -3));
    EXPECT_EQ(ends, (QStringList{"Automated;Enabled;Open\r", " - ; - ; - \r",
                                 "Automated;Enabled;Closed\r", ""}));
}

// The Help menu's windows: the gating system's service view and the About box.
TEST(GatingDiagnostics, each_status_letter_in_words_and_unknown_letters_leave_the_label) {
    struct Case { const char* status; QStringList words; };
    // Fast gating, permission, mode, relay link.
    const Case cases[] = {
        {"^O:?EL", {"Not Active", "Locked", "Enabled", "Relay Link Up"}},
        {"_C!?DU", {"Active", "Unlocked", "Disabled", "Relay Link Down"}},
        {"^X:?FL", {"Not Active", "Locked", "Fault", "Relay Link Up"}},
        {"#Q#?#Z", {"Not Active", "Locked", "Fault", "Relay Link Up"}},  // as they were
    };
    Rig rig;
    rig.fakes.windows.during(Window::Form_Gating, [&] {
        FormGating& g = *rig.form.form_gating;
        for (const auto& c : cases) {
            rig.fakes.tarrow.set_status(c.status);
            rig.fakes.timers.get("Timer_Tarrow_Diagnostics").tick();
            EXPECT_EQ((QStringList{g.Label1.Caption, g.Label_Comm.Caption, g.Label_Relay_Firmware.Caption,
                                   g.Label_Fast_Gating.Caption, g.Label_Permission.Caption,
                                   g.Label_Mode.Caption, g.Label_Relay_Comm.Caption}),
                      QStringList({message_text(335), message_text(333), "R 1.02   "}) + c.words)
                << c.status;
        }
        EXPECT_EQ(g.Label_Relay_State.Caption, message_text(330)) << "the X of the third case";
        // Without the link each tick says so, empties the rest and tries again.
        rig.fakes.tarrow.connected_result = 1;
        rig.fakes.tarrow.calls.clear();
        rig.fakes.timers.get("Timer_Tarrow_Diagnostics").tick();
        EXPECT_EQ((QStringList{g.Label_Comm.Caption, g.Label_Mode.Caption, g.Label_DLL_version.Caption}),
                  (QStringList{message_text(334), "", ""}));
        EXPECT_EQ(rig.fakes.tarrow.calls, (QStringList{"Connected()", "Close()", "Open()"}));
        g.Done_Button_Click();
        EXPECT_FALSE(g.Timer_Tarrow_Diagnostics->Enabled());
        EXPECT_EQ(rig.fakes.tarrow.calls.back(), QStringLiteral("Close()"));
    });
    rig.form.Gating_Diagnostics_Click();
    EXPECT_EQ(rig.fakes.windows.log, QStringList{QStringLiteral("show Form_Gating")});
}

TEST(GatingDiagnostics, without_the_library_the_first_tick_is_an_unhandled_failure) {
    Rig rig;
    rig.fakes.tarrow.missing = true;
    rig.fakes.windows.during(Window::Form_Gating,
                             [&] { rig.fakes.timers.get("Timer_Tarrow_Diagnostics").tick(); });
    rig.form.Gating_Diagnostics_Click();
    EXPECT_EQ(rig.ended, QStringList{"1"});
    EXPECT_TRUE(rig.fakes.boxes.shown.size() == 1 &&
                !rig.form.form_gating->Timer_Tarrow_Diagnostics->Enabled());
}

// The gating frame and its library's version only in a gated treatment; the levels of the
// last status frame, the vacuum to its rounding.
TEST(AboutBox, shows_the_levels_of_each_status_frame_while_open) {
    for (bool gated : {false, true}) {
        Rig rig;
        rig.form.Gated_Treatment = gated;
        rig.form.tarrow_DLL_firmware = QStringLiteral("1.0.0.7");
        rig.form.line_level = 12.345f, rig.form.battery_level = 11.5f;
        rig.fakes.windows.during(Window::Form10, [&] {
            Form10& about = *rig.form.form10;
            EXPECT_TRUE(rig.form.about_visible && about.Frame_gating.Visible == gated);
            EXPECT_EQ((QStringList{about.Label_tarrow_dll.Caption, about.line_voltage.Caption,
                                   about.battery_voltage.Caption}),
                      (QStringList{gated ? "1.0.0.7" : "", "12.35", "11.50"}));
            rig.fakes.serial.receive(status_frame(104, 171, 200, 51));  // vacuum 1.875 psi
            EXPECT_EQ((QStringList{about.battery_voltage.Caption, about.Label_pressure.Caption,
                                   about.Label_vacuum.Caption}), (QStringList{"3.78", "12.83", "1.88"}));
            about.Done_Click(rig.form);
        });
        rig.form.About_Click();
        EXPECT_FALSE(rig.form.about_visible) << gated;
    }
}

}  // namespace
}  // namespace zel::test
