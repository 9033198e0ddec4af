#pragma once
// State of the link to the control module: frame assembly, the port search, the latest
// decoded values.
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>

namespace zel {

struct LinkState {
    // Frame assembly.
    std::array<uint8_t, 31> packet{};
    bool packet_found = false;
    bool data_packet = false;
    int16_t packet_length = 0;
    int16_t data_count = 0;
    bool zel_detect = false;
    int16_t module_heartbeat_counter = 0;
    bool checksum_log_open = false;

    // Data frames.
    double total_counts = 0;
    double counts = 0;
    double volume = 0;
    double v0 = 0, v1 = 0;
    double ZEL_CM_duration = 0;
    bool transducer_fault = false;
    bool line_fault = false;
    bool battery_fault = false;
    bool pneumatic_fault = false;
    bool about_visible = false;

    // Status frames: the module's version, checks and levels.
    QString zel_version_id;
    bool turbine_check = false;
    float battery_level = 0;
    double battery_level_conversion_factor = 0.0363;
    float battery_cutoff_level = 3.75f;
    bool battery_check = false;
    float line_level = 0;
    double line_level_conversion_factor = 0.0588;
    float line_cutoff_level = 10.0f;
    bool line_check = false;
    float pressure_level = 0;
    float pressure_cutoff_level = 5.0f;
    float vacuum_level = 0;
    float vacuum_cutoff_level = 3.0f;
    bool pneumatics_check = false;
    // The settings as the module echoed them in its last status frame.
    float echo_thresh = 0;
    double echo_duration = 0;
    float echo_forward = 0;
    float echo_reverse = 0;

    // The search for the module.
    std::array<int16_t, 21> port_list{};
    int16_t num_ports = 0;
    int16_t port_index = 0;
    int16_t ComPort = 0;
    // Ports that exist but that this user may not open, each told once.
    QStringList ports_denied_told;
    // The system check window at start.
    bool form13_open = false;
    bool system_check_result = false;

    // Settings upload.
    double duration = 0;
    float forward_calibration_factor = 0.004f;
    float reverse_calibration_factor = 0.004f;
    bool settings_confirm = true;
    int16_t settings_confirm_counter = 0;
};

}  // namespace zel
