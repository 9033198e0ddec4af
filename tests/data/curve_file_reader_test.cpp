// Reading curve files back: what the console recorded, and each kind of bad file.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "data/curve_file_reader.h"
#include "data/locale_number.h"
#include "fakes/rig.h"

namespace zel::test {
namespace {

TEST(LocaleNumber, reads_the_machines_form_and_refuses_the_rest) {
    struct Case { const char* text; char separator; double value; int error; };
    const Case cases[] = {
        {" 1.35 ", '.', 1.35, 0},
        {"-0.004", '.', -0.004, 0},
        {"1,35", ',', 1.35, 0},
        {"1E-05", '.', 1e-05, 0},
        {"+7", '.', 7, 0},
        {".5", '.', 0.5, 0},
        // The other separator groups thousands: a file from the other kind of machine reads
        // a power of ten off instead of failing.
        {"1,5", '.', 15, 0},
        {"0.02", ',', 2, 0},
        {"", '.', 0, 13},
        {"  ", '.', 0, 13},
        {"1.2.3", '.', 0, 13},
        {"12a", '.', 0, 13},
        {"1E", '.', 0, 13},
        {",5", '.', 0, 13},
        {"1E999", '.', 0, 6},
    };
    for (const auto& c : cases) {
        try {
            const double value = locale_number(QString::fromLatin1(c.text), QLatin1Char(c.separator), "test");
            EXPECT_EQ(c.error, 0) << c.text;
            EXPECT_DOUBLE_EQ(value, c.value) << c.text;
        } catch (const ZelError& e) {
            EXPECT_EQ(e.number, c.error) << c.text;
        }
    }
}

struct CurveRig : Rig {
    CurveRig() {
        form.data_directory = app_data.path();
        form.patient_last_name = QStringLiteral("Doe");
        form.patient_first_name = QStringLiteral("Jane");
        form.patient_medical_id = QStringLiteral("A1");
        form.session = QStringLiteral("1");
        form.thresh = 1.25f;
        form.patient_defined = true;
        form.cmdRecord.Enabled = true;
        QDir().mkpath(app_data.path() + QStringLiteral("/Doe_Jane_A1"));
    }
    QString path() const { return app_data.path() + QStringLiteral("/Doe_Jane_A1/Doe_1.dat"); }
    QString write(const QByteArray& text) {
        const QString p = app_data.path() + QStringLiteral("/bad.dat");
        QFile file(p);
        file.open(QIODevice::WriteOnly);
        file.write(text);
        return p;
    }
};

TEST(CurveFileReader, reads_back_what_the_console_recorded_on_dot_and_comma_machines) {
    for (char separator : {'.', ','}) {
        CurveRig rig;
        rig.fakes.locale.separator = QLatin1Char(separator);
        rig.form.cmdRecord_Click();
        const int16_t units[] = {250, -1, 32767, -32767, 0};
        for (int16_t u : units) rig.fakes.serial.receive(data_frame(0x06, 1, u));
        rig.form.cmdPause_Click();
        rig.fakes.serial.receive(data_frame(0x04, 1, 5));  // a pause
        rig.form.cmdRecord_Click();
        rig.fakes.serial.receive(data_frame(0x04, 4, 300));
        rig.form.cmdPause_Click();

        CurveData curve;
        LoadCurveData2(rig.path(), curve, QLatin1Char(separator));
        EXPECT_DOUBLE_EQ(curve.threshold, 1.25);
        EXPECT_DOUBLE_EQ(curve.count_frequency, 50);
        ASSERT_EQ(curve.volume.size(), 6u) << separator;
        EXPECT_EQ(curve.volume, (std::vector<double>{1.0, -0.004, 131.068, -131.068, 0, 1.2}));
        EXPECT_EQ(curve.session_time, (std::vector<double>{0.02, 0.04, 0.06, 0.08, 0.1, 0.14}));
        EXPECT_EQ(curve.balloon, (std::vector<uint8_t>{1, 1, 1, 1, 1, 4}));
        EXPECT_EQ(curve.patient_switch, (std::vector<uint8_t>{1, 1, 1, 1, 1, 0}));
        EXPECT_DOUBLE_EQ(curve.time[5], 0.1) << "frames, not the session's time";
    }
}

TEST(CurveFileReader, each_kind_of_bad_file_fails_with_its_number) {
    const QByteArray header =
        "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nThreshold:1.20\r\nCount Frequency:  50 \r\n"
        "HeaderEnd\r\n";
    struct Case { const char* name; QByteArray text; int error; size_t samples; };
    const Case cases[] = {
        {"another first line", "CURVE DATA\r\nHeaderStart\r\nHeaderEnd\r\n0.02;1;1;1\r\n", 515, 0},
        {"no HeaderStart", "CURVE_DATA_FILE_STAMP\r\nHeader\r\nT:1\r\nC:50\r\nHeaderEnd\r\n", 515, 0},
        {"no HeaderEnd", "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nT:1\r\nC:50\r\n0.02;1;1;1\r\n", 515, 0},
        {"an empty file", "", 515, 0},
        {"frame rate 0", "CURVE_DATA_FILE_STAMP\r\nHeaderStart\r\nT:1\r\nC: 0\r\nHeaderEnd\r\n0.02;1;1;1\r\n", 11, 0},
        {"three fields", header + "0.02;1;1;1\r\n0.04;1;1\r\n", 9, 0},
        {"volume not a number", header + "0.02;x;1;1\r\n", 13, 0},
        {"balloon above a byte", header + "0.02;1;256;1\r\n", 6, 0},
        {"switch below 0", header + "0.02;1;1;-1\r\n", 6, 0},
        {"no samples", header, 9, 0},
        {"lenient balloon and switch", header + "0.02;1;2x;junk\r\n0.04;1.5;4; - ; - ; - \n", 0, 2},
    };
    for (const auto& c : cases) {
        CurveRig rig;
        CurveData curve;
        curve.volume = {9.0};
        int error = 0;
        try {
            LoadCurveData2(rig.write(c.text), curve, QLatin1Char('.'));
        } catch (const ZelError& e) {
            error = e.number;
            if (e.number == 515) {
                EXPECT_EQ(e.description, rig.app_data.path() +
                                             QStringLiteral("/bad.dat is not in the expected ZEL format."))
                    << c.name;
            }
        }
        EXPECT_EQ(error, c.error) << c.name;
        if (c.error != 0 && c.error != 515) {
            EXPECT_TRUE(curve.volume.empty()) << c.name;
        }
        if (c.error == 0) {
            EXPECT_EQ(curve.volume.size(), c.samples) << c.name;
            EXPECT_EQ(curve.balloon, (std::vector<uint8_t>{2, 4})) << c.name;
            EXPECT_EQ(curve.patient_switch, (std::vector<uint8_t>{0, 0})) << c.name;
        }
    }
}

TEST(CurveFileReader, a_missing_file_changes_nothing) {
    CurveData curve;
    curve.volume = {1.0};
    LoadCurveData2(QStringLiteral("/nonexistent/file.dat"), curve, QLatin1Char('.'));
    EXPECT_EQ(curve.volume, std::vector<double>{1.0});
}

}  // namespace
}  // namespace zel::test
