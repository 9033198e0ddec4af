// The gating library for training and tests: the nine functions over a simulated gating
// system. It finds its folder of the application data from where it is installed
// (<app data>/lib/libtarrow.so), reads the trainer's controls from <app data>/sim at every
// call, and appends every call with its time to the call log there.
#include <dlfcn.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>

// Only the nine functions are the library's face; everything else stays hidden.
#pragma GCC visibility push(default)
#include "tarrow.h"
#pragma GCC visibility pop

#include "gating_control.h"
#include "gating_system.h"

namespace {

namespace fs = std::filesystem;

struct Library {
    std::mutex lock;
    std::string app_data;
    zelsim::GatingSystem system;
    std::string last_state;
    FILE* call_log = nullptr;
};

double monotonic_seconds() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + t.tv_nsec / 1e9;
}

std::string find_app_data() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&Tarrow_Open), &info) && info.dli_fname) {
        const fs::path folder = fs::absolute(fs::path(info.dli_fname)).parent_path();
        if (folder.filename() == "lib") return folder.parent_path().string();
    }
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.local/share/zelmoor";
}

Library& library() {
    static Library* instance = [] {
        auto* l = new Library;
        l->app_data = find_app_data();
        return l;
    }();
    return *instance;
}

void read_control(Library& l) {
    std::ifstream in(zelsim::gating_control_path(l.app_data));
    std::stringstream text;
    if (in) text << in.rdbuf();
    l.system.apply(zelsim::parse_gating_control(text.str()));
}

void write_state(Library& l, double now) {
    const TarrowStatus s = l.system.status(now);
    std::ostringstream out;
    out << "connected=" << (l.system.connected() == 0 ? "yes" : "no") << '\n'
        << "relay_link=" << s.relay_link << '\n'
        << "relay_state=" << s.relay_state << '\n'
        << "fast_gating=" << s.fast_gating << '\n'
        << "enable=" << s.enable_state << '\n'
        << "permission=" << s.permission_to_disable << '\n';
    if (out.str() == l.last_state) return;
    l.last_state = out.str();
    const std::string path = zelsim::gating_state_path(l.app_data);
    std::error_code ignored;
    fs::create_directories(fs::path(path).parent_path(), ignored);
    {
        std::ofstream file(path + ".new", std::ios::trunc);
        file << l.last_state;
    }
    fs::rename(path + ".new", path, ignored);
}

void log_call(Library& l, double now, const char* call, int result) {
    if (!l.call_log) {
        const std::string path = zelsim::gating_call_log_path(l.app_data);
        std::error_code ignored;
        fs::create_directories(fs::path(path).parent_path(), ignored);
        l.call_log = std::fopen(path.c_str(), "a");
        if (!l.call_log) return;
        setvbuf(l.call_log, nullptr, _IOLBF, 0);
    }
    timespec wall{};
    clock_gettime(CLOCK_REALTIME, &wall);
    tm local{};
    localtime_r(&wall.tv_sec, &local);
    std::fprintf(l.call_log, "%.6f %02d:%02d:%02d.%03ld %s = %d\n", now, local.tm_hour,
                 local.tm_min, local.tm_sec, wall.tv_nsec / 1000000, call, result);
}

// Every call: the controls as they stand now, the call itself, the log and the state file.
template <class Call>
int16_t serve(const char* name, Call call) {
    Library& l = library();
    std::lock_guard guard(l.lock);
    const double now = monotonic_seconds();
    int16_t result = 1;
    try {
        read_control(l);
        result = call(l.system, now);
        write_state(l, now);
    } catch (...) {
        // Nothing may be thrown into the console; a failed call reports "not done".
    }
    log_call(l, now, name, result);
    return result;
}

}  // namespace

extern "C" {

int16_t Tarrow_Open(void) {
    return serve("Tarrow_Open()", [](zelsim::GatingSystem& s, double) { return s.open(); });
}

int16_t Tarrow_Close(void) {
    return serve("Tarrow_Close()", [](zelsim::GatingSystem& s, double) {
        s.close();
        return int16_t{0};
    });
}

int16_t Tarrow_Connected(void) {
    return serve("Tarrow_Connected()",
                 [](zelsim::GatingSystem& s, double) { return s.connected(); });
}

// A library of another release may lack a function; the tests build one without this.
#ifndef TARROW_SIM_WITHOUT_GET_STATUS
int16_t Tarrow_GetStatus(TarrowStatus* status) {
    return serve("Tarrow_GetStatus()", [status](zelsim::GatingSystem& s, double now) {
        if (status) *status = s.status(now);
        return int16_t{0};
    });
}
#endif

int16_t Tarrow_GetFirmwareVersions(TarrowFirmware* firmware) {
    return serve("Tarrow_GetFirmwareVersions()", [firmware](zelsim::GatingSystem&, double) {
        if (firmware) zelsim::fill_firmware(*firmware);
        return int16_t{0};
    });
}

int16_t Tarrow_GetDLLVersion(TarrowDllVersion* version) {
    return serve("Tarrow_GetDLLVersion()", [version](zelsim::GatingSystem&, double) {
        if (version) zelsim::fill_dll_version(*version);
        return int16_t{0};
    });
}

int16_t Tarrow_SetRelayState(uint8_t close_relay) {
    const std::string name = "Tarrow_SetRelayState(" + std::to_string(close_relay) + ")";
    return serve(name.c_str(), [close_relay](zelsim::GatingSystem& s, double now) {
        return s.set_relay(close_relay != 0, now);
    });
}

int16_t Tarrow_SetRelayEnablePermission(uint8_t unlock) {
    const std::string name = "Tarrow_SetRelayEnablePermission(" + std::to_string(unlock) + ")";
    return serve(name.c_str(), [unlock](zelsim::GatingSystem& s, double) {
        s.set_permission(unlock != 0);
        return int16_t{0};
    });
}

int16_t Tarrow_ClearTimingViolation(void) {
    return serve("Tarrow_ClearTimingViolation()", [](zelsim::GatingSystem& s, double) {
        s.clear_violation();
        return int16_t{0};
    });
}

}  // extern "C"
