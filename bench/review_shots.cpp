// Records three curves from the simulated module over the real line (the third breathed from
// the first one's file), opens the review window on them, aligns them on hold 2, measures a
// stretch with the mouse and saves the window as DIR/review-aligned.png.
//   zel_review_shots DIR
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>
#include <cstdio>

#include "language/messages.h"
#include "sim/live_console.h"
#include "ui/patient_curves_view.h"
#include "ui/review_chart_widget.h"

namespace zel::test {
namespace {

// A recording of `holds` breath holds of five seconds, the operator arming each one as soon
// as the patient is out of the threshold region. Returns the curve file, or "" on failure.
QString record(const QString& out_folder, int number, int holds, const char* script,
               const QStringList& sim_options) {
    LiveConsole c(false);
    // The port is closed before the next recording: its lock would otherwise stand for the
    // pseudo-terminal number the next simulator gets.
    struct ClosePort {
        QtSerialPort& port;
        ~ClosePort() {
            if (port.PortOpen()) port.set_PortOpen(false);
        }
    } close_port{c.real_port};
    auto failed = [number](const char* what) {
        std::fprintf(stderr, "recording %d: %s\n", number, what);
        return QString();
    };
    if (!c.sim.start(script, QStringList{QStringLiteral("--seed"), QString::number(number)} +
                                       sim_options))
        return failed("the simulator did not start");
    if (!c.link_up()) {
        for (const QString& box : c.fakes.boxes.shown) std::fprintf(stderr, "  box: %s\n", qPrintable(box));
        std::fprintf(stderr, "  port %d open %d, notifications %d, sim: %s\n", c.form.ComPort,
                     c.real_port.PortOpen(), c.notifications, qPrintable(c.sim.commands().join(' ')));
        return failed("the link never came up");
    }
    c.form.data_directory = c.app_data.path();
    c.form.patient_last_name = QStringLiteral("Doe");
    c.form.patient_first_name = QStringLiteral("Jane");
    c.form.patient_medical_id = QStringLiteral("A1");
    c.form.session = QString::number(number);
    c.form.duration = 5;
    c.form.thresh = 1.3f;
    c.form.cmdRecord.Enabled = true;
    QDir().mkpath(c.app_data.path() + QStringLiteral("/Doe_Jane_A1"));
    c.form.cmdRecord_Click();
    c.run_until([] { return false; }, 3000);
    for (int k = 0; k < holds; ++k) {
        if (!c.run_until([&] { return c.form.b_state == 1 && !c.form.volume_in_threshold_region(); },
                         15000))
            return failed("the patient never left the threshold region");
        c.form.Form_KeyDown(32, 0);
        if (!c.run_until([&] { return c.form.b_state == 4; }, 15000)) return failed("no hold began");
        if (!c.run_until([&] { return c.form.b_state == 1; }, 15000))
            return failed("the hold never ended");
        c.run_until([] { return false; }, 2000);
    }
    c.form.cmdPause_Click();
    const QString target = out_folder + QStringLiteral("/Doe_%1.dat").arg(number);
    QFile::remove(target);
    if (!QFile::copy(c.form.curve_file_path(), target)) return failed("no curve file");
    return target;
}

}  // namespace
}  // namespace zel::test

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    zel::load_default_messages();
    if (argc < 2) {
        std::fprintf(stderr, "usage: zel_review_shots DIR\n");
        return 2;
    }
    const QString dir = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    QDir().mkpath(dir);
    QStringList files;
    files.append(zel::test::record(dir, 1, 3, "wait 900\n", {}));
    files.append(zel::test::record(
        dir, 2, 4, "breathing period 3.2\nbreathing amplitude 0.9\nwait 900\n", {}));
    files.append(zel::test::record(dir, 3, 3, "wait 900\n", {QStringLiteral("--replay"), files.front()}));
    for (const QString& f : files)
        if (f.isEmpty()) {
            std::fprintf(stderr, "a recording failed\n");
            return 1;
        }

    zel::test::FakeLocale locale;
    zel::PatientCurvesView view(dir, locale, [](const char*, const std::function<void()>& f) { f(); });
    view.load(files);
    view.show();
    QTest::qWait(300);
    zel::PatientCurves& m = view.model();
    if (m.curve_count != 3 || m.comboAlign.items.size() < 3) {
        std::fprintf(stderr, "the review did not load three curves with two holds each\n");
        return 1;
    }
    m.comboAlign.ListIndex = 2;
    m.buttonApply_Click();
    view.sync();
    // A measurement from the start of the common hold to the peak five seconds before it.
    m.optMeasure_Click();
    view.sync();
    zel::ReviewChartWidget& chart = view.chart();
    const QPoint from(chart.xAxis->coordToPixel(-5), chart.yAxis->coordToPixel(1.0));
    const QPoint to(chart.xAxis->coordToPixel(0), chart.yAxis->coordToPixel(1.3));
    QTest::mousePress(&chart, Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(&chart, to);
    QTest::mouseRelease(&chart, Qt::LeftButton, Qt::NoModifier, to);
    QTest::qWait(200);
    view.sync();
    const QString shot = dir + QStringLiteral("/review-aligned.png");
    if (!view.grab().save(shot) || !m.measure_present) {
        std::fprintf(stderr, "no measurement or no screenshot\n");
        return 1;
    }
    std::printf("%s\nholds per curve: %zu %zu %zu; measured %s s, %s L\n", qPrintable(shot),
                m.curve_info[0].breath_hold_times.size(), m.curve_info[1].breath_hold_times.size(),
                m.curve_info[2].breath_hold_times.size(), qPrintable(m.XYInfo.Caption),
                qPrintable(m.XYInfo4.Caption));
    return 0;
}
