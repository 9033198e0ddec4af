#pragma once
// Curve files for measuring the review and the statistics, recorded by the console's own
// recording code from data frames of a breathing patient at 50 frames a second: a 20-second
// hold every minute (from 30 s to 50 s of each), each patient breathing at a pace of their own.
// A hold sags a little while it lasts, and its level differs a little from hold to hold and
// from one patient or session to the next, as real holds do.
#include <QString>
#include <QStringList>

namespace zel::test {

struct Recording {
    QString last_name, first_name, medical_id, session;
    int number = 1;  // sets the pace of the breathing and the level of the holds
    int seconds = 1800;
    double period = 3.6;  // s, of one breath
};

// Records one curve into its patient's folder under `folder` (made if missing); returns the
// file's path, or the empty string when the recording failed.
QString record_curve(const QString& folder, const Recording& recording);

// Records `count` 30-minute curves and puts them side by side in `folder` as Curve1.dat,
// Curve2.dat, ... Returns their paths; an empty list when a recording failed.
QStringList record_review_curves(const QString& folder, int count);

}  // namespace zel::test
