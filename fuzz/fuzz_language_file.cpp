// Language files and their companions: any bytes as either. A file that counts 255 or more
// non-empty message lines always loads. Then the file goes through the console's start: the
// scan of the language folder (the file beside a companion with its true checksum) and the
// load of the language it names; the catalogue stays whole either way.
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <cstdlib>

#include "app/zel_error.h"
#include "console.h"
#include "data/crc_companion.h"
#include "language/language_file.h"

namespace {

template <class Read>
void with_buffer(const QByteArray& bytes, Read&& read) {
    QBuffer file;
    file.setData(bytes);
    file.open(QIODevice::ReadOnly);
    try {
        read(file);
    } catch (const zel::ZelError& e) {
        if (e.number != zel::err_input_past_end) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool catalogue = (zel::load_default_messages(), true);
    (void)catalogue;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    with_buffer(bytes, [](QIODevice& file) { zel::read_display_name(file); });
    with_buffer(bytes, [](QIODevice& file) { zel::read_companion_checksum(file); });
    long long lines = -1;
    with_buffer(bytes, [&](QIODevice& file) { lines = zel::count_message_lines(file); });
    bool loaded = false;
    with_buffer(bytes, [&](QIODevice& file) {
        zel::read_message_lines(file);
        loaded = true;
    });
    if (lines >= zel::number_of_definitions && !loaded) std::abort();

    zel::fuzz::Console c;
    const QString folder = c.app_data.path() + QStringLiteral("/languages");
    const QString path = folder + QStringLiteral("/fuzz.lng");
    QDir().mkpath(folder);
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) std::abort();
    }
    if (!zel::write_crc_companion(zel::language_companion_path(path), zel::CalculateCRC(path)))
        std::abort();
    QString name;
    with_buffer(bytes, [&](QIODevice& file) { name = zel::read_display_name(file); });
    c.form.language_file = name;
    c.form.load_language_catalogue();
    const bool accepted = c.form.accepted_language_count == 1;
    if (accepted != (lines == zel::number_of_definitions)) std::abort();
    // Every message can be asked for, whatever the file held.
    for (int id = zel::LangOffset; id <= zel::LangOffset + zel::number_of_definitions; ++id)
        zel::message_text(id);
    zel::load_default_messages();
    return 0;
}
