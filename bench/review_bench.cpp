// The review window's figures: five 30-minute curves read and drawn, one alignment replot,
// one pan or zoom redraw. The curve files are recorded by the console itself from data frames
// of a breathing patient with a 20-second hold every minute.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <algorithm>

#include "fakes/rig.h"
#include "recorded_curves.h"
#include "review/patient_curves.h"
#include "ui/review_chart_widget.h"

namespace zel::test {
namespace {

// The five files side by side in one folder, as the file dialog returns several files.
struct Files {
    QTemporaryDir folder;
    QStringList parts;
    Files() {
        parts.append(folder.path());
        for (const QString& path : record_review_curves(folder.path(), 5))
            parts.append(QFileInfo(path).fileName());
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
