// A recorded curve played back as the simulated patient's breathing: read from a file the
// console's own recording wrote, interpolated and looped, and turned into the turbine's pulses.
#include "curve_replay.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <cmath>

#include "fakes/rig.h"
#include "script.h"

namespace zelsim::test {
namespace {

// A console recording `units` (volumes in 0.004 L), one data frame each.
QString record(zel::test::Rig& rig, const std::vector<int16_t>& units, QChar separator) {
    rig.fakes.locale.separator = separator;
    rig.form.data_directory = rig.app_data.path();
    rig.form.patient_last_name = QStringLiteral("Doe");
    rig.form.patient_first_name = QStringLiteral("Jane");
    rig.form.patient_medical_id = QStringLiteral("A1");
    rig.form.session = QStringLiteral("1");
    rig.form.patient_defined = true;
    rig.form.cmdRecord.Enabled = true;
    QDir().mkpath(rig.app_data.path() + QStringLiteral("/Doe_Jane_A1"));
    rig.form.cmdRecord_Click();
    for (int16_t u : units) rig.fakes.serial.receive(zel::test::data_frame(0x04, 1, u));
    rig.form.cmdPause_Click();
    return rig.form.curve_file_path();
}

std::vector<int16_t> breath(int frames) {
    std::vector<int16_t> units;
    for (int k = 0; k < frames; ++k)
        units.push_back(static_cast<int16_t>(250 + std::lround(150 * std::sin(k * 0.05))));
    return units;
}

TEST(CurveReplay, reads_the_volumes_the_console_recorded_with_either_separator) {
    for (const QChar separator : {QLatin1Char('.'), QLatin1Char(',')}) {
        zel::test::Rig rig;
        const std::vector<int16_t> units = breath(300);
        std::string error;
        const auto curve = CurveReplay::load(record(rig, units, separator).toStdString(), error);
        ASSERT_TRUE(curve) << error;
        EXPECT_EQ(curve->frame_rate, 50);
        ASSERT_EQ(curve->samples(), units.size());
        for (size_t k = 0; k < units.size(); ++k)
            ASSERT_NEAR(curve->litres[k], units[k] * 0.004, 1e-9) << k;
    }
}

TEST(CurveReplay, interpolates_between_frames_and_loops_at_the_end) {
    CurveReplay curve;
    curve.litres = {1.0, 2.0, 1.5};
    struct Case { double seconds; double litres; };
    const Case cases[] = {
        {0.0, 1.0}, {0.01, 1.5}, {0.02, 2.0}, {0.03, 1.75},
        // After the last sample the line runs back to the first, and the loop begins again.
        {0.05, 1.25}, {0.06, 1.0}, {0.08, 2.0}, {6.0 + 0.02, 2.0},
    };
    for (const auto& c : cases) EXPECT_NEAR(curve.volume_at(c.seconds), c.litres, 1e-9) << c.seconds;
}

TEST(CurveReplay, a_bad_file_is_named_and_the_patient_breathes_on) {
    zel::test::Rig rig;
    const QString good = record(rig, breath(100), QLatin1Char('.'));
    QFile file(good);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray contents = file.readAll();
    // The file up to the end of its n-th line.
    const auto lines = [&contents](int n) {
        qsizetype end = 0;
        for (int k = 0; k < n; ++k) end = contents.indexOf("\r\n", end) + 2;
        return contents.left(end);
    };
    struct Case { const char* name; QByteArray bytes; const char* reason; };
    const Case cases[] = {
        {"short.dat", "Only a line\r\n", "its header ends"},
        {"header.dat", lines(26), "fewer than two samples"},
        {"one.dat", lines(27), "fewer than two samples"},
        {"garbage.dat", contents + "1.00;lots;1;1; - ; - ; - \r\n", "not a sample line"},
        {"norate.dat", QByteArray(contents).replace("Count Frequency:", "Count Rate:     "),
         "no frame rate"},
    };
    for (const auto& c : cases) {
        const QString path = rig.app_data.path() + QLatin1Char('/') + QString::fromLatin1(c.name);
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(c.bytes);
        out.close();
        Simulator sim;
        EXPECT_FALSE(sim.replay(path.toStdString())) << c.name;
        ASSERT_EQ(sim.messages.size(), 1u) << c.name;
        EXPECT_NE(sim.messages[0].find(path.toStdString()), std::string::npos) << sim.messages[0];
        EXPECT_NE(sim.messages[0].find(c.reason), std::string::npos) << sim.messages[0];
        EXPECT_EQ(sim.module.patient_breathing().replaying(), nullptr) << c.name;
    }
    Simulator sim;
    EXPECT_FALSE(sim.replay("/nonexistent/curve.dat"));
    EXPECT_NE(sim.messages.at(0).find("cannot be opened"), std::string::npos);
}

TEST(CurveReplay, the_script_starts_and_stops_it) {
    struct Case { const char* line; bool ok; const char* path; };
    const Case cases[] = {
        {"replay /tmp/a curve.dat", true, "/tmp/a curve.dat"},
        {"replay off", true, ""},
        {"replay", false, ""},
        {"replay   ", false, ""},
    };
    for (const auto& c : cases) {
        const ParsedLine parsed = parse_script_line(c.line);
        EXPECT_EQ(parsed.error.empty(), c.ok) << c.line;
        if (!c.ok) continue;
        ASSERT_TRUE(parsed.instruction) << c.line;
        EXPECT_EQ(parsed.instruction->op, Instruction::replay);
        EXPECT_EQ(parsed.instruction->path, c.path);
    }
}

TEST(CurveReplay, the_module_measures_the_replayed_volume_and_waits_while_the_airway_is_closed) {
    zel::test::Rig rig;
    const std::string path = record(rig, breath(400), QLatin1Char('.')).toStdString();
    Simulator sim;
    ASSERT_TRUE(sim.replay(path));
    const CurveReplay& curve = *sim.module.patient_breathing().replaying();
    Breathing& patient = sim.module.patient_breathing();
    VolumeIntegrator module(patient.lung_volume());
    double played = 0;
    for (int frame = 1; frame <= 1000; ++frame) {
        // Closed for one second in the middle: nothing flows, and the curve waits.
        const bool closed = frame > 300 && frame <= 350;
        module.add(patient.step(0.02, closed));
        if (!closed) played += 0.02;
        ASSERT_NEAR(module.volume(), curve.volume_at(played), 2 * litres_per_pulse) << frame;
    }
    Simulator script;
    ASSERT_TRUE(script.replay(path));
    script.apply(*parse_script_line("replay off").instruction, 0);
    EXPECT_EQ(script.module.patient_breathing().replaying(), nullptr);
}

}  // namespace
}  // namespace zelsim::test
