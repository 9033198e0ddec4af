#pragma once
// Rules shared by the dialogs that take numbers and chart settings from the operator.
#include <QChar>
#include <QString>

namespace zel {

// The text as a number under the decimal separator rule: on a machine of the decimal comma a
// point makes it no number, elsewhere a comma does, so that every file written from it reads
// back. Otherwise the machine's own number rules. False if it is no number.
bool entered_number(const QString& text, const QString& number_format, QChar separator,
                    double& value);

// A threshold beyond three quarters of the chart's height widens the chart to 1.25 times the
// threshold, in either direction of trigger; the chart stays symmetric about zero.
void widen_chart_for_threshold(double& max_y, double& min_y, float thresh);

}  // namespace zel
