#include "fakes/fake_gating_library.h"

#include <cstring>

#include "app/zel_error.h"

namespace zel::test {

void FakeGatingLibrary::call(const QString& what) {
    if (missing || (!lacks.isEmpty() && what.startsWith(lacks + QLatin1Char('('))))
        throw ZelError(err_file_not_found, QStringLiteral("libtarrow"),
                       QStringLiteral("File not found"));
    calls.append(what);
}

int16_t FakeGatingLibrary::Open() {
    call(QStringLiteral("Open()"));
    return open_result;
}
int16_t FakeGatingLibrary::Close() {
    call(QStringLiteral("Close()"));
    return 0;
}
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
    call(QStringLiteral("SetRelayState(%1)").arg(close_relay));
    return 0;
}
int16_t FakeGatingLibrary::SetRelayEnablePermission(uint8_t unlock) {
    call(QStringLiteral("SetRelayEnablePermission(%1)").arg(unlock));
    return 0;
}
int16_t FakeGatingLibrary::ClearTimingViolation() {
    call(QStringLiteral("ClearTimingViolation()"));
    return 0;
}

void FakeGatingLibrary::set_status(const char* six) {
    std::memcpy(&status, six, sizeof status);
}

QStringList FakeGatingLibrary::relay_calls() const {
    return calls.filter(QStringLiteral("SetRelayState("));
}

}  // namespace zel::test
