#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "fakes/rig.h"

namespace zel::test {
namespace {

QStringList checksum_logs(const Rig& rig) {
    return QDir(rig.form.AppDataPath + QStringLiteral("/LOG")).entryList(QDir::Files);
}

QByteArray bad_sum(QByteArray frame) {
    frame[frame.size() - 1] = static_cast<char>(frame.back() + 1);
    return frame;
}

TEST(FrameReception, takes_one_frame_a_notification_and_costs_a_bad_one_no_more) {
    const QByteArray f = data_frame(0x04, 1, 250);
    const QByteArray bad = bad_sum(data_frame(0x04, 1, 10));
    struct Case {
        const char* name;
        std::vector<QByteArray> pieces;  // each followed by one notification; empty: only that
        int counted, waiting;            // after the pieces
        int counted_at_last, logs;       // after the driver's notifications until nothing waits
    };
    const Case cases[] = {
        {"whole", {f}, 1, 0, 1, 0},
        {"byte by byte", {f.mid(0, 1), f.mid(1, 1), f.mid(2, 1), f.mid(3, 1), f.mid(4, 1),
                          f.mid(5, 1), f.mid(6, 1), f.mid(7, 1)}, 1, 0, 1, 0},
        {"start alone", {f.left(1), f.mid(1)}, 1, 0, 1, 0},
        {"three pieces", {f.left(3), f.mid(3, 4), f.mid(7)}, 1, 0, 1, 0},
        {"half a frame stays open across an idle notification", {f.left(5), {}, f.mid(5)},
         1, 0, 1, 0},
        {"two frames at once", {f + f}, 1, 8, 2, 0},
        {"noise goes a byte a notification", {bytes({1, 2, 3}) + f}, 0, 10, 1, 0},
        {"a bad sum before counting has begun is not logged", {bad}, 0, 0, 0, 0},
        {"bad sums once counting has begun go to one log", {f, bad, bad}, 1, 0, 1, 1},
        // A stream joined mid-frame: a data byte of 131 opens a frame that fails its sum and
        // swallows the first 3 bytes of the next real one, whose rest is noise.
        {"a false start byte", {f, bytes({131, 0x04, 1, 0, 0}) + f + f}, 1, 13, 2, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig;
        for (const QByteArray& piece : c.pieces) rig.fakes.serial.receive(piece);
        EXPECT_EQ(rig.form.total_counts, c.counted);
        EXPECT_EQ(rig.fakes.serial.InBufferCount(), c.waiting);
        rig.fakes.serial.drain();
        EXPECT_EQ(rig.form.total_counts, c.counted_at_last);
        EXPECT_DOUBLE_EQ(rig.form.volume, c.counted_at_last ? 1.0 : 0.0);
        EXPECT_FALSE(rig.form.packet_found);
        EXPECT_EQ(checksum_logs(rig).size(), c.logs);
        EXPECT_EQ(rig.form.checksum_log_open, c.logs > 0);
    }
    Rig rig;
    rig.fakes.serial.receive(bytes({1, 2, 3}) + f);
    rig.fakes.serial.drain();
    EXPECT_EQ(rig.fakes.serial.notifications, 4);
}

TEST(FrameReception, a_bad_sum_is_logged_with_the_patient_and_its_bytes) {
    const QByteArray bad = bad_sum(data_frame(0x04, 1, 10));
    Rig rig;
    rig.form.patient_last_name = QStringLiteral("Doe");
    rig.form.patient_medical_id = QStringLiteral("M1");
    rig.fakes.serial.receive(data_frame());
    rig.form.module_heartbeat_counter = 1;
    rig.fakes.serial.receive(bad);
    rig.fakes.serial.receive(bad);
    EXPECT_EQ(rig.form.module_heartbeat_counter, 1);  // bad frames keep no link alive
    const QStringList logs = checksum_logs(rig);
    ASSERT_EQ(logs, QStringList{QStringLiteral("data checksum error 11_22_26_9_05_07.txt")});
    rig.form.close_run_files();
    QFile file(rig.form.AppDataPath + QStringLiteral("/LOG/") + logs[0]);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray sums;
    for (char b : bad) sums += ' ' + QByteArray::number(static_cast<uint8_t>(b)) + ' ';
    const QByteArray entry = "22-Nov-26     09:05:07      Doe           M1             1 \r\n" +
                             sums + " \r\n" + QByteArray(54, '-') + "\r\n";
    EXPECT_EQ(file.readAll(), entry + entry);
}

TEST(FrameReception, status_frames_set_the_detect_flag_only_when_their_sum_is_good) {
    Rig rig;
    rig.fakes.serial.receive(bad_sum(status_frame()));
    EXPECT_FALSE(rig.form.zel_detect);
    rig.form.module_heartbeat_counter = 2;
    rig.fakes.serial.receive(status_frame());
    EXPECT_TRUE(rig.form.zel_detect);
    EXPECT_EQ(rig.form.module_heartbeat_counter, 2);  // only data frames keep the link alive
    EXPECT_EQ(rig.form.zel_version_id, QStringLiteral("ZEL 3.1"));
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
