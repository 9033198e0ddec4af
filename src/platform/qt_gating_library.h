#pragma once
// The gating library loaded at run time: <app data>/lib/libtarrow.so, then the system's
// library path.
#include <QLibrary>

#include "platform/gating_library.h"

namespace zel {

class QtGatingLibrary final : public GatingLibrary {
public:
    explicit QtGatingLibrary(QString app_data_path);
    int16_t Open() override;
    int16_t Close() override;
    int16_t Connected() override;
    int16_t GetStatus(TarrowStatus& status) override;
    int16_t GetFirmwareVersions(TarrowFirmware& firmware) override;
    int16_t GetDLLVersion(TarrowDllVersion& version) override;
    int16_t SetRelayState(uint8_t close_relay) override;
    int16_t SetRelayEnablePermission(uint8_t unlock) override;
    int16_t ClearTimingViolation() override;

private:
    // The function `name`, loading the library on first use.
    QFunctionPointer symbol(const char* name);
    template <class F>
    F function(const char* name) {
        return reinterpret_cast<F>(symbol(name));
    }

    QString app_data_path;
    QLibrary library;
};

}  // namespace zel
