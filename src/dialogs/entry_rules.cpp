#include "dialogs/entry_rules.h"

#include <cmath>

#include "app/helpers.h"
#include "app/zel_error.h"
#include "data/locale_number.h"

namespace zel {

bool entered_number(const QString& text, const QString& number_format, QChar separator,
                    double& value) {
    const QChar refused =
        number_format == QLatin1String("comma") ? QLatin1Char('.') : QLatin1Char(',');
    if (text.contains(refused)) return false;
    try {
        value = locale_number(text, separator, "entered_number");
    } catch (const ZelError&) {
        return false;
    }
    return true;
}

void widen_chart_for_threshold(double& max_y, double& min_y, float thresh) {
    if (std::fabs(max_y * 0.75) < std::fabs(thresh)) {
        max_y = std::fabs(round_to_places(static_cast<double>(thresh) * 1.25, 1));
        min_y = -max_y;
    }
}

}  // namespace zel
