#pragma once
// Curve files for measuring the review, recorded by the console's own recording code from
// data frames of a breathing patient: 30 minutes at 50 frames a second, a 20-second hold
// every minute, each patient breathing at a pace of their own.
#include <QString>
#include <QStringList>

namespace zel::test {

// Records `count` curves and puts them side by side in `folder` as Curve1.dat, Curve2.dat, ...
// Returns their paths; an empty list when a recording failed.
QStringList record_review_curves(const QString& folder, int count);

}  // namespace zel::test
