#pragma once
// Reading a recorded curve file back: its header's threshold and frame rate, and its samples.
#include <QChar>
#include <QString>
#include <cstdint>
#include <vector>

namespace zel {

struct CurveData {
    std::vector<double> time;  // from 0 in steps of one frame, by repeated addition
    std::vector<double> volume;
    std::vector<uint8_t> balloon;
    std::vector<uint8_t> patient_switch;
    std::vector<double> session_time;  // as the file holds it, with the pauses
    double threshold = 0;
    double count_frequency = 0;
    // The header's "Session Number:", "Date:" (mm-dd-yyyy) and "Time:" (hh:mm:ss), trimmed;
    // empty where the header has no such line.
    QString session, date, time_of_day;
};

// A file that is not there leaves `curve` as it was. A file that is not a curve file fails
// with 515 (its path and " is not in the expected ZEL format."); any other failure, such as a
// sample that does not convert, empties the arrays and goes on to the caller with its own
// number. Numbers of the first two fields follow the machine's separator.
void LoadCurveData2(const QString& path, CurveData& curve, QChar separator);

}  // namespace zel
