#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <cstring>
#include <optional>

#include "app/zel_error.h"
#include "data/system_settings_file.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel {
namespace {

using test::FakePlatform;
using test::Rig;

const char* const stamp = "ZEL System Parameter File - DO NOT EDIT 3.00.01";
const char* const missing_text =
    "ZEL System Initialization file is not found. Save default parameters through the "
    "File->Save System Settings menu.";
const char* const incompatible_text =
    "ZEL System Initialization File is not compatible with the current software version. "
    "Loading default system parameters.";
const char* const format_text =
    "ZEL default number format does not match current Windows regional settings. Loading "
    "default system parameters.";
const char* const path_text =
    "ZEL patient data directory not setup up correctly. Please exit and refer to the ZEL User "
    "Manual before continuing.";

QByteArray crlf_lines(std::initializer_list<const char*> lines) {
    QByteArray bytes;
    for (const char* line : lines) bytes += QByteArray(line) + "\r\n";
    return bytes;
}

void write_file(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray read_file(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<absent>");
}

struct Values {
    bool inhale;
    double duration, max_x, max_y;
    float x_scale_factor, thresh;
    const char* language;
};
constexpr Values defaults{true, 12, 1000, 2, 1, 1.2f, "English"};

bool is_defaults(const Values& v) {
    return v.inhale == defaults.inhale && v.duration == defaults.duration &&
           v.max_x == defaults.max_x && v.max_y == defaults.max_y &&
           v.x_scale_factor == defaults.x_scale_factor && v.thresh == defaults.thresh &&
           std::strcmp(v.language, defaults.language) == 0;
}

// Values that no file and no default holds, so that every member is seen to be set.
void set_odd_values(Form1& form) {
    form.inhale = false;
    form.duration = 5;
    form.max_x = 3;
    form.max_y = 7;
    form.min_y = -7;
    form.min_x = 9;
    form.x_scale_factor = 3;
    form.thresh = 0.5f;
    form.language_file = QStringLiteral("Klingon");
}

void expect_values(const Form1& form, const Values& v, const char* name) {
    EXPECT_EQ(form.inhale, v.inhale) << name;
    EXPECT_DOUBLE_EQ(form.duration, v.duration) << name;
    EXPECT_DOUBLE_EQ(form.max_x, v.max_x) << name;
    EXPECT_DOUBLE_EQ(form.max_y, v.max_y) << name;
    EXPECT_DOUBLE_EQ(form.min_y, -v.max_y) << name;
    EXPECT_FLOAT_EQ(form.x_scale_factor, v.x_scale_factor) << name;
    EXPECT_FLOAT_EQ(form.thresh, v.thresh) << name;
    EXPECT_EQ(form.language_file, QString::fromLatin1(v.language)) << name;
}

struct LoadCase {
    const char* name;
    std::optional<QByteArray> file;  // nullopt: no "zel.ini"
    char separator;
    const char* message;  // null: no message box
    Values expected;
};

TEST(LoadSystemSettings, reads_the_file_or_tells_why_and_sets_the_defaults) {
    const QByteArray whole = crlf_lines({stamp, "inhale:False", "duration:20", "max x:1500",
                                         "max y:3.0", "x scale factor:2", "threshold:0.75",
                                         "default language:Deutsch", "number format:dot"});
    const Values from_file{false, 20, 1500, 3, 2, 0.75f, "Deutsch"};
    const LoadCase cases[] = {
        {"missing file", std::nullopt, '.', missing_text, defaults},
        {"whole file", whole, '.', nullptr, from_file},
        {"other version",
         crlf_lines({"ZEL System Parameter File - DO NOT EDIT 3.00.00", "inhale:False",
                     "duration:20", "max x:1500", "max y:3.0", "x scale factor:2", "threshold:0.75",
                     "default language:Deutsch", "number format:dot"}),
         '.', incompatible_text, defaults},
        {"number format line removed",
         crlf_lines({stamp, "inhale:False", "duration:20", "max x:1500", "max y:3.0",
                     "x scale factor:2", "threshold:0.75", "default language:Deutsch"}),
         '.', incompatible_text, defaults},
        {"comma file on a dot system",
         crlf_lines({stamp, "inhale:False", "duration:20", "max x:1500", "max y:3,0",
                     "x scale factor:2", "threshold:0,75", "default language:Deutsch",
                     "number format:comma"}),
         '.', format_text, defaults},
        {"another order",
         crlf_lines({stamp, "number format:dot", "default language:Deutsch", "threshold:0.75",
                     "x scale factor:2", "max y:3.0", "max x:1500", "duration:20", "inhale:False"}),
         '.', nullptr, from_file},
        {"inhale:maybe",
         crlf_lines({stamp, "inhale:maybe", "duration:20", "max x:1500", "max y:3.0",
                     "x scale factor:2", "threshold:0.75", "default language:Deutsch",
                     "number format:dot"}),
         '.', nullptr, defaults},
        {"surplus lines counted and skipped",
         crlf_lines({stamp, "inhale:False", "", "Duration:99", "duration:20", "max x:1500",
                     "max y:3.0", "x scale factor:2", "threshold:0.75", "default language:Deutsch",
                     "number format:dot", "colour:blue"}),
         '.', nullptr, from_file},
        {"a comma system reads up to the comma",
         crlf_lines({stamp, "inhale:False", "duration:20,5", "max x:1500", "max y:2,0",
                     "x scale factor:2", "threshold:1,20", "default language:Deutsch",
                     "number format:comma"}),
         ',',
         nullptr,
         {false, 20, 1500, 2, 2, 1.0f, "Deutsch"}},
        {"a key twice and one missing keeps the member",
         crlf_lines({stamp, "inhale:False", "duration:20", "duration:21", "max y:3.0",
                     "x scale factor:2", "threshold:0.75", "default language:Deutsch",
                     "number format:dot"}),
         '.',
         nullptr,
         {false, 21, 3, 3, 2, 0.75f, "Deutsch"}},
        {"eight lines with line ends of LF only",
         "ZEL System Parameter File - DO NOT EDIT 3.00.01\ninhale:False\nduration:20\n"
         "max x:1500\nmax y:3.0\nx scale factor:2\nthreshold:0.75\ndefault language:Deutsch\n"
         "number format:dot",
         '.', nullptr, from_file},
        {"empty file", QByteArray(), '.', nullptr, defaults},
        {"stamp only", crlf_lines({stamp}), '.', incompatible_text, defaults},
        {"threshold beyond a single",
         crlf_lines({stamp, "inhale:False", "duration:20", "max x:1500", "max y:3.0",
                     "x scale factor:2", "threshold:1000000000000000000000000000000000000000",
                     "default language:Deutsch", "number format:dot"}),
         '.', nullptr, defaults},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.fakes.locale.separator = QLatin1Char(c.separator);
        Form1& form = rig.form;
        form.detect_number_format();
        if (c.file) write_file(form.AppDataPath + "/zel.ini", *c.file);
        set_odd_values(form);
        bool link_suspended_during_box = false;
        rig.fakes.boxes.while_shown = [&] {
            link_suspended_during_box =
                !form.Timer_module_connect->Enabled() && !form.Timer_HeartBeat->Enabled();
        };
        form.Timer_HeartBeat->set_Enabled(true);

        form.load_system_settings();

        expect_values(form, c.expected, c.name);
        // min_x is left alone by the file and cleared by the defaults.
        EXPECT_DOUBLE_EQ(form.min_x, is_defaults(c.expected) ? 0.0 : 9.0) << c.name;
        if (c.message) {
            ASSERT_EQ(rig.fakes.boxes.shown, QStringList{QString::fromLatin1(c.message)}) << c.name;
            EXPECT_EQ(rig.fakes.boxes.styles.front(), vbOKOnly) << c.name;
            EXPECT_TRUE(link_suspended_during_box) << c.name;
            EXPECT_TRUE(form.Timer_module_connect->Enabled()) << c.name << ": search resumes";
        } else {
            EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty()) << c.name;
        }
    }
}

TEST(LoadSystemSettings, keeps_the_number_format_it_found_for_display) {
    Rig rig;
    rig.form.detect_number_format();
    write_file(rig.form.AppDataPath + "/zel.ini",
               crlf_lines({stamp, "number format:comma", "a", "b", "c", "d", "e", "f", "g"}));
    rig.form.load_system_settings();
    EXPECT_EQ(rig.form.found_number_format, "comma");
    EXPECT_EQ(rig.form.number_format, "dot");
}

TEST(LoadSystemSettings, a_missing_application_folder_is_a_path_not_found) {
    FakePlatform fakes;
    QTemporaryDir parent;
    Form1 form(fakes.platform, parent.filePath("not_made"));
    form.detect_number_format();
    form.load_system_settings();
    ASSERT_EQ(fakes.boxes.shown, QStringList{QString::fromLatin1(path_text)});
    EXPECT_EQ(fakes.boxes.styles.front(), vbExclamation);
    expect_values(form, defaults, "missing folder");
}

TEST(NumberFormat, follows_the_decimal_separator) {
    struct Case {
        char16_t separator;
        const char* format;
    };
    const Case cases[] = {{u'.', "dot"}, {u',', "comma"}, {u'\u066B', "dot"}};
    for (const auto& c : cases) {
        FakePlatform fakes;
        fakes.locale.separator = QChar(c.separator);
        Form1 form(fakes.platform, QString());
        form.detect_number_format();
        EXPECT_EQ(form.number_format, QString::fromLatin1(c.format));
    }
}

TEST(PointOnlyNumber, stops_at_the_first_character_that_is_not_part_of_it) {
    struct Case {
        const char* text;
        double value;
    };
    const Case cases[] = {
        {"1,20", 1},      {"2,0", 2},     {"1.25", 1.25}, {"-0.5", -0.5}, {"+3", 3},
        {".5", 0.5},      {"1.2.3", 1.2}, {"abc", 0},     {"", 0},        {"  7", 7},
        {"12 volts", 12}, {"1e3", 1},     {"--1", 0},     {"-", 0},       {"1-2", 1},
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(point_only_number(QString::fromLatin1(c.text)), c.value) << c.text;
    EXPECT_DOUBLE_EQ(point_only_number(QStringLiteral("0.") + QString(400, QLatin1Char('0')) +
                                       QStringLiteral("1")),
                     0.0)
        << "too small to hold";
    EXPECT_THROW(point_only_number(QString(400, QLatin1Char('9'))), ZelError);
    EXPECT_THROW(point_only_single(QStringLiteral("1") + QString(39, QLatin1Char('0'))), ZelError);
    EXPECT_FLOAT_EQ(point_only_single(QStringLiteral("1,20")), 1.0f);
}

TEST(BooleanValue, takes_words_and_numbers_and_refuses_the_rest) {
    struct Case {
        const char* text;
        char separator;
        int expected;
    };  // -1: type mismatch
    const Case cases[] = {
        {"True", '.', 1}, {"false", '.', 0},   {" TRUE ", '.', 1}, {"0", '.', 0},
        {"-1", '.', 1},   {"0.0", '.', 0},     {"2.5", '.', 1},    {"1,5", ',', 1},
        {"0,0", ',', 0},  {"1E3", '.', 1},     {"maybe", '.', -1}, {"", '.', -1},
        {"1,5", '.', -1}, {"Truely", '.', -1}, {"1E", '.', -1},    {".", '.', -1},
    };
    for (const auto& c : cases) {
        const QString text = QString::fromLatin1(c.text);
        if (c.expected < 0) {
            EXPECT_THROW(boolean_value(text, QLatin1Char(c.separator)), ZelError) << c.text;
        } else {
            EXPECT_EQ(boolean_value(text, QLatin1Char(c.separator)), c.expected == 1) << c.text;
        }
    }
}

TEST(SaveIniFile, writes_nine_lines_in_the_system_form) {
    struct Case {
        char separator;
        bool inhale;
        double duration, max_x, max_y;
        float x_scale, thresh;
        QByteArray expected;
    };
    const Case cases[] = {
        {'.', true, 12, 1000, 2, 1, 1.2f,
         crlf_lines({stamp, "inhale:True", "duration:12", "max x:1000", "max y:2.0",
                     "x scale factor:1", "threshold:1.20", "default language:English",
                     "number format:dot"})},
        {',', false, 12.5, 1500.25, 2.5, 3, 1.25f,
         crlf_lines({stamp, "inhale:False", "duration:12,5", "max x:1500,25", "max y:2,5",
                     "x scale factor:3", "threshold:1,25", "default language:English",
                     "number format:comma"})},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.fakes.locale.separator = QLatin1Char(c.separator);
        Form1& form = rig.form;
        form.detect_number_format();
        form.language_file = QStringLiteral("English");
        form.inhale = c.inhale;
        form.duration = c.duration;
        form.max_x = c.max_x;
        form.max_y = c.max_y;
        form.x_scale_factor = c.x_scale;
        form.thresh = c.thresh;
        form.save_ini_file();
        EXPECT_EQ(read_file(form.AppDataPath + "/zel.ini"), c.expected);
        EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
    }
}

TEST(SaveIniFile, what_is_saved_on_a_dot_system_loads_back) {
    Rig rig;
    Form1& form = rig.form;
    form.detect_number_format();
    form.inhale = false;
    form.duration = 17;
    form.max_x = 2000;
    form.max_y = 1.5;
    form.x_scale_factor = 2;
    form.thresh = 0.35f;
    form.language_file = QString::fromLatin1(
        "Fran\xE7"
        "ais");
    form.save_ini_file();
    set_odd_values(form);
    form.load_system_settings();
    EXPECT_TRUE(rig.fakes.boxes.shown.isEmpty());
    expect_values(form,
                  {false, 17, 2000, 1.5, 2, 0.35f,
                   "Fran\xE7"
                   "ais"},
                  "round trip");
}

TEST(SaveIniFile, tells_when_the_file_cannot_be_written_and_keeps_the_old_one) {
    Rig rig;
    Form1& form = rig.form;
    form.detect_number_format();
    const QString path = form.AppDataPath + "/zel.ini";
    write_file(path, "old");
    QFile::setPermissions(path, QFileDevice::ReadOwner);
    form.save_ini_file();
    EXPECT_EQ(read_file(path), "old");
    ASSERT_EQ(rig.fakes.boxes.shown, QStringList{message_text(142)});
    EXPECT_EQ(rig.fakes.boxes.styles.front(), vbExclamation);
    EXPECT_TRUE(form.Timer_module_connect->Enabled());
}

TEST(DataPath, is_stored_read_back_and_dropped_when_its_folder_is_gone) {
    Rig rig;
    Form1& form = rig.form;
    QTemporaryDir data;
    const QString ini = form.AppDataPath + "/datapath.ini";
    EXPECT_EQ(form.read_data_path(), "") << "first run";

    QString chosen = data.path();
    ASSERT_TRUE(form.write_data_path(chosen));
    EXPECT_EQ(read_file(ini), "[ZEL]\r\nDataPath=" + chosen.toLatin1() + "\r\n");
    EXPECT_EQ(form.read_data_path(), chosen);

    QString gone = data.filePath("removed");
    ASSERT_TRUE(form.write_data_path(gone));
    EXPECT_EQ(form.read_data_path(), "");

    // Only 255 characters come back, so a longer path reads as a path that isn't there.
    QString deep = data.path() + QLatin1Char('/') + QString(150, QLatin1Char('a')) +
                   QLatin1Char('/') + QString(150, QLatin1Char('b'));
    ASSERT_TRUE(QDir().mkpath(deep));
    ASSERT_TRUE(form.write_data_path(deep));
    EXPECT_EQ(form.read_data_path(), "");

    FakePlatform fakes;
    Form1 homeless(fakes.platform, data.filePath("no_app_folder"));
    EXPECT_FALSE(homeless.write_data_path(chosen));
}

TEST(SelectPatientDatapath, asks_the_folder_chooser) {
    Rig rig;
    rig.fakes.dialogs.choose_folder(QStringLiteral("/srv/patients"));
    EXPECT_EQ(rig.form.Select_patient_datapath(), "/srv/patients");
    EXPECT_EQ(rig.form.Select_patient_datapath(), "") << "cancelled";
    EXPECT_EQ(rig.fakes.dialogs.titles,
              QStringList({"Select Patient Data Path", "Select Patient Data Path"}));
}

}  // namespace
}  // namespace zel
