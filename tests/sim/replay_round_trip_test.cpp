// A curve the console recorded, breathed again by the simulator over the real line and
// recorded again: the second recording holds the first one's volumes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "data/curve_file_reader.h"
#include "fakes/rig.h"
#include "sim/live_console.h"

namespace zel::test {
namespace {

std::vector<long> volume_units(const QString& path) {
    CurveData curve;
    LoadCurveData2(path, curve, QLatin1Char('.'));
    std::vector<long> units;
    for (double v : curve.volume) units.push_back(std::lround(v / 0.004));
    return units;
}

TEST(ReplayRoundTrip, the_console_records_the_replayed_volumes_within_one_count) {
    // The original: four seconds of irregular breathing, recorded by the console's own code.
    Rig original;
    as_patient(original.form, original.app_data.path(), QStringLiteral("1"));
    original.form.cmdRecord_Click();
    for (int k = 0; k < 200; ++k) {
        const double litres = 1.2 + 0.5 * std::sin(k * 0.08) + 0.1 * std::sin(k * 0.37);
        original.fakes.serial.receive(data_frame(0x04, 1, static_cast<int16_t>(std::lround(litres / 0.004))));
    }
    original.form.cmdPause_Click();
    const QString recorded = original.form.curve_file_path();
    const std::vector<long> first = volume_units(recorded);
    ASSERT_EQ(first.size(), 200u);

    LiveConsole c(false);
    ASSERT_TRUE(c.sim.start("wait 600\n", {QStringLiteral("--replay"), recorded}));
    ASSERT_TRUE(c.link_up()) << "the link never came up";
    as_patient(c.form, c.app_data.path(), QStringLiteral("2"));
    c.form.cmdRecord_Click();
    // Two and a half times round the loop.
    c.wait(10000);
    c.form.cmdPause_Click();
    const std::vector<long> second = volume_units(c.form.curve_file_path());
    ASSERT_GT(second.size(), 400u);

    // Where in the loop the second recording began.
    size_t best_shift = 0;
    long best = 1 << 30;
    for (size_t shift = 0; shift < first.size(); ++shift) {
        long worst = 0;
        for (size_t i = 0; i < second.size() && worst <= best; ++i)
            worst = std::max(worst, std::labs(second[i] - first[(i + shift) % first.size()]));
        if (worst < best) best = worst, best_shift = shift;
    }
    EXPECT_LE(best, 1) << "the replayed curve differs by " << best << " counts at best (shift "
                       << best_shift << ")";
}

}  // namespace
}  // namespace zel::test
