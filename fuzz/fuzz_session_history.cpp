// "session.ini": any bytes as a patient's history, with a session name from the input. The
// console reads it where it does: the next session's suggestion, the duplicate test, the
// history window and its printout; then it saves the session's entry. Every failure is handled
// where it arises; the entries that stood before a new one read the same after it.
#include <fuzzer/FuzzedDataProvider.h>

#include <QDir>
#include <QFile>
#include <cstdlib>
#include <vector>

#include "console.h"
#include "data/session_history_file.h"
#include "fakes/fake_printer.h"
#include "history/dialog_session_history.h"

namespace {

// The entries that the file holds under the count, as far as a check reaches.
std::vector<QString> entry_ids(const QString& path, int total) {
    std::vector<QString> ids;
    for (int n = 1; n <= std::min(total, 40); ++n) ids.push_back(zel::read_session_id(path, n));
    return ids;
}

int16_t total_or_zero(const QString& path) {
    try {
        return zel::read_total_sessions(path);
    } catch (const zel::ZelError&) {
        return 0;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool loaded = (zel::load_default_messages(), true);
    (void)loaded;
    FuzzedDataProvider input(data, size);
    const std::string session = input.ConsumeRandomLengthString(24);
    const std::string rest = input.ConsumeRemainingBytesAsString();

    zel::fuzz::Console c;
    zel::Form1& form = c.form;
    form.data_directory = c.app_data.path() + QStringLiteral("/patients");
    form.patient_last_name = QStringLiteral("Doe");
    form.patient_first_name = QStringLiteral("Jane");
    form.patient_medical_id = QStringLiteral("A1");
    // As the session dialog takes it: trimmed, without the characters it refuses, never empty.
    QString name = QString::fromLatin1(session.data(), static_cast<qsizetype>(session.size()));
    for (QChar refused : QStringLiteral("\\,/?:*<>|")) name.remove(refused);
    name = name.trimmed();
    form.session = name.isEmpty() ? QStringLiteral("1") : name;
    const QString path =
        form.sessionfile(QStringLiteral("Doe"), QStringLiteral("Jane"), QStringLiteral("A1"));
    QDir().mkpath(form.data_directory + QStringLiteral("/Doe_Jane_A1"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)) std::abort();
        file.write(rest.data(), static_cast<qint64>(rest.size()));
    }

    // Each of these is an event of its own: nothing may escape it.
    form.get_next_sessionID(QStringLiteral("Doe"), QStringLiteral("Jane"), QStringLiteral("A1"));
    form.checkIfSessionExists(form.session);
    zel::test::FakePrinter printer;
    zel::DialogSessionHistory history(form, printer);
    history.Form_Load();
    history.cmdPrint_Click();

    const int16_t before = total_or_zero(path);
    const std::vector<QString> ids_before = entry_ids(path, before);
    const qsizetype boxes = c.fakes.boxes.shown.size();
    form.save_session();
    if (c.fakes.boxes.shown.size() != boxes) return 0;  // not saved, and the operator told
    const int16_t after = total_or_zero(path);
    if (after != before + 1) std::abort();
    if (entry_ids(path, before) != ids_before) std::abort();
    return 0;
}
