#pragma once
// Decoding of the values of a data frame.
#include <QString>
#include <cstdint>

namespace zel {

// Session time as hours:minutes:seconds, no leading zeros.
QString elapsed_text(double total_counts, float count_frequency);
// Signed 16-bit volume in units of 0.004 L; 0x80 0x00 overflows.
double decode_volume(uint8_t high, uint8_t low);
// Time left on the module's hold timer, in seconds.
double decode_time_left(uint8_t high, uint8_t low);
// A pneumatic reservoir's raw level, 0-255 for 0-5 V, in psi: 0.5 V is 0 psi, 4.5 V 15 psi.
float reservoir_psi(uint8_t raw);

}  // namespace zel
