// The frame path (notification, frame handling, one chart segment) and a full chart wipe,
// on the real image surface.
#include <benchmark/benchmark.h>

#include <QGuiApplication>
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

void BM_FramePath(benchmark::State& state) {
    BenchRig rig;
    // One breathing cycle of frames, a sweep and a half of the chart over the run.
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
BENCHMARK(BM_FramePath)->Unit(benchmark::kMicrosecond)->Repetitions(10)->ReportAggregatesOnly();

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
