// The simulated gating system, alone and as the library the console loads.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "gating_control.h"
#include "gating_system.h"
#include "tarrow.h"

namespace zelsim::test {
namespace {

TEST(SimulatedGating, the_relay_follows_its_commands_through_a_short_transition) {
    struct Case {
        RelayError error;
        bool close;
        char moving, settled;
    };
    const Case cases[] = {
        {RelayError::none, true, 'c', 'C'},    {RelayError::none, false, 'o', 'O'},
        {RelayError::closing, true, 'c', 'Y'}, {RelayError::opening, false, 'o', 'X'},
        {RelayError::unknown, true, 'U', 'U'}, {RelayError::closing, false, 'o', 'O'},
    };
    for (const Case& c : cases) {
        GatingSystem system;
        system.apply({});
        ASSERT_EQ(system.open(), 0);
        // From the other position, so that the command is a move.
        system.set_relay(!c.close, 0.0);
        GatingControl control;
        control.relay_error = c.error;
        system.apply(control);
        EXPECT_EQ(system.set_relay(c.close, 1.0), 0);
        EXPECT_EQ(system.status(1.0 + relay_transition_seconds / 2).relay_state, c.moving);
        EXPECT_EQ(system.status(1.0 + relay_transition_seconds).relay_state, c.settled);
    }
}

TEST(SimulatedGating, reports_the_states_the_trainer_sets) {
    struct Case {
        const char* control_text;
        int16_t open, connected;
        char link, enable;
    };
    const Case cases[] = {
        {"", 0, 0, '^', 'E'},
        {"connected=no\n", 1, 1, '^', 'E'},
        {"relay_link=down\n", 0, 0, '_', 'E'},
        {"enable=D\n", 0, 0, '^', 'D'},
        {"enable=F\r\nrelay_link=down\r\n", 0, 0, '_', 'F'},
        {"enable=Q\nnonsense\n", 0, 0, '^', 'E'},
    };
    for (const Case& c : cases) {
        GatingSystem system;
        system.apply(parse_gating_control(c.control_text));
        EXPECT_EQ(system.open(), c.open) << c.control_text;
        EXPECT_EQ(system.connected(), c.connected) << c.control_text;
        const TarrowStatus s = system.status(0.0);
        EXPECT_EQ(s.relay_link, c.link) << c.control_text;
        EXPECT_EQ(s.enable_state, c.enable) << c.control_text;
    }
}

TEST(SimulatedGating, a_relay_out_of_reach_does_not_move) {
    for (const char* text : {"connected=no\n", "relay_link=down\n"}) {
        GatingSystem system;
        system.apply(parse_gating_control(text));
        system.open();
        EXPECT_EQ(system.set_relay(true, 0.0), 1) << text;
        EXPECT_EQ(system.status(1.0).relay_state, 'O') << text;
    }
    GatingSystem closed_connection;
    closed_connection.apply({});
    closed_connection.open();
    closed_connection.close();
    EXPECT_EQ(closed_connection.connected(), 1);
    EXPECT_EQ(closed_connection.set_relay(true, 0.0), 1);
}

TEST(SimulatedGating, a_timing_violation_stands_until_it_is_cleared) {
    GatingSystem system;
    GatingControl control;
    control.timing_violations = 4;  // raised before this run: not this treatment's
    system.apply(control);
    EXPECT_EQ(system.status(0).fast_gating, ':');
    control.timing_violations = 5;
    system.apply(control);
    system.apply(control);
    EXPECT_EQ(system.status(0).fast_gating, '!');
    system.clear_violation();
    system.apply(control);
    EXPECT_EQ(system.status(0).fast_gating, ':');
}

TEST(SimulatedGating, the_control_text_reads_back_as_written) {
    GatingControl control;
    control.connected = false;
    control.relay_link_up = false;
    control.enable = 'F';
    control.relay_error = RelayError::opening;
    control.timing_violations = 3;
    EXPECT_EQ(parse_gating_control(gating_control_text(control)), control);
    EXPECT_EQ(parse_gating_control(gating_control_text({})), GatingControl{});
}

// The built library, installed where the console looks for it, in a folder of its own.
class GatingLibrary : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(QDir().mkpath(folder.filePath(QStringLiteral("lib"))));
        path = folder.filePath(QStringLiteral("lib/libtarrow.so"));
        ASSERT_TRUE(QFile::copy(QStringLiteral(TARROW_SIM_PATH), path));
        handle = dlopen(path.toUtf8().constData(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(handle, nullptr) << dlerror();
    }
    void TearDown() override {
        if (handle) dlclose(handle);
    }
    template <class F>
    F function(const char* name) {
        return reinterpret_cast<F>(dlsym(handle, name));
    }
    void control(const char* text) {
        QDir().mkpath(folder.filePath(QStringLiteral("sim")));
        QFile file(folder.filePath(QStringLiteral("sim/tarrow-control.txt")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QStringList call_log() {
        QFile file(folder.filePath(QStringLiteral("sim/tarrow-calls.log")));
        if (!file.open(QIODevice::ReadOnly)) return {};
        return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QTemporaryDir folder;
    QString path;
    void* handle = nullptr;
};

TEST_F(GatingLibrary, offers_the_nine_functions_and_logs_every_call_with_its_time) {
    const char* const names[] = {"Tarrow_Open",
                                 "Tarrow_Close",
                                 "Tarrow_Connected",
                                 "Tarrow_GetStatus",
                                 "Tarrow_GetFirmwareVersions",
                                 "Tarrow_GetDLLVersion",
                                 "Tarrow_SetRelayState",
                                 "Tarrow_SetRelayEnablePermission",
                                 "Tarrow_ClearTimingViolation"};
    for (const char* name : names) EXPECT_NE(dlsym(handle, name), nullptr) << name;

    EXPECT_EQ(function<Tarrow_Open_t>("Tarrow_Open")(), 0);
    function<Tarrow_SetRelayEnablePermission_t>("Tarrow_SetRelayEnablePermission")(0);
    function<Tarrow_SetRelayState_t>("Tarrow_SetRelayState")(1);
    TarrowStatus status{};
    function<Tarrow_GetStatus_t>("Tarrow_GetStatus")(&status);
    EXPECT_EQ(status.permission_to_disable, 'L');
    EXPECT_TRUE(status.relay_state == 'c' || status.relay_state == 'C');
    TarrowFirmware firmware{};
    function<Tarrow_GetFirmwareVersions_t>("Tarrow_GetFirmwareVersions")(&firmware);
    EXPECT_EQ(std::string(firmware.relay_firmware, 9), "RSIM 2.10");

    const QStringList log = call_log();
    ASSERT_EQ(log.size(), 5);
    EXPECT_TRUE(log[2].endsWith(QStringLiteral("Tarrow_SetRelayState(1) = 0")))
        << log[2].toStdString();
    double previous = 0;
    for (const QString& line : log) {
        const double time = line.section(QLatin1Char(' '), 0, 0).toDouble();
        EXPECT_GE(time, previous) << line.toStdString();
        previous = time;
    }
}

TEST_F(GatingLibrary, reads_the_trainers_controls_at_each_call) {
    const auto connected = function<Tarrow_Connected_t>("Tarrow_Connected");
    const auto get_status = function<Tarrow_GetStatus_t>("Tarrow_GetStatus");
    control("connected=yes\n");
    EXPECT_EQ(function<Tarrow_Open_t>("Tarrow_Open")(), 0);
    EXPECT_EQ(connected(), 0);
    control("connected=no\n");
    EXPECT_NE(connected(), 0);
    control("connected=yes\nenable=D\ntiming_violations=1\n");
    TarrowStatus status{};
    get_status(&status);
    EXPECT_EQ(status.enable_state, 'D');
    EXPECT_EQ(status.fast_gating, '!');
    function<Tarrow_ClearTimingViolation_t>("Tarrow_ClearTimingViolation")();
    get_status(&status);
    EXPECT_EQ(status.fast_gating, ':');
}

}  // namespace
}  // namespace zelsim::test
