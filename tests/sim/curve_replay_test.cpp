// A recorded curve played back as the simulated patient's breathing: read from a file the
// console's own recording wrote, interpolated and looped, and turned into the turbine's pulses.
#include "curve_replay.h"

#include <gtest/gtest.h>

#include <QFile>
#include <cmath>
#include <cstdlib>

#include "fakes/rig.h"
#include "sim/live_console.h"
#include "script.h"

namespace zelsim::test {
namespace {

// A console recording `units` (volumes in 0.004 L), one data frame each.
QString record(zel::test::Rig& rig, const std::vector<int16_t>& units, QChar separator) {
    rig.fakes.locale.separator = separator;
    zel::test::as_patient(rig.form, rig.app_data.path(), QStringLiteral("1"));
    rig.form.cmdRecord_Click();
    for (int16_t u : units) rig.fakes.serial.receive(zel::test::data_frame(0x04, 1, u));
    rig.form.cmdPause_Click();
    return rig.form.curve_file_path();
}

// The volumes of `frames` frames, in 0.004 L; by default a regular breath.
std::vector<int16_t> breath(int frames,
                            double (*litres)(int) = [](int k) { return 1.0 + 0.6 * std::sin(k * 0.05); }) {
    std::vector<int16_t> units;
    for (int k = 0; k < frames; ++k) units.push_back(static_cast<int16_t>(std::lround(litres(k) / 0.004)));
    return units;
}

TEST(CurveReplay, plays_the_volumes_the_console_recorded_and_waits_while_the_airway_is_closed) {
    for (const QChar separator : {QLatin1Char('.'), QLatin1Char(',')}) {
        SCOPED_TRACE(separator.toLatin1());
        zel::test::Rig rig;
        const std::vector<int16_t> units = breath(400);
        // Started by the script, whose line takes the rest of it as the path, spaces and all.
        const QString path = rig.app_data.filePath(QStringLiteral("a curve.dat"));
        ASSERT_TRUE(QFile::copy(record(rig, units, separator), path));
        Simulator sim;
        sim.apply(parse_script_line("replay " + path.toStdString()).instruction.value(), 0);
        ASSERT_NE(sim.module.patient_breathing().replaying(), nullptr);
        const CurveReplay& curve = *sim.module.patient_breathing().replaying();
        EXPECT_EQ(curve.frame_rate, 50);
        ASSERT_EQ(curve.samples(), units.size());
        for (size_t k = 0; k < units.size(); ++k) ASSERT_NEAR(curve.litres[k], units[k] * 0.004, 1e-9) << k;

        Breathing& patient = sim.module.patient_breathing();
        VolumeIntegrator module(patient.lung_volume());
        double played = 0;
        for (int frame = 1; frame <= 1000; ++frame) {
            // Closed for one second in the middle: nothing flows, and the curve waits.
            const bool closed = frame > 300 && frame <= 350;
            module.add(patient.step(0.02, closed));
            if (!closed) played += 0.02;
            ASSERT_NEAR(module.volume(), curve.volume_at(played), 2 * litres_per_pulse) << frame;
        }
        sim.apply(*parse_script_line("replay off").instruction, 0);
        EXPECT_EQ(sim.module.patient_breathing().replaying(), nullptr);
    }
}

// A curve the console recorded, breathed again by the simulator over the real line and
// recorded again: the second recording holds the first one's volumes.
TEST(ReplayRoundTrip, the_console_records_the_replayed_volumes_within_one_count) {
    // The original: four seconds of irregular breathing, recorded by the console's own code.
    const std::vector<int16_t> first =
        breath(200, [](int k) { return 1.2 + 0.5 * std::sin(k * 0.08) + 0.1 * std::sin(k * 0.37); });
    zel::test::Rig original;
    const QString recorded = record(original, first, QLatin1Char('.'));

    zel::test::LiveConsole c(false);
    ASSERT_TRUE(c.sim.start("wait 600\n", {QStringLiteral("--replay"), recorded}));
    ASSERT_TRUE(c.link_up()) << "the link never came up";
    zel::test::as_patient(c.form, c.app_data.path(), QStringLiteral("2"));
    c.form.cmdRecord_Click();
    // Two and a half times round the loop.
    c.wait(10000);
    c.form.cmdPause_Click();
    std::string error;
    const auto second = CurveReplay::load(c.form.curve_file_path().toStdString(), error);
    ASSERT_TRUE(second) << error;
    ASSERT_GT(second->samples(), 400u);

    // Where in the loop the second recording began.
    long best = 1 << 30;
    for (size_t shift = 0; shift < first.size(); ++shift) {
        long worst = 0;
        for (size_t i = 0; i < second->samples() && worst <= best; ++i) {
            const long units = std::lround(second->litres[i] / 0.004);
            worst = std::max(worst, std::labs(units - first[(i + shift) % first.size()]));
        }
        best = std::min(best, worst);
    }
    EXPECT_LE(best, 1) << "the replayed curve differs by " << best << " counts at best";
}

}  // namespace
}  // namespace zelsim::test
