// A failure that no routine handles: the beam goes off first, one report, then nothing runs.
#include <gtest/gtest.h>

#include "fakes/rig.h"

namespace zel::test {
namespace {

constexpr uint8_t switch_held = 0x06;

// A gated hold under way: the relay was closed at its start.
struct GatedHoldRig : Rig {
    explicit GatedHoldRig(bool gated = true) {
        form.patient_defined = true;
        form.Gated_Treatment = gated;
        form.duration = 15;
        fakes.timers.get("Timer_HeartBeat").set_Enabled(true);
        fakes.serial.receive(data_frame(switch_held, 1, 100));
        fakes.serial.receive(data_frame(switch_held, 2, 100));
        fakes.serial.receive(data_frame(switch_held, 4, 400, 700));
        fakes.serial.OnComm = [this] {
            form.run_event("MSComm1_OnComm", [this] { form.MSComm1_OnComm(); });
        };
        fakes.serial.clear_sent();
        fakes.tarrow.calls.clear();
    }
    // The frame whose volume word has no 16-bit magnitude.
    QByteArray bad_frame() { return data_frame(switch_held, 4, static_cast<int16_t>(0x8000), 650); }
};

TEST(FailSafe, a_failure_in_a_gated_hold_opens_the_relay_and_closes_the_link_before_the_box) {
    GatedHoldRig rig;
    ASSERT_EQ(rig.form.b_state, 4);
    QStringList calls_at_box;
    bool port_open_at_box = true;
    rig.fakes.boxes.while_shown = [&] {
        calls_at_box = rig.fakes.tarrow.calls;
        port_open_at_box = rig.fakes.serial.PortOpen();
        // Under the box the module goes on streaming, a good frame and the bad one again.
        rig.fakes.serial.receive(data_frame(switch_held, 4, 400, 600));
        rig.fakes.serial.receive(rig.bad_frame());
    };
    const double counted = rig.form.total_counts;
    rig.fakes.serial.receive(rig.bad_frame());

    EXPECT_EQ(calls_at_box, (QStringList{"SetRelayState(0)", "Close()"}));
    EXPECT_FALSE(port_open_at_box);
    ASSERT_EQ(rig.fakes.boxes.shown.size(), 1);
    EXPECT_TRUE(rig.fakes.boxes.shown[0].startsWith(QStringLiteral("Run-time error 6 in MSComm1_OnComm")))
        << rig.fakes.boxes.shown[0].toStdString();
    EXPECT_EQ(rig.ended, QStringList{QStringLiteral("1")});
    EXPECT_EQ(rig.form.total_counts, counted + 1) << "only the failing frame was counted";
    EXPECT_TRUE(rig.fakes.serial.sent().isEmpty());
    EXPECT_EQ(rig.fakes.tarrow.calls, calls_at_box);
}

TEST(FailSafe, after_the_report_no_entry_runs_and_the_beam_can_not_come_back) {
    GatedHoldRig rig;
    rig.fakes.serial.receive(rig.bad_frame());
    ASSERT_EQ(rig.fakes.boxes.shown.size(), 1);
    for (const char* name : {"Timer_module_connect", "Timer_HeartBeat", "Timer1", "pauseBeamTimer",
                             "Timer_form13_close_delay", "logo_banner", "Timer2"})
        EXPECT_FALSE(rig.fakes.timers.get(name).Enabled()) << name;

    int ran = 0;
    rig.form.run_event("Form_KeyDown", [&] { ++ran; });
    rig.form.run_event("menu", [&] { throw ZelError(6, {}, QStringLiteral("Overflow")); });
    EXPECT_EQ(ran, 0);
    // A handler resumed behind the box, as one that had opened a dialog would be.
    rig.form._Tarrow_SetRelayState(1);
    rig.form.send_command("A");
    EXPECT_EQ(rig.fakes.boxes.shown.size(), 1);
    EXPECT_EQ(rig.fakes.tarrow.relay_calls(), QStringList{"SetRelayState(0)"});
    EXPECT_TRUE(rig.fakes.serial.sent().isEmpty());
    EXPECT_EQ(rig.ended.size(), 1);
}

TEST(FailSafe, the_relay_is_left_alone_when_it_can_not_be_closed) {
    struct Case { bool gated; bool relay_closed_by_hand; QStringList calls; };
    const Case cases[] = {
        {false, false, {}},
        // A close not followed by an open, whatever the treatment mode says now.
        {false, true, {"SetRelayState(0)", "Close()"}},
        {true, false, {"SetRelayState(0)", "Close()"}},
    };
    for (const auto& c : cases) {
        GatedHoldRig rig(c.gated);
        if (c.relay_closed_by_hand) {
            rig.form._Tarrow_SetRelayState(1);
            rig.fakes.tarrow.calls.clear();
        }
        rig.fakes.serial.receive(rig.bad_frame());
        EXPECT_EQ(rig.fakes.tarrow.calls, c.calls) << c.gated << c.relay_closed_by_hand;
    }
}

TEST(FailSafe, a_checksum_log_that_can_not_be_written_is_reported_once) {
    Rig rig;
    rig.fakes.serial.OnComm = [&] {
        rig.form.run_event("MSComm1_OnComm", [&] { rig.form.MSComm1_OnComm(); });
    };
    rig.fakes.serial.receive(data_frame());
    // A file where the log folder should be.
    QFile blocker(rig.form.AppDataPath + QStringLiteral("/LOG"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    QByteArray spoiled = data_frame();
    spoiled[7] = static_cast<char>(spoiled[7] + 1);
    for (int k = 0; k < 5; ++k) rig.fakes.serial.receive(spoiled);
    EXPECT_EQ(rig.fakes.boxes.shown.size(), 1);
    EXPECT_EQ(rig.ended.size(), 1);
}

TEST(FailSafe, a_curve_file_that_can_not_take_a_line_ends_the_program) {
    Rig rig;
    rig.fakes.serial.OnComm = [&] {
        rig.form.run_event("MSComm1_OnComm", [&] { rig.form.MSComm1_OnComm(); });
    };
    // A full disk, as the system reports it.
    rig.form.curve_file = std::make_unique<AppendFile>(QStringLiteral("/dev/full"), "test");
    rig.form.curve_file->open();
    rig.form.bRecord = true;
    rig.fakes.serial.receive(data_frame());
    rig.fakes.serial.receive(data_frame());
    ASSERT_EQ(rig.fakes.boxes.shown.size(), 1);
    EXPECT_TRUE(rig.fakes.boxes.shown[0].startsWith(QStringLiteral(
        "Run-time error 61 in MSComm1_OnComm: Disk full: No space left on device: /dev/full")))
        << rig.fakes.boxes.shown[0].toStdString();
    EXPECT_EQ(rig.ended, QStringList{QStringLiteral("1")});
    EXPECT_FALSE(rig.form.curve_file) << "closed before the report";
}

}  // namespace
}  // namespace zel::test
