#pragma once
// Numbers in the machine's own form, as the patient file and the curve file hold them: blanks
// around them skipped, a sign, digits, the system's decimal separator, decimals, an exponent.
// The other separator is the grouping of thousands and is passed over where it follows a digit
// of the whole part, so a file from a machine with the other separator reads a power of ten off
// ("1,5" on a dot machine is 15) rather than failing. Anything else fails with a type mismatch
// (13); a value beyond a double's range with an overflow (6).
#include <QString>

namespace zel {

double locale_number(const char* begin, const char* end, char separator, const char* source);
double locale_number(const QString& text, QChar separator, const char* source);
// The same narrowed to a single, failing with an overflow beyond a single's range.
float locale_single(const QString& text, QChar separator, const char* source);

}  // namespace zel
