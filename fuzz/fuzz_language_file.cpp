// Language files and their companions: any bytes as either. A file that counts 255 or more
// non-empty message lines always loads.
#include <QBuffer>
#include <cstdlib>

#include "app/zel_error.h"
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
    return 0;
}
