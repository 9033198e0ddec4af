// The frame assembler and decoders fed arbitrary bytes in arbitrary pieces, as a noisy line
// would deliver them. The one failure allowed is the overflow of a volume with no magnitude,
// which ends the program.
#include <QTemporaryDir>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "app/form1.h"
#include "fakes/fake_platform.h"
#include "language/messages.h"

namespace {

struct Console {
    zel::test::FakePlatform fakes;
    QTemporaryDir app_data;
    zel::Form1 form{fakes.platform, app_data.path()};
    Console() {
        fakes.serial.set_PortOpen(true);
        form.Pic.Height = 7485;
        form.patient_defined = true;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool loaded = (zel::load_default_messages(), true);
    (void)loaded;
    Console c;
    // The first byte of each piece says how many bytes follow it in that notification.
    size_t at = 0;
    while (at < size) {
        const size_t piece = 1 + data[at] % 16;
        ++at;
        const size_t end = at + piece < size ? at + piece : size;
        c.fakes.serial.arrive(QByteArray(reinterpret_cast<const char*>(data + at),
                                         static_cast<qsizetype>(end - at)));
        at = end;
        try {
            c.fakes.serial.notify();
        } catch (const zel::ZelError& e) {
            if (e.number != zel::err_overflow) std::abort();
            return 0;
        }
        if (c.form.data_count < 0 || c.form.data_count > 31) std::abort();
        if (c.form.packet_found && c.form.packet_length != 8 && c.form.packet_length != 31)
            std::abort();
    }
    return 0;
}
