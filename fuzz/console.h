#pragma once
// The console over the test fakes, as the harnesses drive it: the port open and its
// notifications wired to the frame handler, a patient defined, a chart of the design's size.
#include <QDir>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>

#include "app/form1.h"
#include "fakes/fake_platform.h"
#include "language/messages.h"

namespace zel::fuzz {

struct Console {
    test::FakePlatform fakes;
    QTemporaryDir app_data;
    Form1 form{fakes.platform, app_data.path()};
    Console() {
        fakes.serial.set_PortOpen(true);
        fakes.serial.OnComm = [this] { form.MSComm1_OnComm(); };
        form.Pic.Top = 0;
        form.Pic.Height = 7485;
        form.thresh_label.Height = 285;
        form.patient_defined = true;
    }
};

// A failure that ends the program which the frame handling may raise: the volume pattern with
// no magnitude (0x80 0x00) overflows a 16-bit integer. Anything else is a fault.
inline void expect_prescribed(const ZelError& e) {
    if (e.number == err_overflow && e.source == QLatin1String("process_data_packet")) return;
    std::fprintf(stderr, "unexpected failure %d in %s: %s\n", e.number, qPrintable(e.source),
                 qPrintable(e.description));
    std::abort();
}

// The frame under assembly stays within its buffer and is of one of the two lengths.
inline void expect_assembly_in_bounds(const Form1& form) {
    if (form.data_count < 0 || form.data_count > 31) std::abort();
    if (form.packet_found && form.packet_length != 8 && form.packet_length != 31) std::abort();
}

}  // namespace zel::fuzz
