#pragma once
// Gating library without hardware.
//   status             what GetStatus reports ("^C:?EL" style bytes)
//   connected_result   what Connected returns (0 connected)
//   missing            every call fails as a library that is not installed
//   lacks              the one function ("GetStatus") whose calls fail as a missing symbol
//   calls              every call in order: "SetRelayState(1)", "Connected()", ...
#include <QStringList>

#include "platform/gating_library.h"

namespace zel::test {

class FakeGatingLibrary final : public GatingLibrary {
public:
    int16_t Open() override;
    int16_t Close() override;
    int16_t Connected() override;
    int16_t GetStatus(TarrowStatus& status) override;
    int16_t GetFirmwareVersions(TarrowFirmware& firmware) override;
    int16_t GetDLLVersion(TarrowDllVersion& version) override;
    int16_t SetRelayState(uint8_t close_relay) override;
    int16_t SetRelayEnablePermission(uint8_t unlock) override;
    int16_t ClearTimingViolation() override;

    // Sets the six status bytes from a text: link, relay, fast gating, spare, enable, permission.
    void set_status(const char* six);
    // Only the calls that move the relay.
    QStringList relay_calls() const;

    TarrowStatus status{'^', 'O', ':', ' ', 'E', 'L'};
    int16_t connected_result = 0;
    bool missing = false;
    QString lacks;
    QStringList calls;

private:
    int16_t call(const QString& what);  // 0, or throws as the missing library would
};

}  // namespace zel::test
