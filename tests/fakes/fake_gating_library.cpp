#include "fakes/fake_gating_library.h"

#include <cstring>

#include "app/zel_error.h"

namespace zel::test {

int16_t FakeGatingLibrary::call(const QString& what) {
    if (missing || (!lacks.isEmpty() && what.startsWith(lacks + QLatin1Char('('))))
        throw ZelError(err_file_not_found, QStringLiteral("libtarrow"),
                       QStringLiteral("File not found"));
    calls.append(what);
    return 0;
}

int16_t FakeGatingLibrary::Open() { return call(QStringLiteral("Open()")); }
int16_t FakeGatingLibrary::Close() { return call(QStringLiteral("Close()")); }
int16_t FakeGatingLibrary::Connected() {
    call(QStringLiteral("Connected()"));
    return connected_result;
}
int16_t FakeGatingLibrary::GetStatus(TarrowStatus& out) {
    call(QStringLiteral("GetStatus()"));
    out = status;
    return 0;
}
int16_t FakeGatingLibrary::GetFirmwareVersions(TarrowFirmware& firmware) {
    call(QStringLiteral("GetFirmwareVersions()"));
    std::memcpy(firmware.relay_firmware, "R 1.02   ", 9);
    std::memcpy(firmware.control_firmware, "C 2.10   ", 9);
    return 0;
}
int16_t FakeGatingLibrary::GetDLLVersion(TarrowDllVersion& version) {
    call(QStringLiteral("GetDLLVersion()"));
    std::memcpy(version.dll_version, "1.0.0.7  ", 9);
    return 0;
}
int16_t FakeGatingLibrary::SetRelayState(uint8_t close_relay) {
    return call(QStringLiteral("SetRelayState(%1)").arg(close_relay));
}
int16_t FakeGatingLibrary::SetRelayEnablePermission(uint8_t unlock) {
    return call(QStringLiteral("SetRelayEnablePermission(%1)").arg(unlock));
}
int16_t FakeGatingLibrary::ClearTimingViolation() {
    return call(QStringLiteral("ClearTimingViolation()"));
}

void FakeGatingLibrary::set_status(const char* six) {
    std::memcpy(&status, six, sizeof status);
}

QStringList FakeGatingLibrary::relay_calls() const {
    return calls.filter(QStringLiteral("SetRelayState("));
}

}  // namespace zel::test
