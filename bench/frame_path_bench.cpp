// The frame path (notification, frame handling, one chart segment) and a full chart wipe,
// on the real image surface.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QTemporaryDir>
#include <cmath>

#include "app/form1.h"
#include "fakes/fake_platform.h"
#include "fakes/rig.h"
#include "language/messages.h"
#include "platform/qt_chart_surface.h"

namespace zel {
namespace {

struct BenchRig {
    QtChartSurface chart{870, 499};
    test::FakePlatform fakes{&chart};
    test::FakeSerialPort& serial = fakes.serial;
    Form1 form{fakes.platform, QStringLiteral("/tmp/zel-bench")};

    BenchRig() {
        serial.set_PortOpen(true);
        serial.OnComm = [this] { form.MSComm1_OnComm(); };
        form.Pic.Height = 499 * twips_per_pixel;
        form.thresh_label.Height = 285;
        form.draw_chart();
    }
};

// One breathing cycle of frames, a sweep and a half of the chart over the run.
void run_frames(benchmark::State& state, BenchRig& rig) {
    std::vector<QByteArray> frames;
    for (int k = 0; k < 200; ++k) {
        const auto units = static_cast<int16_t>(250 * std::sin(k * 2 * M_PI / 200));
        frames.push_back(test::data_frame(k % 50 < 25 ? 0x04 : 0x06, 1, units, 0));
    }
    size_t k = 0;
    for (auto _ : state) {
        rig.serial.arrive(frames[k++ % frames.size()]);
        rig.serial.notify();
    }
    benchmark::DoNotOptimize(rig.form.total_counts);
}

void BM_FramePath(benchmark::State& state) {
    BenchRig rig;
    run_frames(state, rig);
}
BENCHMARK(BM_FramePath)->Unit(benchmark::kMicrosecond)->Repetitions(10)->ReportAggregatesOnly();

// The same while recording, each frame's line written to a curve file in the temporary folder
// (and, frames being the clock, a second's worth of lines at a time taken to the disk).
void BM_FramePathRecording(benchmark::State& state) {
    BenchRig rig;
    QTemporaryDir folder;
    test::as_patient(rig.form, folder.path(), QStringLiteral("1"));
    rig.form.cmdRecord_Click();
    run_frames(state, rig);
    rig.form.cmdPause_Click();
}
BENCHMARK(BM_FramePathRecording)
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(10)
    ->ReportAggregatesOnly();

void BM_DrawChart(benchmark::State& state) {
    BenchRig rig;
    rig.form.b_state = 2;  // with the threshold box
    for (auto _ : state) rig.form.draw_chart();
}
BENCHMARK(BM_DrawChart)->Unit(benchmark::kMillisecond)->Repetitions(10)->ReportAggregatesOnly();

}  // namespace
}  // namespace zel

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    zel::load_default_messages();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
