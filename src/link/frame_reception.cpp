// Turns the byte stream from the module into checked frames and hands each to its handler.
#include <QTextStream>

#include "app/form1.h"
#include "app/helpers.h"
#include "data/file_access.h"
#include "data/file_fault.h"
#include "language/messages.h"

namespace zel {

namespace {
constexpr uint8_t status_start = 39;
constexpr uint8_t data_start = 131;
}  // namespace

uint8_t Form1::read_byte() {
    if (platform.serial.InBufferCount() > 0) return platform.serial.Input();
    return 0;
}

void Form1::MSComm1_OnComm() {
    if (platform.serial.InBufferCount() < 1) return;
    if (!packet_found) {
        const uint8_t first = read_byte();
        if (first == status_start) {
            data_packet = false;
            packet_length = 31;
        } else if (first == data_start) {
            data_packet = true;
            packet_length = 8;
        } else {
            // One unrecognised byte per notification: the rest waits for the next one.
            data_count = 0;
            return;
        }
        packet_found = true;
        data_count = 1;
        packet[0] = first;
    }
    while (platform.serial.InBufferCount() >= 1 && data_count < packet_length) {
        packet[static_cast<size_t>(data_count)] = read_byte();
        data_count = add_i16(data_count, 1);
    }
    if (data_count != packet_length) return;

    if (!checksum_ok()) {
        // Frames that fail before the first data frame is counted leave no trace.
        if (total_counts != 0) log_checksum_error();
    } else if (data_packet) {
        process_data_packet();
        module_heartbeat_counter = 0;
    } else {
        zel_detect = true;
        process_status_packet();
    }
    data_count = 0;
    packet_found = false;
}

bool Form1::checksum_ok() const {
    if (packet_length < 1) return true;
    int16_t sum = 0;
    for (int k = 0; k < packet_length; ++k) sum = add_i16(sum, packet[static_cast<size_t>(k)]);
    return (sum & 0xFF) == 0;
}

void Form1::log_checksum_error() {
    const QString directory = AppDataPath + QLatin1Char('/') + logSubDir;
    if (const int error = make_folders(directory))
        raise_file_fault(error, "log_checksum_error", directory);
    const QDateTime now = platform.clock.now();
    if (!checksum_log_open) {
        checksum_log_open = true;
        const QString name = directory + QLatin1Char('/') + message_text(352) + QLatin1Char(' ') +
                             now.toString(QStringLiteral("M_d_yy_h_mm_ss")) +
                             QStringLiteral(".txt");
        checksum_log = std::make_unique<AppendFile>(name, "log_checksum_error");
        checksum_log->open(AppendFile::Start::anew);
    }
    const QChar separator = platform.locale.decimal_separator();
    QString entry = print_zones({platform.locale.medium_date(now.date()),
                                 platform.locale.medium_time(now.time()), patient_last_name,
                                 patient_medical_id, printed_number(total_counts, separator)});
    entry += QStringLiteral("\r\n");
    for (int k = 0; k < packet_length; ++k)
        entry += QStringLiteral(" %1 ").arg(packet[static_cast<size_t>(k)]);
    entry += QStringLiteral(" \r\n------------------------------------------------------\r\n");
    checksum_log->append(entry.toLatin1());
}

}  // namespace zel
