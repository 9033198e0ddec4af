// Profile files: any bytes as the file, with a section, a key and a value taken from the
// input. Reading must never fail, and a value that the writer accepts must read back.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

#include "data/profile_file.h"

namespace {

bool blank(QChar c) {
    return c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\v') ||
           c == QLatin1Char('\f');
}

// What a read gives back for a written value: blanks around it and one pair of enclosing
// quotes removed, cut to 255 characters.
QString as_read(QString value) {
    while (!value.isEmpty() && blank(value.front())) value.remove(0, 1);
    while (!value.isEmpty() && blank(value.back())) value.chop(1);
    if (value.size() >= 2 &&
        (value.front() == QLatin1Char('"') || value.front() == QLatin1Char('\'')) &&
        value.back() == value.front())
        value = value.mid(1, value.size() - 2);
    return value.left(255);
}

QString latin1(const std::string& bytes) {
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const int operation = input.ConsumeIntegralInRange(0, 3);
    const int buffer_size = input.ConsumeIntegralInRange(0, 300);
    const QString section = latin1(input.ConsumeRandomLengthString(40));
    const QString key = latin1(input.ConsumeRandomLengthString(40));
    const QString value = latin1(input.ConsumeRandomLengthString(300));
    const std::string rest = input.ConsumeRemainingBytesAsString();
    QByteArray contents(rest.data(), static_cast<qsizetype>(rest.size()));

    const QString read = zel::profile_value(contents, section, key, value, buffer_size);
    if (read.size() > std::max(buffer_size - 1, 0)) std::abort();
    // The index that a reader of many values builds once reads the same.
    if (zel::ProfileIndex(contents).value(section, key, value, buffer_size) != read) std::abort();

    switch (operation) {
        case 0: {
            const bool written = zel::edit_profile(contents, section, &key, &value);
            // A key that looks like a section header can't be found again, as with the
            // original functions; the console's keys never do.
            const QString bare_key = key.trimmed();
            if (written && !bare_key.startsWith(QLatin1Char('[')) &&
                zel::profile_value(contents, section, key, QStringLiteral("<none>")) !=
                    as_read(value))
                std::abort();
            break;
        }
        case 1:
            zel::edit_profile(contents, section, &key, nullptr);
            break;
        case 2:
            zel::edit_profile(contents, section, nullptr, nullptr);
            break;
        default:
            break;
    }
    return 0;
}
