// A failure that no routine handles: the beam goes off first, one report, then nothing runs.
#include <gtest/gtest.h>

#include "fakes/rig.h"

namespace zel::test {
namespace {

constexpr uint8_t switch_held = 0x06;

// A hold under way, gated or not: a gated one closed the relay at its start. Frames reach the
// console as its event loop would deliver them, failures and all.
struct HoldRig : Rig {
    explicit HoldRig(bool gated) {
        fakes.serial.OnComm = [this] {
            form.run_event("MSComm1_OnComm", [this] { form.MSComm1_OnComm(); });
        };
        form.patient_defined = true, form.Gated_Treatment = gated, form.duration = 15;
        fakes.timers.get("Timer_HeartBeat").set_Enabled(true);
        fakes.serial.receive(data_frame(switch_held, 1, 100));
        fakes.serial.receive(data_frame(switch_held, 2, 100));
        fakes.serial.receive(data_frame(switch_held, 4, 400, 700));
        fakes.serial.clear_sent();
        fakes.tarrow.calls.clear();
    }
    // The frame whose volume word has no 16-bit magnitude.
    QByteArray bad_frame() { return data_frame(switch_held, 4, static_cast<int16_t>(0x8000), 650); }
};

// The relay, closed by the hold or by hand whatever the treatment mode says now, is opened
// and the link closed before the box; one that was never closed is left alone. After the
// report no entry runs, and the beam can not come back.
TEST(FailSafe, a_failure_in_a_hold_opens_the_relay_and_closes_the_link_before_the_box) {
    struct Case { bool gated, relay_closed_by_hand; QStringList calls; };
    const Case cases[] = {
        {true, false, {"SetRelayState(0)", "Close()"}}, {false, false, {}},
        {false, true, {"SetRelayState(0)", "Close()"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.gated << c.relay_closed_by_hand);
        HoldRig rig(c.gated);
        ASSERT_EQ(rig.form.b_state, 4);
        if (c.relay_closed_by_hand) {
            rig.form._Tarrow_SetRelayState(1);
            rig.fakes.tarrow.calls.clear();
        }
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
        EXPECT_EQ(calls_at_box, c.calls);
        EXPECT_FALSE(port_open_at_box);
        ASSERT_EQ(rig.fakes.boxes.shown.size(), 1);
        EXPECT_TRUE(rig.fakes.boxes.shown[0].startsWith("Run-time error 6 in MSComm1_OnComm"))
            << rig.fakes.boxes.shown[0].toStdString();
        EXPECT_EQ(rig.ended, QStringList{QStringLiteral("1")});
        EXPECT_EQ(rig.form.total_counts, counted + 1) << "only the failing frame was counted";
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
        EXPECT_EQ(rig.fakes.tarrow.calls, c.calls);
        EXPECT_TRUE(rig.fakes.serial.sent().isEmpty());
        EXPECT_EQ(rig.ended.size(), 1);
    }
}

}  // namespace
}  // namespace zel::test
