// The console's fail-safe path and its re-entry under a modal dialog, over a real
// pseudo-terminal with the real serial adapter and real timers, against the simulated module
// and, for the gated hold, the simulated gating library.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <map>
#include <tuple>

#include <unistd.h>

#include "fakes/files.h"
#include "language/messages.h"
#include "platform/exit_signals.h"
#include "sim/curve_against_wire.h"
#include "sim/live_console.h"

namespace zel::test {
namespace {

TEST(FailSafe, a_bad_volume_word_in_a_gated_hold_opens_the_relay_then_reports_once) {
    LiveConsole c(true);
    // A hold of ten seconds; three seconds after the console arms, the module sends a frame in
    // the hold whose volume word has no 16-bit magnitude, then keeps streaming, with some
    // frames spoiled so that the checksum log is open when the failure comes.
    ASSERT_TRUE(c.sim.start("breathing rest 1.0\nbreathing amplitude 0.8\nbreathing period 2.5\n"
                            "corrupt 0.05\nawait A\nwait 3\nframe 06 04 80 00 00 32\nwait 60\nquit\n",
                            {QStringLiteral("--seed"), QStringLiteral("3")}));
    c.form.Gated_Treatment = true;
    ASSERT_TRUE(c.link_up()) << "the link never came up";

    double shown_at = 0, left_at = 0, counted_at_box = 0;
    std::tuple<bool, bool, bool, bool, int> at_box;  // port open, heartbeat, search, relay, balloon
    std::map<std::string, QByteArray> logs_at_box;
    c.fakes.boxes.while_shown = [&] {
        shown_at = monotonic_seconds();
        at_box = {c.port.PortOpen(), c.form.Timer_HeartBeat->Enabled(),
                  c.form.Timer_module_connect->Enabled(), c.form.relay_close_commanded, c.form.b_state};
        counted_at_box = c.form.total_counts;
        logs_at_box = log_files(c.app_data.path());
        // The operator reads the box for two seconds; the module goes on streaming.
        keep_event_loop_running(2000);
        left_at = monotonic_seconds();
    };
    c.run_until([&] {
        if (c.ready_to_arm() && c.form.sw_state == 1) c.form.Form_KeyDown(32, 0);
        return !c.fakes.boxes.shown.isEmpty();
    }, 20000);
    c.wait(500);

    ASSERT_EQ(c.fakes.boxes.shown.size(), 1) << c.fakes.boxes.shown.join('\n').toStdString();
    EXPECT_TRUE(c.fakes.boxes.shown[0].startsWith(QStringLiteral("Run-time error 6 ")))
        << c.fakes.boxes.shown[0].toStdString();
    // All stopped, the relay's command withdrawn, and the failure came in the hold.
    EXPECT_EQ(at_box, std::make_tuple(false, false, false, false, 4));

    // The relay was opened, and the gating link closed, before the box appeared; nothing
    // closed it again.
    std::map<QString, double> last;  // each call's last moment
    for (const auto& [when, call] : gating_calls(c.app_data.path())) last[call] = when;
    const double closed_at = last["Tarrow_SetRelayState(1)"], opened_at = last["Tarrow_SetRelayState(0)"],
                 gating_closed_at = last["Tarrow_Close()"];
    ASSERT_GT(closed_at, 0) << "the hold never closed the relay";
    EXPECT_TRUE(closed_at < opened_at && opened_at < gating_closed_at && gating_closed_at < shown_at)
        << "relay closed " << closed_at << ", opened " << opened_at << ", link closed "
        << gating_closed_at << ", box " << shown_at;

    // Nothing acted behind the box: no command, no frame, no log reopened.
    for (const auto& [when, bytes] : c.port.writes)
        EXPECT_LT(when, shown_at) << "a command reached the module after the failure";
    EXPECT_EQ(c.form.total_counts, counted_at_box);
    EXPECT_FALSE(logs_at_box.empty()) << "the checksum log was never opened";
    EXPECT_EQ(log_files(c.app_data.path()), logs_at_box);

    // The program ends once the box is acknowledged, and only once.
    ASSERT_EQ(c.ended.size(), 1u);
    EXPECT_TRUE(c.ended[0].first == 1 && c.ended[0].second >= left_at) << c.ended[0].first;
}

TEST(FailSafe, frames_go_on_being_handled_once_each_under_a_modal_dialog) {
    LiveConsole c(false);
    ASSERT_TRUE(c.sim.start("breathing rest 0.2\nbreathing amplitude 0.8\nbreathing period 1.7\n"
                            "wait 60\nquit\n"));
    ASSERT_TRUE(c.link_up());

    // Every frame handled leaves its line in the curve file.
    const QString curve = c.app_data.filePath(QStringLiteral("curve.dat"));
    c.form.curve_file = std::make_unique<AppendFile>(curve, "test");
    c.form.curve_file->open(AppendFile::Start::anew);
    c.form.bRecord = true;

    // A gated treatment whose library is missing: the next poll, from inside the frame
    // handler, shows its message modally for one second.
    c.fakes.tarrow.missing = true;
    bool link_lost = false;
    double counted_before = 0, counted_after = 0;
    c.fakes.boxes.while_shown = [&] {
        counted_before = c.form.total_counts;
        c.run_until([&] { return (link_lost |= c.form.Timer_module_connect->Enabled(), false); }, 1000);
        counted_after = c.form.total_counts;
    };
    c.wait(1000);
    c.form.Gated_Treatment = true;
    ASSERT_TRUE(c.run_until([&] { return !c.fakes.boxes.shown.isEmpty(); }, 3000));
    c.wait(500);
    c.form.bRecord = false;
    c.form.curve_file->close();

    EXPECT_EQ(c.fakes.boxes.shown, QStringList{message_text(355)});
    EXPECT_TRUE(!link_lost && c.form.Timer_HeartBeat->Enabled()) << "the link was lost under the dialog";
    EXPECT_GE(counted_after - counted_before, 45) << "frames handled under the dialog";
    EXPECT_TRUE(c.ended.empty());

    // The lines' volumes are the good frames of the wire, in order, each once; the frame that
    // opened the dialog is handled a second time by the first pass under it, and only then.
    std::vector<int> recorded, sent;
    for (const QByteArray& line : contents(curve).split('\n'))
        if (line.count(';') >= 4) recorded.push_back(qRound(line.split(';')[1].toDouble() / 0.004));
    for (const WireFrame& w : wire_frames(c.sim.wire_log())) sent.push_back(w.units);
    ASSERT_GT(recorded.size(), 100u);
    // Where the recording begins on the wire.
    const auto at = std::search(sent.begin(), sent.end(), recorded.begin(), recorded.begin() + 20);
    ASSERT_NE(at, sent.end()) << "the recorded volumes are not found on the wire";
    const auto twice = std::mismatch(recorded.begin(), recorded.end(), at, sent.end()).first;
    ASSERT_TRUE(twice != recorded.end() && twice != recorded.begin()) << "no frame was handled twice";
    const long j = twice - recorded.begin();
    EXPECT_EQ(*twice, *(twice - 1)) << "line " << j << " is not on the wire";
    recorded.erase(twice);
    const auto differs = std::mismatch(recorded.begin() + j, recorded.end(), at + j, sent.end()).first;
    EXPECT_EQ(differs, recorded.end()) << "line " << differs - recorded.begin() << " differs from the wire";
}

// A library of another release that lacks one function, found out by a poll in a gated hold:
// the relay closed for the hold is opened before the gated treatment is let go.
TEST(FailSafe, a_function_missing_from_the_gating_library_in_a_hold_opens_the_relay_first) {
    QTemporaryDir app_data;
    ASSERT_TRUE(install_gating_library(app_data.path(), QStringLiteral(TARROW_SIM_WITHOUT_STATUS_PATH),
                                       "connected=yes\n"));
    FakePlatform fakes;
    QtGatingLibrary library(app_data.path());
    Platform platform{fakes.serial, fakes.timers, fakes.clock,   fakes.locale, fakes.boxes,
                      fakes.chart,  library,      fakes.dialogs, fakes.windows};
    Form1 form{platform, app_data.path()};
    form.end_program = [](int code) { ADD_FAILURE() << "the console ended with " << code; };
    form.patient_defined = form.Gated_Treatment = true, form.b_state = 4;
    form.open_tarrow_link();
    form._Tarrow_SetRelayState(1);
    form.poll_tarrow_status();

    QStringList relay;
    for (const auto& [when, call] : gating_calls(app_data.path()))
        if (call.startsWith(QStringLiteral("Tarrow_SetRelayState"))) relay.append(call);
    EXPECT_EQ(relay, (QStringList{"Tarrow_SetRelayState(1)", "Tarrow_SetRelayState(0)"}));
    EXPECT_FALSE(form.Gated_Treatment || form.patient_defined);
    EXPECT_EQ(fakes.boxes.shown, QStringList{message_text(355)});
}

// A shutdown, a logout or an interrupt in a gated, recorded hold: the relay opened before
// anything else, the module told to let the balloon go, the recording closed read-only, the
// gating library let go, and the program ended with 128 + the signal's number, once.
TEST(FailSafe, a_signal_from_the_system_in_a_gated_hold_opens_the_relay_first_and_ends) {
    for (const int signal_number : {SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal_number);
        LiveConsole c(true);
        ASSERT_TRUE(c.sim.start("breathing rest 1.0\nbreathing amplitude 0.8\nbreathing period 2.5\n"
                                "wait 60\nquit\n"));
        ExitSignals exit_signals([&c](int number) { c.form.end_on_signal(number); });
        c.form.Gated_Treatment = true;
        ASSERT_TRUE(c.link_up());
        c.form.record_filename = c.app_data.filePath(QStringLiteral("curve.dat"));
        c.form.curve_file = std::make_unique<AppendFile>(c.form.record_filename, "test");
        c.form.curve_file->open(AppendFile::Start::anew);
        c.form.bRecord = true;
        ASSERT_TRUE(c.run_until([&] {
            if (c.ready_to_arm() && c.form.sw_state == 1) c.form.Form_KeyDown(32, 0);
            return c.form.relay_close_commanded;
        }, 20000)) << "the gated hold never closed the relay";

        const size_t writes = c.port.writes.size();
        ASSERT_EQ(::kill(::getpid(), signal_number), 0);
        ASSERT_TRUE(c.run_until([&] { return !c.ended.empty(); }, 2000)) << "the console went on";
        ::kill(::getpid(), signal_number);  // a second one while ending changes nothing
        c.wait(300);

        ASSERT_EQ(c.ended.size(), 1u);
        EXPECT_EQ(c.ended[0].first, 128 + signal_number);
        QStringList relay_and_close;
        for (const auto& [when, call] : gating_calls(c.app_data.path()))
            if (call.startsWith(QStringLiteral("Tarrow_SetRelayState")) ||
                call.startsWith(QStringLiteral("Tarrow_Close")))
                relay_and_close.append(call);
        ASSERT_GE(relay_and_close.size(), 3) << relay_and_close.join(' ').toStdString();
        EXPECT_EQ(relay_and_close.mid(relay_and_close.size() - 3),
                  (QStringList{"Tarrow_SetRelayState(1)", "Tarrow_SetRelayState(0)", "Tarrow_Close()"}));
        EXPECT_EQ(c.written_since(writes), QByteArray("Xd"));
        EXPECT_FALSE(c.port.PortOpen() || c.form.curve_file ||
                     QFile::permissions(c.form.record_filename) & QFile::WriteOwner);
        EXPECT_TRUE(c.fakes.boxes.shown.isEmpty());
    }
}

}  // namespace
}  // namespace zel::test
