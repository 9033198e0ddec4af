// The frame assembler and decoders fed arbitrary bytes in arbitrary pieces, as a noisy line
// would deliver them. The one failure allowed is the overflow of a volume with no magnitude,
// which ends the program.
#include <cstddef>
#include <cstdint>

#include "console.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool loaded = (zel::load_default_messages(), true);
    (void)loaded;
    zel::fuzz::Console c;
    // The first byte of each piece says how many bytes follow it in that notification.
    size_t at = 0;
    try {
        while (at < size) {
            const size_t piece = 1 + data[at] % 16;
            ++at;
            const size_t end = at + piece < size ? at + piece : size;
            c.fakes.serial.arrive(QByteArray(reinterpret_cast<const char*>(data + at),
                                             static_cast<qsizetype>(end - at)));
            at = end;
            c.fakes.serial.notify();
            zel::fuzz::expect_assembly_in_bounds(c.form);
        }
        // The driver notifies again while bytes wait.
        c.fakes.serial.drain();
        zel::fuzz::expect_assembly_in_bounds(c.form);
    } catch (const zel::ZelError& e) {
        zel::fuzz::expect_prescribed(e);
    }
    return 0;
}
