// The simulator's encoders against the console's own decoders: a mistake shared by both
// would hide in either one's own tests.
#include <gtest/gtest.h>

#include "fakes/rig.h"
#include "frame_encoding.h"
#include "wire.h"

namespace zelsim::test {
namespace {

using zel::test::Rig;

TEST(SimulatedFrames, data_frames_pass_the_console_checksum_and_decode_to_what_was_meant) {
    struct Case { int units, time_left; double litres; };
    const Case cases[] = {
        {0, 0, 0.0},      {1, 1, 0.004},    {-1, 50, -0.004},      {250, 1000, 1.0},
        {-375, 51, -1.5}, {-32767, 2, -131.068}, {32767, 65535, 131.068},
        // Beyond the range the module reports its limit, never the pattern 0x80 0x00.
        {-32768, 0, -131.068}, {40000, 0, 131.068},
    };
    for (const Case& c : cases) {
        Rig rig;
        const auto bytes = encode_data_frame({.volume_units = c.units, .time_left_frames = c.time_left});
        rig.fakes.serial.receive(to_bytes({bytes.begin(), bytes.end()}));
        EXPECT_EQ(rig.form.total_counts, 1) << c.units;
        EXPECT_NEAR(rig.form.volume, c.litres, 1e-9) << c.units;
        EXPECT_NEAR(rig.form.ZEL_CM_duration, c.time_left * 0.02, 1e-9) << c.time_left;
    }
}

}  // namespace
}  // namespace zelsim::test
