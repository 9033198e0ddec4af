#include "link/commands.h"

#include <gtest/gtest.h>

#include "app/zel_error.h"
#include "fakes/rig.h"

namespace zel::test {
namespace {

TEST(SettingsEncoding, threshold_bytes_with_their_kept_quirks) {
    struct Case { float litres; uint8_t high, low; };
    const Case cases[] = {
        {0.5f, 0x00, 0x7D}, {1.0f, 0x00, 0xFA}, {-0.5f, 0xFF, 0x83}, {0.0f, 0x00, 0x00},
        {2.0f, 0x01, 0xF4}, {-1.0f, 0xFF, 0x06},
        {1.02f, 0x01, 0xFF},  // A = 255 rounds up into the high byte: sent 256 units too high
    };
    for (const auto& c : cases) {
        const auto encoded = encode_threshold(c.litres);
        EXPECT_EQ(encoded[0], c.high) << c.litres;
        EXPECT_EQ(encoded[1], c.low) << c.litres;
    }
}

TEST(SettingsEncoding, a_negative_threshold_with_a_zero_low_byte_overflows) {
    EXPECT_THROW(encode_threshold(-5.12f), ZelError);
}

TEST(SettingsEncoding, duration_and_calibration_bytes) {
    EXPECT_EQ(encode_duration(15), 0x0F);
    EXPECT_EQ(encode_duration(12.5), 12);  // ties to even
    EXPECT_EQ(encode_duration(13.5), 14);
    EXPECT_EQ(encode_calibration(0.004f), (std::array<uint8_t, 2>{0x80, 0x00}));
    EXPECT_EQ(encode_calibration(0.0041f), (std::array<uint8_t, 2>{0x83, 0x33}));
}

TEST(UploadSettings, sends_thirteen_setting_bytes_then_asks_for_the_echo) {
    Rig rig;
    rig.form.duration = 15;
    rig.form.thresh = 1.0f;
    rig.form.settings_confirm = false;
    rig.form.settings_confirm_counter = 3;
    rig.form.upload_settings();
    EXPECT_EQ(rig.fakes.serial.sent(),
              bytes({'L', 15, 'T', 0x00, 0xFA, '+', 0x80, 0x00, '-', 0x80, 0x00, '1', 'V'}));
    EXPECT_TRUE(rig.form.settings_confirm);
    EXPECT_EQ(rig.form.settings_confirm_counter, 0);
}

TEST(UploadSettings, does_nothing_on_a_closed_port) {
    Rig rig;
    rig.fakes.serial.set_PortOpen(false);
    rig.form.settings_confirm = false;
    rig.form.upload_settings();
    EXPECT_FALSE(rig.form.settings_confirm);
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
