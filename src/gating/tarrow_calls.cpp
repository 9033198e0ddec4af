// Calls into the gating library made by the cycle and the link.
#include <cstring>

#include "app/form1.h"
#include "language/messages.h"

namespace zel {

namespace {
QString fixed_text(const char* field, size_t size) {
    return QString::fromLatin1(field, static_cast<qsizetype>(strnlen(field, size)));
}
}  // namespace

void Form1::_Tarrow_SetRelayState(uint8_t close_relay) {
    // Behind a failure report the beam may only be stopped, never started.
    if (stopped_by_failure && close_relay != 0) return;
    // Marked before the call: a close that fails half-way may still have closed the relay.
    if (close_relay != 0) relay_close_commanded = true;
    platform.tarrow.SetRelayState(close_relay);
    if (close_relay == 0) relay_close_commanded = false;
}

void Form1::poll_tarrow_status() {
    try {
        tarrowNewData = true;
        // The lost connection and the analysis of the status are the gated treatment's.
        if (platform.tarrow.Connected() != 0) return;
        if (gating_start_mode.isEmpty()) gating_start_mode = message_text(268);
        TarrowFirmware firmware{};
        platform.tarrow.GetFirmwareVersions(firmware);
        tarrow_relay_firmware = fixed_text(firmware.relay_firmware, sizeof firmware.relay_firmware);
        tarrow_control_firmware =
            fixed_text(firmware.control_firmware, sizeof firmware.control_firmware);
        TarrowDllVersion version{};
        platform.tarrow.GetDLLVersion(version);
        tarrow_DLL_firmware = fixed_text(version.dll_version, sizeof version.dll_version);
        platform.tarrow.GetStatus(tarrow_status);
    } catch (const ZelError& e) {
        // Without the library there is no gated operation.
        if (e.number == err_file_not_found) handle_missing_gating_library();
        // Other failures of a poll are ignored; the next poll tries again.
    }
}

}  // namespace zel
