#include "app/zel_error.h"

namespace zel {

ZelError::ZelError(int number_, QString source_, QString description_)
    : std::runtime_error(description_.toStdString()),
      number(number_),
      source(std::move(source_)),
      description(std::move(description_)) {}

void raise_overflow(const char* source) {
    throw ZelError(err_overflow, QString::fromLatin1(source), QStringLiteral("Overflow"));
}

int16_t checked_i16(long long value, const char* source) {
    if (value < INT16_MIN || value > INT16_MAX) raise_overflow(source);
    return static_cast<int16_t>(value);
}

}  // namespace zel
