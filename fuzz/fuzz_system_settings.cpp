// "zel.ini": any bytes as the file, read on a dot and on a comma system. Reading fails only
// with the console's own failure, and the numeric routines never leave their types' range.
#include <QBuffer>
#include <cmath>
#include <cstdlib>

#include "app/zel_error.h"
#include "data/system_settings_file.h"

namespace {

void read_as(const QByteArray& bytes, const QString& number_format) {
    QBuffer file;
    file.setData(bytes);
    file.open(QIODevice::ReadOnly);
    zel::SystemSettings settings;
    try {
        zel::read_system_settings(file,
                                  QStringLiteral("ZEL System Parameter File - DO NOT EDIT 3.00.01"),
                                  number_format, settings);
    } catch (const zel::ZelError&) {
        return;
    }
    if (!std::isfinite(settings.duration) || !std::isfinite(settings.max_y) ||
        settings.min_y != -settings.max_y || !std::isfinite(settings.thresh))
        std::abort();
    zel::system_settings_lines(QStringLiteral("stamp"), settings, number_format,
                               QLatin1Char(number_format == QLatin1String("comma") ? ',' : '.'));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    read_as(bytes, QStringLiteral("dot"));
    read_as(bytes, QStringLiteral("comma"));
    const QString text = QString::fromLatin1(bytes);
    try {
        zel::point_only_single(text);
    } catch (const zel::ZelError&) {
    }
    try {
        zel::boolean_value(text, QLatin1Char(','));
    } catch (const zel::ZelError&) {
    }
    return 0;
}
