#pragma once
// The one failure type of the console. A routine that can fail throws it; the routine's
// handler (a catch at its end) or, failing that, the event entry point deals with it.
#include <QString>
#include <cstdint>
#include <functional>
#include <stdexcept>

namespace zel {

// Numbers with a meaning of their own.
enum ErrorNumber : int {
    err_overflow = 6,
    err_subscript = 9,
    err_division_by_zero = 11,
    err_type_mismatch = 13,
    err_bad_file_number = 52,
    err_file_not_found = 53,
    err_device_io = 57,
    err_disk_full = 61,
    err_input_past_end = 62,
    err_permission_denied = 70,
    err_path_file_access = 75,
    err_path_not_found = 76,
    err_bad_curve_file = 515,
    err_too_many_curves = 517,
    err_number_format_differs = 998,
    err_incompatible_settings = 999,
    err_port_already_open = 8005,
    err_invalid_port = 8002,
    err_port_not_open = 8018,
    err_cancelled = 32755,
    err_session_history_read = -2147220990,
};

class ZelError : public std::runtime_error {
public:
    ZelError(int number, QString source, QString description);
    int number;
    QString source;
    QString description;
};

// Runs an event's handler. A failure that escapes it comes back as the text of its report,
// "Run-time error N in SOURCE: description"; a null string when the handler went through.
QString run_time_error(const char* source, const std::function<void()>& handler);

[[noreturn]] void raise_overflow(const char* source);

// 16-bit signed arithmetic that fails, as the module's sized integers do, instead of wrapping.
int16_t checked_i16(long long value, const char* source = "int16");
inline int16_t add_i16(int16_t a, long long b, const char* source = "int16") {
    return checked_i16(static_cast<long long>(a) + b, source);
}

}  // namespace zel
