// The simulator in its headless mode on a real pseudo-terminal, read by the console's real
// serial port adapter and frame reception.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <memory>

#include "app/form1.h"
#include "fakes/fake_platform.h"
#include "platform/qt_serial_port.h"
#include "sim/live_console.h"

namespace zelsim::test {
namespace {

struct SentFrame {
    double litres;
    bool corrupt;
};

// The data frames of the simulator's wire log, in the order they went out.
std::vector<SentFrame> sent_data_frames(const QString& wire_log) {
    QFile file(wire_log);
    std::vector<SentFrame> frames;
    if (!file.open(QIODevice::ReadOnly)) return frames;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> w = line.simplified().split(' ');
        if (w.size() < 10 || w[1] != "data") continue;
        const auto volume =
            static_cast<int16_t>(w[5].toInt(nullptr, 16) << 8 | w[6].toInt(nullptr, 16));
        frames.push_back({volume * 0.004, w.size() > 10 && w[10] == "corrupt"});
    }
    return frames;
}

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
    QTemporaryDir app_data;
    const QString script = app_data.filePath(QStringLiteral("corrupt.txt"));
    const QString wire_log = app_data.filePath(QStringLiteral("wire.log"));
    {
        QFile file(script);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(
            "# one frame in ten with a wrong checksum, from the start of the stream\n"
            "await E\ncorrupt 0.1\n");
    }
    QProcess simulator;
    simulator.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    simulator.start(QStringLiteral(ZELMOOR_SIM_PATH),
                    {QStringLiteral("--headless"), QStringLiteral("--app-data"), app_data.path(),
                     QStringLiteral("--script"), script, QStringLiteral("--wire-log"), wire_log,
                     QStringLiteral("--seed"), QStringLiteral("4")});
    ASSERT_TRUE(simulator.waitForStarted());
    // Ended by SIGTERM, whichever way the test leaves, so that it removes its link.
    const std::unique_ptr<QProcess, void (*)(QProcess*)> stop_at_end(&simulator, [](QProcess* p) {
        p->terminate();
        p->waitForFinished(5000);
    });
    const QString link = app_data.filePath(QStringLiteral("ports/sim0"));
    for (int k = 0; k < 100 && !QFileInfo(link).isSymLink(); ++k) QThread::msleep(20);
    ASSERT_TRUE(QFileInfo(link).isSymLink());

    zel::test::FakePlatform fakes;
    zel::QtSerialPort port(app_data.path());
    zel::Platform platform{port,        fakes.timers, fakes.clock,   fakes.locale, fakes.boxes,
                           fakes.chart, fakes.tarrow, fakes.dialogs, fakes.windows};
    zel::Form1 form(platform, app_data.path());
    form.end_program = [](int code) { FAIL() << "the console ended with " << code; };
    form.Pic.Top = 0;
    form.Pic.Height = 7485;
    form.thresh_label.Height = 285;

    std::vector<double> received;
    port.OnComm = [&] {
        if (received.size() == wanted) return;
        const double before = form.total_counts;
        form.MSComm1_OnComm();
        if (form.total_counts != before) received.push_back(form.volume);
    };
    port.set_CommPort(1);
    port.set_PortOpen(true);
    ASSERT_TRUE(QFileInfo(link).symLinkTarget().endsWith(port.device_path()));
    port.Output("E");
    QElapsedTimer clock;
    clock.start();
    while (received.size() < wanted && clock.elapsed() < 30000)
        zel::test::handle_events();
    port.Output("d");
    port.set_PortOpen(false);
    simulator.terminate();
    EXPECT_TRUE(simulator.waitForFinished(5000));
    EXPECT_FALSE(QFileInfo(link).isSymLink()) << "the simulator leaves its link behind";

    ASSERT_EQ(received.size(), wanted);
    // The frames the console should have taken: every good one up to the 500th, in order.
    std::vector<double> good;
    int corrupt = 0;
    for (const SentFrame& f : sent_data_frames(wire_log)) {
        if (good.size() == wanted) break;
        if (!f.corrupt) good.push_back(f.litres);
        // Rejections are logged once the first frame has been counted.
        else if (!good.empty())
            ++corrupt;
    }
    ASSERT_EQ(good.size(), wanted);
    for (size_t k = 0; k < wanted; ++k) ASSERT_NEAR(received[k], good[k], 1e-9) << "frame " << k;
    EXPECT_GE(corrupt, 25);
    EXPECT_LE(corrupt, 80);
    EXPECT_EQ(checksum_log_entries(app_data.path()), corrupt);
    std::printf("[          ] %zu frames received in order, %d corrupted and rejected, %.1f s\n",
                wanted, corrupt, clock.elapsed() / 1000.0);
}

// The search lists the ports by trying to open each of twenty numbers in one tick of its
// 350 ms timer. A pass that overran the tick made the next tick fall due at once, which closed
// the simulator's port a moment after its "V" went out, every pass: the module was never heard.
TEST(SimulatorOnPseudoTerminal, the_search_lists_twenty_port_numbers_well_inside_one_tick) {
    zel::test::LiveConsole c(false);
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
}  // namespace zelsim::test
