// The breath-hold statistics of one patient with 30 sessions of 30 minutes, as
// `zelmoor --stats FOLDER` makes them (every file read on the machine's cores, measured, the
// table written), and the curve reader alone on one 30-minute file.
//   zel_stats_bench [FOLDER] [benchmark options]
// FOLDER is a patient's folder of curve files (zel_make_patients DIR 1 30 1800 writes one);
// without it the 30 sessions are recorded first by the console's recording code (a minute).
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>
#include <thread>

#include "data/curve_file_reader.h"
#include "language/messages.h"
#include "recorded_curves.h"
#include "review/hold_statistics.h"
#include "review/statistics_table.h"

namespace zel::test {
namespace {

QString patient_folder;

const QString& folder() {
    static QTemporaryDir recorded;
    static const bool made = [] {
        if (!patient_folder.isEmpty()) return true;
        for (int session = 1; session <= 30; ++session) {
            const Recording r{QStringLiteral("Doe"),
                              QStringLiteral("Jane"),
                              QStringLiteral("A1"),
                              QString::number(session),
                              session,
                              1800,
                              3.6 + 0.1 * session};
            if (record_curve(recorded.path(), r).isEmpty()) return false;
        }
        patient_folder = recorded.path() + QStringLiteral("/Doe_Jane_A1");
        return true;
    }();
    if (!made) patient_folder.clear();
    return patient_folder;
}

qint64 bytes_of(const QString& path) {
    qint64 total = 0;
    for (const QFileInfo& f : QDir(path).entryInfoList({QStringLiteral("*.dat")}, QDir::Files))
        total += f.size();
    return total;
}

void BM_StatisticsOfPatient(benchmark::State& state) {
    if (folder().isEmpty()) return state.SkipWithError("the sessions could not be recorded");
    const int threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    PatientStatistics patient;
    qsizetype text = 0;
    for (auto _ : state) {
        patient = patient_statistics(folder(), QLatin1Char('.'), threads);
        StatisticsTable table;
        add_patient_rows(table, patient, QLatin1Char('.'));
        text = aligned_text(table).size();
    }
    state.SetBytesProcessed(state.iterations() * bytes_of(folder()));
    state.counters["files"] = static_cast<double>(patient.curves.size());
    state.counters["unreadable"] = static_cast<double>(patient.failures.size());
    state.counters["sessions"] = static_cast<double>(patient.sessions.size());
    state.counters["holds"] = patient.between_sessions.holds;
    state.counters["threads"] = threads;
    state.counters["text_chars"] = static_cast<double>(text);
}
BENCHMARK(BM_StatisticsOfPatient)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

void BM_ReadCurveFile(benchmark::State& state) {
    if (folder().isEmpty()) return state.SkipWithError("the sessions could not be recorded");
    const QFileInfoList files =
        QDir(folder()).entryInfoList({QStringLiteral("*.dat")}, QDir::Files, QDir::Name);
    if (files.isEmpty()) return state.SkipWithError("no curve file");
    const QString path = files.front().filePath();
    for (auto _ : state) {
        CurveData curve;
        LoadCurveData2(path, curve, QLatin1Char('.'));
        benchmark::DoNotOptimize(curve.volume.data());
    }
    state.SetBytesProcessed(state.iterations() * files.front().size());
}
BENCHMARK(BM_ReadCurveFile)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace
}  // namespace zel::test

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    zel::load_default_messages();
    benchmark::Initialize(&argc, argv);
    if (argc > 1) zel::test::patient_folder = QString::fromLocal8Bit(argv[1]);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
