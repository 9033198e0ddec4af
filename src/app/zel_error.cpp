#include "app/zel_error.h"

namespace zel {

ZelError::ZelError(int number_, QString source_, QString description_)
    : std::runtime_error(description_.toStdString()),
      number(number_),
      source(std::move(source_)),
      description(std::move(description_)) {}

QString run_time_error(const char* source, const std::function<void()>& handler) {
    QString description;
    int number = 0;
    try {
        handler();
        return {};
    } catch (const ZelError& e) {
        number = e.number;
        description = e.description;
        if (!e.source.isEmpty()) description += QStringLiteral(" (%1)").arg(e.source);
    } catch (const std::exception& e) {
        description = QString::fromLocal8Bit(e.what());
    }
    return QStringLiteral("Run-time error %1 in %2: %3")
        .arg(number)
        .arg(QString::fromLatin1(source), description);
}

void raise_overflow(const char* source) {
    throw ZelError(err_overflow, QString::fromLatin1(source), QStringLiteral("Overflow"));
}

int16_t checked_i16(long long value, const char* source) {
    if (value < INT16_MIN || value > INT16_MAX) raise_overflow(source);
    return static_cast<int16_t>(value);
}

}  // namespace zel
