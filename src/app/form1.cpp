#include "app/form1.h"

#include "language/messages.h"

namespace zel {

Form1::Form1(Platform& platform_, QString app_data_path)
    : platform(platform_), AppDataPath(std::move(app_data_path)) {}

Form1::~Form1() { close_run_files(); }

void Form1::close_run_files() {
    if (checksum_log_open && checksum_log) {
        checksum_log->close();
        checksum_log.reset();
        checksum_log_open = false;
    }
}

void Form1::run_event(const char* source, const std::function<void()>& handler) {
    QString description;
    int number = 0;
    try {
        handler();
        return;
    } catch (const ZelError& e) {
        number = e.number;
        description = e.description;
        if (!e.source.isEmpty()) description += QStringLiteral(" (%1)").arg(e.source);
    } catch (const std::exception& e) {
        description = QString::fromLocal8Bit(e.what());
    }
    close_run_files();
    platform.boxes.MsgBox(QStringLiteral("Run-time error %1 in %2: %3")
                              .arg(number)
                              .arg(QString::fromLatin1(source), description),
                          vbCritical, message_text(108).trimmed());
    if (end_program) end_program(1);
}

}  // namespace zel
