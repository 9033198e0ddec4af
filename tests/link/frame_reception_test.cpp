#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "fakes/rig.h"

namespace zel::test {
namespace {

QStringList checksum_logs(const Rig& rig) {
    return QDir(rig.form.AppDataPath + QStringLiteral("/LOG")).entryList(QDir::Files);
}

TEST(FrameReception, assembles_frames_however_the_bytes_are_split) {
    const QByteArray frame = data_frame(0x04, 1, 250);
    struct Case { const char* name; std::vector<int> chunks; };
    const Case cases[] = {
        {"whole", {8}}, {"byte by byte", {1, 1, 1, 1, 1, 1, 1, 1}},
        {"start alone", {1, 7}}, {"three pieces", {3, 4, 1}},
    };
    for (const auto& c : cases) {
        Rig rig;
        int at = 0;
        for (int size : c.chunks) {
            rig.fakes.serial.receive(frame.mid(at, size));
            at += size;
        }
        EXPECT_EQ(rig.form.total_counts, 1) << c.name;
        EXPECT_DOUBLE_EQ(rig.form.volume, 1.0) << c.name;
        EXPECT_FALSE(rig.form.packet_found) << c.name;
    }
}

TEST(FrameReception, handles_one_frame_per_notification_and_leaves_the_next_waiting) {
    Rig rig;
    rig.fakes.serial.receive(data_frame() + data_frame());
    EXPECT_EQ(rig.form.total_counts, 1);
    EXPECT_EQ(rig.fakes.serial.InBufferCount(), 8);
    rig.fakes.serial.notify();
    EXPECT_EQ(rig.form.total_counts, 2);
}

TEST(FrameReception, drops_one_noise_byte_per_notification) {
    Rig rig;
    rig.fakes.serial.receive(bytes({1, 2, 3}) + data_frame());
    EXPECT_EQ(rig.fakes.serial.InBufferCount(), 10);
    EXPECT_EQ(rig.form.data_count, 0);
    rig.fakes.serial.drain();
    EXPECT_EQ(rig.form.total_counts, 1);
    EXPECT_EQ(rig.fakes.serial.notifications, 4);
}

TEST(FrameReception, a_false_start_byte_costs_at_most_that_frame) {
    Rig rig;
    rig.fakes.serial.receive(data_frame());
    // A stream joined mid-frame: a data byte of 131 opens a frame that fails its sum.
    rig.fakes.serial.arrive(bytes({131, 0x04, 1, 0, 0}) + data_frame() + data_frame());
    rig.fakes.serial.drain();
    // The false frame swallowed the first 3 bytes of the next real one, whose rest is noise.
    EXPECT_EQ(rig.form.total_counts, 2);
    EXPECT_EQ(checksum_logs(rig).size(), 1);
}

TEST(FrameReception, a_bad_sum_is_logged_only_once_counting_has_begun) {
    QByteArray bad = data_frame(0x04, 1, 10);
    bad[7] = static_cast<char>(bad[7] + 1);
    {
        Rig rig;
        rig.fakes.serial.receive(bad);
        EXPECT_EQ(rig.form.total_counts, 0);
        EXPECT_FALSE(QDir(rig.form.AppDataPath + QStringLiteral("/LOG")).exists());
        EXPECT_FALSE(rig.form.checksum_log_open);
    }
    {
        Rig rig;
        rig.form.patient_last_name = QStringLiteral("Doe");
        rig.form.patient_medical_id = QStringLiteral("M1");
        rig.fakes.serial.receive(data_frame());
        rig.form.module_heartbeat_counter = 1;
        rig.fakes.serial.receive(bad);
        rig.fakes.serial.receive(bad);
        EXPECT_EQ(rig.form.total_counts, 1);
        EXPECT_EQ(rig.form.module_heartbeat_counter, 1);  // bad frames keep no link alive
        const QStringList logs = checksum_logs(rig);
        ASSERT_EQ(logs.size(), 1);
        EXPECT_EQ(logs[0], QStringLiteral("data checksum error 11_22_26_9_05_07.txt"));
        rig.form.close_run_files();
        QFile file(rig.form.AppDataPath + QStringLiteral("/LOG/") + logs[0]);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().split('\n');
        ASSERT_EQ(lines.size(), 7);  // two entries of three lines and the empty rest
        EXPECT_EQ(lines[0], QByteArray("22-Nov-26     09:05:07      Doe           M1             1 \r"));
        QByteArray sums;
        for (int k = 0; k < 8; ++k) sums += ' ' + QByteArray::number(static_cast<uint8_t>(bad[k])) + ' ';
        EXPECT_EQ(lines[1], sums + " \r");
        EXPECT_EQ(lines[2], QByteArray("------------------------------------------------------\r"));
    }
}

TEST(FrameReception, status_frames_set_the_detect_flag_only_when_their_sum_is_good) {
    Rig rig;
    QByteArray bad = status_frame();
    bad[30] = static_cast<char>(bad[30] ^ 1);
    rig.fakes.serial.receive(bad);
    EXPECT_FALSE(rig.form.zel_detect);
    rig.form.module_heartbeat_counter = 2;
    rig.fakes.serial.receive(status_frame());
    EXPECT_TRUE(rig.form.zel_detect);
    EXPECT_EQ(rig.form.module_heartbeat_counter, 2);  // only data frames keep the link alive
    EXPECT_EQ(rig.form.zel_version_id, QStringLiteral("ZEL 3.1"));
}

TEST(FrameReception, a_frame_stays_open_across_notifications_without_a_time_out) {
    Rig rig;
    const QByteArray frame = data_frame();
    rig.fakes.serial.receive(frame.left(5));
    EXPECT_TRUE(rig.form.packet_found);
    EXPECT_EQ(rig.form.data_count, 5);
    rig.fakes.serial.notify();  // nothing waits: the frame stays as it is
    EXPECT_EQ(rig.form.data_count, 5);
    rig.fakes.serial.receive(frame.mid(5));
    EXPECT_EQ(rig.form.total_counts, 1);
}

TEST(FrameReception, a_nested_pass_during_a_dialog_handles_the_same_frame_again) {
    // A modal dialog opened inside the frame's handling runs the event loop, which enters the
    // handler again while the outer pass stands at the complete frame.
    Rig rig;
    rig.fakes.serial.receive(data_frame());
    rig.form.packet_found = true;  // as the outer pass leaves them before its last step
    rig.form.data_count = rig.form.packet_length;
    rig.fakes.serial.receive(QByteArray(1, '\x01'));
    EXPECT_EQ(rig.form.total_counts, 2);
    EXPECT_FALSE(rig.form.packet_found);
    EXPECT_EQ(rig.fakes.serial.InBufferCount(), 1);  // the filling loop was skipped
}

TEST(Checksum, a_frame_is_good_when_its_bytes_sum_to_zero_modulo_256) {
    Rig rig;
    rig.form.packet_length = 0;
    EXPECT_TRUE(rig.form.checksum_ok());
    rig.form.packet_length = 31;
    rig.form.packet.fill(255);  // 31 * 255 = 7905: no overflow of the 16-bit sum
    EXPECT_FALSE(rig.form.checksum_ok());
    rig.form.packet[30] = 31;   // 30 * 255 + 31 = 7681 = 30 * 256 + 1
    EXPECT_FALSE(rig.form.checksum_ok());
    rig.form.packet[30] = 30;
    EXPECT_TRUE(rig.form.checksum_ok());
}

}  // namespace
}  // namespace zel::test
