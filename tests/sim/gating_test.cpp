// The simulated gating system, alone and as the library the console loads.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "fakes/files.h"
#include "gating_control.h"
#include "gating_system.h"
#include "sim/live_console.h"
#include "tarrow.h"

namespace zelsim::test {
namespace {

using zel::test::gating_calls;
using zel::test::install_gating_library;

TEST(SimulatedGating, reports_the_states_the_trainer_sets_and_moves_the_relay_only_within_reach) {
    // The command moves the relay from the other position: its answer, and the relay's state in
    // the short transition and after it.
    struct Case {
        const char* control_text; bool closed_after_opening, close; int16_t open, connected;
        char link, enable; int16_t set_relay; char moving, settled;
    };
    const Case cases[] = {
        {"", false, true, 0, 0, '^', 'E', 0, 'c', 'C'}, {"", false, false, 0, 0, '^', 'E', 0, 'o', 'O'},
        {"relay_error=closing\n", false, true, 0, 0, '^', 'E', 0, 'c', 'Y'},
        {"relay_error=opening\n", false, false, 0, 0, '^', 'E', 0, 'o', 'X'},
        {"relay_error=unknown\n", false, true, 0, 0, '^', 'E', 0, 'U', 'U'},
        {"", true, true, 0, 1, '^', 'E', 1, 'O', 'O'},
        {"connected=no\n", false, true, 1, 1, '^', 'E', 1, 'O', 'O'},
        {"relay_link=down\n", false, true, 0, 0, '_', 'E', 1, 'O', 'O'},
        {"enable=D\n", false, true, 0, 0, '^', 'D', 0, 'c', 'C'},
        {"enable=Q\nnonsense\n", false, true, 0, 0, '^', 'E', 0, 'c', 'C'},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.control_text << (c.close ? "closing" : "opening"));
        GatingSystem system;
        const GatingControl control = parse_gating_control(c.control_text);
        EXPECT_EQ(parse_gating_control(gating_control_text(control)), control) << "read back as written";
        system.apply(control);
        EXPECT_EQ(system.open(), c.open);
        if (c.closed_after_opening) system.close();
        EXPECT_EQ(system.connected(), c.connected);
        const TarrowStatus s = system.status(0.0);
        EXPECT_EQ(std::pair(s.relay_link, s.enable_state), std::pair(c.link, c.enable));
        system.set_relay(!c.close, 0.0);
        EXPECT_EQ(system.set_relay(c.close, 1.0), c.set_relay);
        EXPECT_EQ(system.status(1.0 + relay_transition_seconds / 2).relay_state, c.moving);
        EXPECT_EQ(system.status(1.0 + relay_transition_seconds).relay_state, c.settled);
    }
}

template <class F>
F function(void* library, const char* name) {
    return reinterpret_cast<F>(dlsym(library, name));
}

// The built library, installed where the console looks for it, in a folder of its own.
TEST(GatingLibrary, reads_the_controls_at_each_call_and_logs_each_call) {
    QTemporaryDir folder;
    ASSERT_TRUE(install_gating_library(folder.path(), QStringLiteral(TARROW_SIM_PATH)));
    void* const library =
        dlopen(folder.filePath(QStringLiteral("lib/libtarrow.so")).toUtf8().constData(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const std::unique_ptr<void, int (*)(void*)> closing(library, dlclose);
    const auto control = [&](const char* text) {
        zel::test::write(folder.filePath(QStringLiteral("sim/tarrow-control.txt")), text);
    };
    const auto connected = function<Tarrow_Connected_t>(library, "Tarrow_Connected");
    const auto get_status = function<Tarrow_GetStatus_t>(library, "Tarrow_GetStatus");
    // Violations raised before this run are not this treatment's; each rise stands until cleared.
    control("connected=yes\ntiming_violations=4\n");
    EXPECT_EQ(function<Tarrow_Open_t>(library, "Tarrow_Open")(), 0);
    EXPECT_EQ(connected(), 0);
    function<Tarrow_SetRelayEnablePermission_t>(library, "Tarrow_SetRelayEnablePermission")(0);
    EXPECT_EQ(function<Tarrow_SetRelayState_t>(library, "Tarrow_SetRelayState")(1), 0);
    TarrowStatus status{};
    get_status(&status);
    EXPECT_EQ(std::pair(status.permission_to_disable, status.fast_gating), std::pair('L', ':'));
    EXPECT_TRUE(status.relay_state == 'c' || status.relay_state == 'C');
    control("connected=no\n");
    EXPECT_NE(connected(), 0);
    control("connected=yes\nenable=D\ntiming_violations=5\n");
    get_status(&status);
    EXPECT_EQ(std::pair(status.enable_state, status.fast_gating), std::pair('D', '!'));
    get_status(&status);
    EXPECT_EQ(status.fast_gating, '!') << "a violation stands until cleared";
    function<Tarrow_ClearTimingViolation_t>(library, "Tarrow_ClearTimingViolation")();
    get_status(&status);
    EXPECT_EQ(status.fast_gating, ':');

    const auto log = gating_calls(folder.path());
    ASSERT_EQ(log.size(), 10u);
    EXPECT_EQ(log[3].second, QStringLiteral("Tarrow_SetRelayState(1)"));
    EXPECT_TRUE(std::ranges::is_sorted(log, {}, &std::pair<double, QString>::first)) << "logged out of time";
}

}  // namespace
}  // namespace zelsim::test
