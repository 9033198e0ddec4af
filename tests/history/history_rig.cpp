#include "history_rig.h"

#include <QDir>
#include <QFile>

#include "data/session_history_file.h"

namespace zel::test {

HistoryRig::HistoryRig() {
    form.data_directory = app_data.path();
    form.patient_last_name = QStringLiteral("Doe");
    form.patient_first_name = QStringLiteral("Jane");
    form.patient_medical_id = QStringLiteral("A1");
    QDir().mkpath(app_data.path() + QStringLiteral("/Doe_Jane_A1"));
}

QString HistoryRig::path() const {
    return app_data.path() + QStringLiteral("/Doe_Jane_A1/session.ini");
}

void HistoryRig::write_history(int total, const std::vector<StoredSession>& sessions) {
    QByteArray text;
    int n = 0;
    for (const StoredSession& s : sessions) {
        text += "[" + session_section(++n).toLatin1() + "]\r\n";
        const std::pair<const char*, const QByteArray*> keys[] = {
            {"ID", &s.id},
            {"Date", &s.date},
            {"Threshold", &s.threshold},
            {"Breath_Hold_Duration", &s.duration},
            {"Trigger_on_Inhale", &s.trigger},
            {"Number_of_breath_holds", &s.breath_holds},
            {"Gating Mode", &s.gating_mode},
        };
        // A value left null stands for a key the file lacks.
        for (const auto& [key, value] : keys)
            if (!value->isNull()) text += QByteArray(key) + "=" + *value + "\r\n";
    }
    text += "[HEADER]\r\nTOTAL_SESSIONS= " + QByteArray::number(total) + "\r\n";
    write_file(text);
}

void HistoryRig::write_file(const QByteArray& contents) {
    QFile file(path());
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) file.write(contents);
}

std::vector<std::vector<QString>> HistoryRig::rows() const {
    std::vector<std::vector<QString>> out;
    const ReportListView& list = history.ListView1;
    for (int item = 1; item <= list.item_count(); ++item) {
        std::vector<QString> row;
        for (int k = 0; k < 7; ++k) row.push_back(list.cell(item, k));
        out.push_back(row);
    }
    return out;
}

}  // namespace zel::test
