// The system settings file and the text reader under it; the data path's profile file.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <optional>
#include <tuple>

#include "app/zel_error.h"
#include "data/system_settings_file.h"
#include "data/text_reader.h"
#include "fakes/files.h"
#include "fakes/qt_printers.h"
#include "fakes/rig.h"
#include "language/messages.h"

namespace zel {
namespace {

using namespace test;

const char* const incompatible_text =
    "ZEL System Initialization File is not compatible with the current software version. "
    "Loading default system parameters.";

// inhale, duration, max x, max y, x scale factor, threshold, language.
using Values = std::tuple<bool, double, double, double, float, float, QString>;
const Values defaults{true, 12, 1000, 2, 1, 1.2f, "English"};

Values values(const Form1& form) {
    EXPECT_EQ(form.min_y, -form.max_y);
    return {form.inhale,          form.duration, form.max_x,        form.max_y,
            form.x_scale_factor, form.thresh,   form.language_file};
}

// Values that no file and no default holds, so that every member is seen to be set.
void set_odd_values(Form1& form) {
    std::tie(form.inhale, form.duration, form.max_x, form.max_y, form.x_scale_factor,
             form.thresh, form.language_file) = Values{false, 5, 3, 7, 3, 0.5f, "Klingon"};
    form.min_y = -7;
    form.min_x = 9;
}

TEST(LoadSystemSettings, reads_the_file_or_tells_why_and_sets_the_defaults) {
    const QByteArray whole = crlf(
        "ZEL System Parameter File - DO NOT EDIT 3.00.01|inhale:False|duration:20|max x:1500|"
        "max y:3.0|x scale factor:2|threshold:0.75|default language:Deutsch|number format:dot|");
    const auto with = [&](const char* from, const char* to) {
        return QByteArray(whole).replace(from, to);
    };
    const Values from_file{false, 20, 1500, 3, 2, 0.75f, "Deutsch"};
    // No file: no "zel.ini"; no message: no message box; no folder: no application folder.
    struct Case { const char* name; std::optional<QByteArray> file; const char* message;
                  Values expected; const char* found_number_format; int style = vbOKOnly;
                  bool folder = true; };
    const Case cases[] = {
        {"missing file", std::nullopt,
         "ZEL System Initialization file is not found. Save default parameters through the "
         "File->Save System Settings menu.", defaults, ""},
        {"no application folder", std::nullopt,
         "ZEL patient data directory not setup up correctly. Please exit and refer to the ZEL "
         "User Manual before continuing.", defaults, "", vbExclamation, false},
        {"whole file", whole, nullptr, from_file, "dot"},
        {"other version", with("3.00.01", "3.00.00"), incompatible_text, defaults, ""},
        {"number format line removed", with("number format:dot\r\n", ""), incompatible_text,
         defaults, ""},
        {"comma file on a dot system", with("format:dot", "format:comma"),
         "ZEL default number format does not match current Windows regional settings. Loading "
         "default system parameters.", defaults, "comma"},
        {"another order",
         crlf("ZEL System Parameter File - DO NOT EDIT 3.00.01|number format:dot|"
              "default language:Deutsch|threshold:0.75|x scale factor:2|max y:3.0|"
              "max x:1500|duration:20|inhale:False|"),
         nullptr, from_file, "dot"},
        {"inhale:maybe", with("inhale:False", "inhale:maybe"), nullptr, defaults, ""},
        {"surplus lines counted and skipped",
         with("inhale:False\r\n", "inhale:False\r\n\r\nDuration:99\r\n") + "colour:blue\r\n",
         nullptr, from_file, "dot"},
        {"a key twice and one missing keeps the member", with("max x:1500", "duration:21"),
         nullptr, Values{false, 21, 3, 3, 2, 0.75f, "Deutsch"}, "dot"},
        {"line ends of LF only", with("\r\n", "\n").chopped(1), nullptr, from_file, "dot"},
        {"empty file", QByteArray(), nullptr, defaults, ""},
        {"stamp only", whole.left(whole.indexOf('\n') + 1), incompatible_text, defaults, ""},
        {"threshold beyond a single",
         with("threshold:0.75", "threshold:1000000000000000000000000000000000000000"), nullptr,
         defaults, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Rig rig;
        Form1& form = rig.form;
        form.detect_number_format();
        if (c.file) write(form.AppDataPath + "/zel.ini", *c.file);
        if (!c.folder) rig.app_data.remove();
        set_odd_values(form);
        bool link_suspended_during_box = false;
        rig.fakes.boxes.while_shown = [&] {
            link_suspended_during_box =
                !form.Timer_module_connect->Enabled() && !form.Timer_HeartBeat->Enabled();
        };
        form.Timer_HeartBeat->set_Enabled(true);

        form.load_system_settings();

        EXPECT_EQ(values(form), c.expected);
        // min_x is left alone by the file and cleared by the defaults.
        EXPECT_EQ(form.min_x, c.expected == defaults ? 0.0 : 9.0);
        EXPECT_EQ(form.found_number_format, c.found_number_format);
        EXPECT_EQ(form.number_format, "dot");
        EXPECT_EQ(rig.fakes.boxes.shown, c.message ? QStringList{c.message} : QStringList{});
        EXPECT_EQ(rig.fakes.boxes.styles, std::vector<int>(c.message ? 1 : 0, c.style));
        EXPECT_EQ(link_suspended_during_box, c.message != nullptr);
        EXPECT_TRUE(!c.message || form.Timer_module_connect->Enabled()) << "search resumes";
    }
}

TEST(PointOnlyNumber, stops_at_the_first_character_that_is_not_part_of_it) {
    struct Case { const char* text; double value; };
    const Case cases[] = {
        {"1,20", 1}, {"2,0", 2},     {"1.25", 1.25}, {"-0.5", -0.5}, {"+3", 3},
        {".5", 0.5}, {"1.2.3", 1.2}, {"abc", 0},     {"", 0},        {"  7", 7},
        {"12 volts", 12}, {"1e3", 1}, {"--1", 0},    {"-", 0},       {"1-2", 1},
    };
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(point_only_number(QString::fromLatin1(c.text)), c.value) << c.text;
    EXPECT_EQ(point_only_number("0." + QString(400, QLatin1Char('0')) + "1"), 0.0)
        << "too small to hold";
    EXPECT_THROW(point_only_number(QString(400, QLatin1Char('9'))), ZelError);
    EXPECT_THROW(point_only_single(QStringLiteral("1") + QString(39, QLatin1Char('0'))), ZelError);
    EXPECT_FLOAT_EQ(point_only_single(QStringLiteral("1,20")), 1.0f);
}

TEST(BooleanValue, takes_words_and_numbers_and_refuses_the_rest) {
    struct Case { const char* text; char separator; int expected; };  // -1: type mismatch
    const Case cases[] = {
        {"True", '.', 1}, {"false", '.', 0},   {" TRUE ", '.', 1}, {"0", '.', 0},
        {"-1", '.', 1},   {"0.0", '.', 0},     {"2.5", '.', 1},    {"1,5", ',', 1},
        {"0,0", ',', 0},  {"1E3", '.', 1},     {"maybe", '.', -1}, {"", '.', -1},
        {"1,5", '.', -1}, {"Truely", '.', -1}, {"1E", '.', -1},    {".", '.', -1},
    };
    for (const auto& c : cases) {
        int got = -1;
        const int error = error_of([&] { got = boolean_value(c.text, QLatin1Char(c.separator)); });
        EXPECT_EQ(std::pair(got, error),
                  std::pair(c.expected, c.expected < 0 ? err_type_mismatch : 0)) << c.text;
    }
}

// A comma system writes its own separator but reads numbers only up to it. A file that can't
// be written is told, and the old one kept.
TEST(SaveIniFile, writes_nine_lines_in_the_system_form_and_reads_them_back) {
    const QString francais = QString::fromLatin1("Fran\xE7" "ais");
    struct Case { char separator; Values saved; QByteArray expected; Values loaded;
                  bool read_only = false; QStringList shown = {}; std::vector<int> styles = {}; };
    const Case cases[] = {
        {'.', {false, 17, 2000, 2, 2, 0.3f, francais},
         crlf("ZEL System Parameter File - DO NOT EDIT 3.00.01|inhale:False|duration:17|"
              "max x:2000|max y:2.0|x scale factor:2|threshold:0.30|"
              "default language:Fran\xE7" "ais|number format:dot|"),
         {false, 17, 2000, 2, 2, 0.3f, francais}},
        {',', {true, 12.5, 1500.25, 2.5, 3, 1.25f, "English"},
         crlf("ZEL System Parameter File - DO NOT EDIT 3.00.01|inhale:True|duration:12,5|"
              "max x:1500,25|max y:2,5|x scale factor:3|threshold:1,25|"
              "default language:English|number format:comma|"),
         {true, 12, 1500, 2, 3, 1, "English"}},
        {'.', defaults, "old", defaults, true, {message_text(142), incompatible_text},
         {vbExclamation, vbOKOnly}},
    };
    for (const auto& c : cases) {
        Rig rig;
        rig.fakes.locale.separator = QLatin1Char(c.separator);
        Form1& form = rig.form;
        form.detect_number_format();
        std::tie(form.inhale, form.duration, form.max_x, form.max_y, form.x_scale_factor,
                 form.thresh, form.language_file) = c.saved;
        if (c.read_only)
            QFile::setPermissions(write(form.AppDataPath + "/zel.ini", "old"), QFile::ReadOwner);
        form.save_ini_file();
        EXPECT_EQ(form.Timer_module_connect->Enabled(), c.read_only) << "search resumed";
        EXPECT_EQ(contents(form.AppDataPath + "/zel.ini"), c.expected);
        set_odd_values(form);
        form.load_system_settings();
        EXPECT_EQ(values(form), c.loaded);
        EXPECT_EQ(rig.fakes.boxes.shown, c.shown);
        EXPECT_EQ(rig.fakes.boxes.styles, c.styles);
    }
}

// Only 255 characters come back, so a longer path reads as a path that isn't there.
TEST(DataPath, is_stored_read_back_and_dropped_when_its_folder_is_gone) {
    Rig rig;
    QTemporaryDir data;
    EXPECT_EQ(rig.form.read_data_path(), "") << "first run";
    const QString deep = data.path() + "/" + QString(150, 'a') + "/" + QString(150, 'b');
    ASSERT_TRUE(QDir().mkpath(deep));
    const std::pair<QString, QString> cases[] = {
        {deep, ""}, {data.filePath("removed"), ""}, {data.path(), data.path()}};
    for (auto [path, read_back] : cases) {
        ASSERT_TRUE(rig.form.write_data_path(path));
        EXPECT_EQ(rig.form.read_data_path(), read_back);
    }
    EXPECT_EQ(contents(rig.form.AppDataPath + "/datapath.ini"),
              "[ZEL]\r\nDataPath=" + data.path().toLatin1() + "\r\n");
    FakePlatform fakes;
    Form1 homeless(fakes.platform, data.filePath("no_app_folder"));
    QString chosen = data.path();
    EXPECT_FALSE(homeless.write_data_path(chosen));
}

// One delimited field, then the lines behind it up to the end, where both reads fail with 62.
TEST(TextReader, reads_one_delimited_field_then_lines_ended_by_cr_lf_cr_or_lf) {
    struct Case { QByteArray text; const char* field; QStringList lines_behind; };
    const Case cases[] = {
        {"Deutsch\r\nrow", "Deutsch", {"row"}}, {"  \tDeutsch \r\nrow", "Deutsch ", {"row"}},
        {"Deutsch,rest of line\r\nrow", "Deutsch", {"rest of line", "row"}},
        {"\"Deutsch, Schweiz\"\r\nrow", "Deutsch, Schweiz", {"row"}},
        {"  \"Deutsch\" dropped,rest\r\nrow", "Deutsch", {"rest", "row"}},
        {"\"two\r\nlines\"\r\nrow", "two\r\nlines", {"row"}},
        {"\"unclosed\r\nrow", "unclosed\r\nrow", {}}, {"\r\nrow", "", {"row"}},
        {",row", "", {"row"}}, {"Deutsch\nrow", "Deutsch", {"row"}},
        {"Deutsch\rrow", "Deutsch", {"row"}},
        {"Deutsch", "Deutsch", {}}, {"Fran\xE7" "ais\r\n\r\n", "Fran\xE7" "ais", {""}},
        {"one\r\ntwo\rthree\nfour\r\n\r\nsix", "one", {"two", "three", "four", "", "six"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        QBuffer buffer;
        buffer.setData(c.text);
        buffer.open(QIODevice::ReadOnly);
        TextReader reader(buffer);
        EXPECT_EQ(reader.input_field(), QString::fromLatin1(c.field));
        QStringList behind;
        while (!reader.at_end()) behind.append(reader.line_input());
        EXPECT_EQ(behind, c.lines_behind);
        EXPECT_EQ(error_of([&] { reader.line_input(); }), err_input_past_end);
        EXPECT_EQ(error_of([&] { reader.input_field(); }), err_input_past_end);
    }
}

}  // namespace
}  // namespace zel
