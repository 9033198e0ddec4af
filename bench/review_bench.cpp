// The review window's figures: five 30-minute curves read and drawn, one alignment replot,
// one pan or zoom redraw. The curve files are recorded by the console itself from data frames
// of a breathing patient with a 20-second hold every minute.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <numbers>

#include "fakes/rig.h"
#include "review/patient_curves.h"
#include "ui/review_chart_widget.h"

namespace zel::test {
namespace {

constexpr int samples_per_curve = 90000;  // 30 minutes at 50 frames a second

// Records one curve file through the console's own recording and returns its path.
QString record_curve(const QString& folder, int number) {
    Rig rig;
    rig.form.data_directory = folder;
    rig.form.patient_last_name = QStringLiteral("Curve%1").arg(number);
    rig.form.patient_first_name = QStringLiteral("Bench");
    rig.form.patient_medical_id = QStringLiteral("B%1").arg(number);
    rig.form.session = QStringLiteral("1");
    rig.form.thresh = 1.4f;
    rig.form.patient_defined = true;
    rig.form.cmdRecord.Enabled = true;
    const QString patient = folder + QStringLiteral("/Curve%1_Bench_B%1").arg(number);
    QDir().mkpath(patient);
    rig.form.cmdRecord_Click();
    const double period = 3.6 + 0.3 * number;
    for (int i = 0; i < samples_per_curve; ++i) {
        const double t = i / 50.0;
        const bool holding = std::fmod(t, 60.0) >= 30.0 && std::fmod(t, 60.0) < 50.0;
        const double litres = holding ? 1.55 : 1.0 + 0.8 * std::sin(2 * std::numbers::pi * t / period);
        rig.fakes.serial.receive(data_frame(0x06, holding ? 4 : 1,
                                            static_cast<int16_t>(std::lround(litres / 0.004))));
    }
    rig.form.cmdPause_Click();
    const QStringList files = QDir(patient).entryList({QStringLiteral("*.dat")}, QDir::Files);
    return files.isEmpty() ? QString() : patient + QLatin1Char('/') + files.front();
}

// The five files side by side in one folder, as the file dialog returns several files.
struct Files {
    QTemporaryDir folder;
    QStringList parts;
    Files() {
        const QString review = folder.path() + QStringLiteral("/review");
        QDir().mkpath(review);
        parts.append(review);
        for (int n = 1; n <= 5; ++n) {
            const QString name = QStringLiteral("Curve%1.dat").arg(n);
            QFile::copy(record_curve(folder.path(), n), review + QLatin1Char('/') + name);
            parts.append(name);
        }
    }
};

// Resident memory of the process in MB.
double resident_mb() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').front().toDouble() / 1024;
    return 0;
}

Files& five_files() {
    static Files files;
    return files;
}

// The review window's model with the chart widget on screen, opened on the five files.
struct Review {
    FakeFileDialogs dialogs;
    FakeMessageBoxes boxes;
    FakeLocale locale;
    PatientCurves window{ReviewPlatform{dialogs, boxes, locale}, QString()};
    ReviewChartWidget chart{window.NTGraph1, nullptr};
    Review() {
        chart.resize(760, 664);
        chart.show();
        dialogs.choose_files(five_files().parts);
        window.Form_Load();
        chart.sync();
    }
};

void BM_ReviewLoadFive(benchmark::State& state) {
    five_files();
    const double before = resident_mb();
    double loaded = 0;
    for (auto _ : state) {
        Review review;
        if (review.window.curve_count != 5) state.SkipWithError("the five curves did not load");
        loaded = std::max(loaded, resident_mb());
    }
    // What the window holds for the five curves, beyond the files' generation.
    state.counters["window_MB"] = loaded - before;
    state.counters["process_MB"] = loaded;
    Review shown;
    state.counters["elements"] = shown.window.element_total;
    state.counters["holds"] = static_cast<double>(shown.window.curve_info[0].breath_hold_times.size());
}

void BM_ReviewAlign(benchmark::State& state) {
    Review review;
    int hold = 1;
    for (auto _ : state) {
        review.window.comboAlign.ListIndex = hold;
        review.window.buttonApply_Click();
        review.chart.sync();
        hold = hold % 20 + 1;
    }
}

void BM_ReviewPanZoom(benchmark::State& state) {
    Review review;
    QCPAxis* x = review.chart.xAxis;
    int step = 0;
    for (auto _ : state) {
        // Pans right, zooms in, pans back, zooms out: the view returns every four steps.
        switch (step % 4) {
            case 0: x->moveRange(30.0); break;
            case 1: x->scaleRange(0.5, x->range().center()); break;
            case 2: x->moveRange(-30.0); break;
            default: x->scaleRange(2.0, x->range().center()); break;
        }
        review.chart.replot(QCustomPlot::rpImmediateRefresh);
        ++step;
    }
}

void BM_ReviewRedrawAt(benchmark::State& state) {
    Review review;
    QCPAxis* x = review.chart.xAxis;
    x->setRange(0, static_cast<double>(state.range(0)));
    for (auto _ : state) review.chart.replot(QCustomPlot::rpImmediateRefresh);
}
BENCHMARK(BM_ReviewRedrawAt)->Arg(1800)->Arg(600)->Arg(60)->Unit(benchmark::kMillisecond);

BENCHMARK(BM_ReviewLoadFive)->Unit(benchmark::kMillisecond)->MinTime(3.0);
BENCHMARK(BM_ReviewAlign)->Unit(benchmark::kMillisecond)->MinTime(3.0);
BENCHMARK(BM_ReviewPanZoom)->Unit(benchmark::kMillisecond)->MinTime(2.0);

}  // namespace
}  // namespace zel::test

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
