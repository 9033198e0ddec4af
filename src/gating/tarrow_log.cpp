// The log of timing violations kept beside each patient's files.
#include <QFileInfo>

#include "app/form1.h"
#include "language/messages.h"
#include "link/data_packet.h"

namespace zel {

void Form1::write_tarrow_log() {
    try {
        const QString path = data_directory + QLatin1Char('/') + patient_last_name +
                             QLatin1Char('_') + patient_first_name + QLatin1Char('_') +
                             patient_medical_id + QStringLiteral("/tarrow_log.txt");
        QString text;
        if (!QFileInfo::exists(path)) {
            text += message_text(115) + QStringLiteral(" : ") + patient_last_name +
                    QStringLiteral("\r\n") + message_text(282) + QStringLiteral(" : ") +
                    patient_first_name + QStringLiteral("\r\n") + message_text(117) +
                    QStringLiteral(" : ") + patient_medical_id + QStringLiteral("\r\n\r\n");
        }
        const QDateTime now = platform.clock.now();
        text += QString(70, QLatin1Char('*')) + QStringLiteral("\r\n") +
                platform.locale.medium_date(now.date()) + QStringLiteral("   ") +
                platform.locale.medium_time(now.time()) + QStringLiteral("\r\n") +
                message_text(338) + QLatin1Char(' ') + message_text(201) + QLatin1Char(' ') +
                session + QLatin1Char(' ') + message_text(221) + QLatin1Char(' ') +
                elapsed_text(total_counts, count_frequency) + QStringLiteral("\r\n\r\n");
        // One write an entry: a full disk leaves the entries before it whole.
        AppendFile file(path, "write_tarrow_log");
        file.open();
        file.append(text.toLatin1());
        file.close();
    } catch (const ZelError&) {
        // The log is a record for later; a failure to keep it must not stop a treatment.
    }
}

}  // namespace zel
