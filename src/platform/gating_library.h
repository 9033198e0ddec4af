#pragma once
// The gating system's library: the nine calls the console makes. A missing library or
// function fails the call with ZelError err_file_not_found.
#include <cstdint>

#include "tarrow.h"

namespace zel {

class GatingLibrary {
public:
    virtual ~GatingLibrary() = default;
    virtual int16_t Open() = 0;
    virtual int16_t Close() = 0;
    virtual int16_t Connected() = 0;
    virtual int16_t GetStatus(TarrowStatus& status) = 0;
    virtual int16_t GetFirmwareVersions(TarrowFirmware& firmware) = 0;
    virtual int16_t GetDLLVersion(TarrowDllVersion& version) = 0;
    virtual int16_t SetRelayState(uint8_t close_relay) = 0;
    virtual int16_t SetRelayEnablePermission(uint8_t unlock) = 0;
    virtual int16_t ClearTimingViolation() = 0;
};

}  // namespace zel
