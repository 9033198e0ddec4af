#include "link/commands.h"

#include <gtest/gtest.h>

#include "app/zel_error.h"
#include "fakes/rig.h"

namespace zel::test {
namespace {

using Pair = std::array<uint8_t, 2>;

TEST(SettingsEncoding, threshold_duration_and_calibration_bytes_with_their_kept_quirks) {
    struct Case { float litres; uint8_t high, low; };
    const Case cases[] = {
        {0.5f, 0x00, 0x7D}, {1.0f, 0x00, 0xFA}, {-0.5f, 0xFF, 0x83}, {0.0f, 0x00, 0x00},
        {2.0f, 0x01, 0xF4}, {-1.0f, 0xFF, 0x06},
        {1.02f, 0x01, 0xFF},  // A = 255 rounds up into the high byte: sent 256 units too high
    };
    for (const auto& c : cases)
        EXPECT_EQ(encode_threshold(c.litres), (Pair{c.high, c.low})) << c.litres;
    EXPECT_THROW(encode_threshold(-5.12f), ZelError);  // negative with a zero low byte overflows
    EXPECT_EQ(encode_duration(15), 0x0F);
    EXPECT_EQ(encode_duration(12.5), 12);  // ties to even
    EXPECT_EQ(encode_duration(13.5), 14);
    EXPECT_EQ(encode_calibration(0.004f), (Pair{0x80, 0x00}));
    EXPECT_EQ(encode_calibration(0.0041f), (Pair{0x83, 0x33}));
}

TEST(UploadSettings, sends_thirteen_setting_bytes_then_asks_for_the_echo_on_an_open_port) {
    for (bool open : {true, false}) {
        Rig rig;
        rig.fakes.serial.set_PortOpen(open);
        rig.form.duration = 15;
        rig.form.thresh = 1.0f;
        rig.form.settings_confirm = false;
        rig.form.settings_confirm_counter = 3;
        rig.form.upload_settings();
        const QByteArray settings =
            bytes({'L', 15, 'T', 0x00, 0xFA, '+', 0x80, 0x00, '-', 0x80, 0x00, '1', 'V'});
        EXPECT_EQ(rig.fakes.serial.sent(), open ? settings : QByteArray());
        EXPECT_EQ(rig.form.settings_confirm, open);
        EXPECT_EQ(rig.form.settings_confirm_counter, open ? 0 : 3);
    }
}

TEST(StopModuleLink, sends_stop_and_suspends_both_link_timers) {
    Rig rig;
    rig.form.Timer_HeartBeat->set_Enabled(true);
    rig.form.stop_module_link();
    EXPECT_EQ(rig.fakes.serial.sent(), "D");
    EXPECT_FALSE(rig.form.Timer_HeartBeat->Enabled());
    EXPECT_FALSE(rig.form.Timer_module_connect->Enabled());
}

}  // namespace
}  // namespace zel::test
