// The simulator in its headless mode on a real pseudo-terminal, read by the console's real
// serial port adapter and frame reception.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include "sim/curve_against_wire.h"
#include "sim/live_console.h"

namespace zel::test {
namespace {

int checksum_log_entries(const QString& app_data) {
    int entries = 0;
    const QDir folder(app_data + QStringLiteral("/LOG"));
    for (const QString& name : folder.entryList(QDir::Files)) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            entries += static_cast<int>(file.readAll().count("------\r\n"));
    }
    return entries;
}

TEST(SimulatorOnPseudoTerminal,
     the_console_reads_500_frames_in_order_and_rejects_each_corrupt_one) {
    constexpr size_t wanted = 500;
    LiveConsole c(false);
    // One frame in ten with a wrong checksum, from the start of the stream.
    ASSERT_TRUE(c.sim.start("await E\ncorrupt 0.1\n", {QStringLiteral("--seed"), QStringLiteral("4")}));
    std::vector<int> received;
    c.port.OnComm = [&] {
        if (received.size() == wanted) return;
        const double before = c.form.total_counts;
        c.form.MSComm1_OnComm();
        if (c.form.total_counts != before) received.push_back(qRound(c.form.volume / 0.004));
    };
    const QString link = c.app_data.filePath(QStringLiteral("ports/sim0"));
    c.port.set_CommPort(1);
    c.port.set_PortOpen(true);
    ASSERT_TRUE(QFileInfo(link).symLinkTarget().endsWith(c.real_port.device_path()));
    c.port.Output("E");
    ASSERT_TRUE(c.run_until([&] { return received.size() == wanted; }, 30000));
    c.port.Output("d");
    c.port.set_PortOpen(false);
    c.sim.stop();
    EXPECT_FALSE(QFileInfo(link).isSymLink()) << "the simulator leaves its link behind";
    EXPECT_TRUE(c.ended.empty());

    // The frames the console should have taken: every good one up to the 500th, in order.
    std::vector<int> good;
    int corrupt = 0;
    for (const WireFrame& f : wire_frames(c.sim.wire_log())) {
        if (good.size() == wanted) break;
        if (!f.corrupt) good.push_back(f.units);
        // Rejections are logged once the first frame has been counted.
        else if (!good.empty())
            ++corrupt;
    }
    EXPECT_EQ(received, good);
    EXPECT_GE(corrupt, 25);
    EXPECT_LE(corrupt, 80);
    EXPECT_EQ(checksum_log_entries(c.app_data.path()), corrupt);
}

// The search lists the ports by trying to open each of twenty numbers in one tick of its
// 350 ms timer. A pass that overran the tick made the next tick fall due at once, which closed
// the simulator's port a moment after its "V" went out, every pass: the module was never heard.
TEST(SimulatorOnPseudoTerminal, the_search_lists_twenty_port_numbers_well_inside_one_tick) {
    LiveConsole c(false);
    ASSERT_TRUE(c.sim.start("wait 60\nquit\n"));
    for (int pass = 0; pass < 5; ++pass) {
        QElapsedTimer took;
        took.start();
        c.form.enumerate_com_ports();
        // The first pass also loads the device database.
        EXPECT_LT(took.elapsed(), pass == 0 ? 300 : 100) << "pass " << pass;
        ASSERT_GE(c.form.num_ports, 1);
        EXPECT_EQ(c.form.port_list[0], 1) << "the simulator's link comes first";
    }
}

}  // namespace
}  // namespace zel::test
