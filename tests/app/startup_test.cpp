#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "app/patient_rig.h"
#include "app/release.h"
#include "fakes/files.h"
#include "language/messages.h"

namespace zel::test {
namespace {

// A rig whose system check passes at once: the module answers during the check window.
// What the operator saw, in order: the boxes' first words, the banner and the check.
struct StartRig : Rig {
    QTemporaryDir patients;
    QStringList order;
    StartRig() {
        fakes.serial.set_PortOpen(false);
        fakes.boxes.while_shown = [this] { order.append(fakes.boxes.shown.last().left(30)); };
        // While the check window stands the search finds the module, its status frame passes,
        // and the tick that sees it arms the window's close.
        fakes.windows.during(Window::Form13, [this] {
            order.append(QStringLiteral("system check"));
            fakes.timers.get("Timer_module_connect").tick();
            fakes.serial.receive(status_frame(104, 171, 200, 200, 15, 1.2f));
            fakes.timers.get("Timer_module_connect").tick();
            FakeTimer& close = fakes.timers.get("Timer_form13_close_delay");
            ASSERT_TRUE(close.Enabled()) << "the passing tick did not arm the close";
            close.tick();
        });
        fakes.windows.during(Window::Form6, [this] {
            order.append(QStringLiteral("banner"));
            fakes.timers.get("logo_banner").tick();
            fakes.timers.get("logo_banner").tick();
        });
    }
    void write_data_path() {
        write(form.AppDataPath + QStringLiteral("/datapath.ini"),
              "[ZEL]\r\nDataPath=" + patients.path().toLatin1() + "\r\n");
    }
};

TEST(Startup, a_bare_machine_asks_for_the_data_folder_then_checks_and_asks_for_a_patient) {
    StartRig rig;
    rig.fakes.dialogs.choose_folder(rig.patients.path());
    rig.form.Form_Load();
    EXPECT_EQ(rig.order, (QStringList{"ZEL System Initialization file", message_text(109).left(30),
                                  "banner", "system check"}));
    EXPECT_EQ(rig.fakes.dialogs.titles, QStringList{QStringLiteral("Select Patient Data Path")});
    EXPECT_EQ(rig.fakes.windows.log.filter(QStringLiteral("ask")),
              QStringList{QStringLiteral("ask ") + message_text(123)});
    EXPECT_TRUE(rig.fakes.windows.main_visible && rig.fakes.windows.key_guard);
    EXPECT_EQ(rig.form.data_directory, rig.patients.path());
    EXPECT_TRUE(QFile::exists(rig.form.AppDataPath + "/datapath.ini") && rig.ended.isEmpty());
}

// No folder for the patients (the chooser cancelled), or a failed system check: the program
// ends with the port closed, asking nothing.
TEST(Startup, ends_without_a_data_folder_or_after_a_failed_system_check) {
    for (const bool chosen : {false, true}) {
        StartRig rig;
        if (chosen) rig.write_data_path();
        rig.fakes.windows.during(Window::Form13, [&] {
            rig.fakes.serial.set_PortOpen(true);
            rig.form.Form13_Command1_Click();
        });
        rig.form.Form_Load();
        EXPECT_EQ(rig.ended, QStringList{QStringLiteral("0")});
        EXPECT_EQ(QDir(rig.form.AppDataPath).entryList(QDir::Files),
                  chosen ? QStringList{"datapath.ini"} : QStringList{});
        EXPECT_EQ(rig.order, (QStringList{"ZEL System Initialization file",
                                          chosen ? "banner" : message_text(109).left(30)}));
        EXPECT_FALSE(rig.fakes.serial.PortOpen() || rig.fakes.windows.main_visible);
        EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("ask")).isEmpty());
    }
}

// The time scale and the volume range saved in the system settings name the chart's
// divisions; each volume label's middle stands on its grid line.
TEST(Startup, names_the_chart_shows_no_patient_and_searches_for_the_module) {
    struct Case { int scale; double max_y; QStringList labels; };  // 1st, 2nd, 5th and 9th
    const Case cases[] = {{1, 2, {"2.00", "1.50", "0.00", "-2.00"}},
                          {2, 1, {"1.00", "0.75", "0.00", "-1.00"}},
                          {3, 2.5, {"2.50", "1.88", "0.00", "-2.50"}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.scale);
        StartRig rig;
        rig.write_data_path();
        rig.form.system_parameter_filestamp =
            QStringLiteral("ZEL System Parameter File - DO NOT EDIT ") + release::software_version();
        rig.form.number_format = QStringLiteral("dot");
        rig.form.x_scale_factor = static_cast<float>(c.scale);
        rig.form.max_y = c.max_y, rig.form.min_y = -c.max_y;
        rig.form.save_ini_file();
        rig.form.Form_Load();
        Form1& f = rig.form;
        EXPECT_EQ(f.Label1.Caption, message_text(189 + c.scale));
        EXPECT_EQ((QStringList{f.ylabel1.Caption, f.ylabel2.Caption, f.ylabel5.Caption,
                               f.ylabel9.Caption}), c.labels);
        for (int k = 1; k <= 9; ++k)
            EXPECT_DOUBLE_EQ(f.ylabel(k)->Top + f.ylabel(k)->Height / 2,
                             (k - 1) / 8.0 * f.Pic.Height + f.Pic.Top);
        EXPECT_EQ(f.infolabel3.Caption, QStringLiteral("Sunday, November 22, 2026   09:05:07"));
        EXPECT_EQ((QStringList{f.Caption, f.Label_last_name.Caption, f.label_session.Caption}),
                  (QStringList{"Zelmoor  3.00.01", "No patient defined", ""}));
        EXPECT_FALSE(f.Patient_Settings.Enabled || !rig.fakes.boxes.shown.isEmpty());
        EXPECT_TRUE(rig.fakes.timers.get("Timer_module_connect").Enabled());
    }
}

// Without a patient nothing is asked; with one, the session question's Cancel changes
// nothing, and Yes or No end the link, the gating library and the key guard. A recording
// running at the exit is closed and left read-only; one paused before was closed by its Pause
// and stays as it was.
TEST(Shutdown, with_a_patient_asks_to_save_and_cancel_changes_nothing) {
    enum Recording { none, running, paused };
    struct Case { bool patient; int button; Recording recording; bool ends; const char* sent; };
    const Case cases[] = {{false, 0, none, true, ""}, {true, 2, none, false, ""},
                          {true, 1, none, true, "d"}, {true, 0, none, true, "d"},
                          {true, 1, running, true, "d"}, {true, 1, paused, true, "d"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.patient << c.button << c.recording);
        Rig rig;
        if (c.patient) define_patient(rig);
        rig.form.Gated_Treatment = c.patient;
        rig.form.hhkLowLevelKybd = rig.fakes.windows.install_key_guard();
        if (c.recording != none) {
            rig.form.cmdRecord.Enabled = true;
            rig.form.cmdRecord_Click();
            rig.fakes.serial.receive(data_frame(0x06, 1, 250));
            if (c.recording == paused) rig.form.cmdPause_Click();
            rig.fakes.serial.clear_sent();
        }
        rig.fakes.windows.answer(c.button);
        rig.form.zel_exit_Click();
        EXPECT_EQ(QFile::exists(doe_folder(rig) + QStringLiteral("/session.ini")),
                  c.patient && c.button == 0);
        EXPECT_EQ(rig.fakes.windows.log.filter(QStringLiteral("ask")),
                  c.patient ? QStringList{"ask Save session history?"} : QStringList{});
        EXPECT_EQ(rig.ended, c.ends ? QStringList{"0"} : QStringList{});
        EXPECT_EQ(rig.fakes.serial.sent(), QByteArray(c.sent));
        EXPECT_EQ(rig.fakes.serial.PortOpen() || rig.fakes.windows.key_guard, !c.ends);
        EXPECT_EQ(rig.fakes.tarrow.calls.contains(QStringLiteral("Close()")), c.ends && c.patient);
        EXPECT_FALSE(rig.form.curve_file);
        const QFile::Permissions mode = QFile::permissions(rig.form.record_filename);
        EXPECT_EQ(bool(mode & QFile::WriteOwner), c.recording == paused);
    }
}

// The system check window as the search and the status frames drive it.
struct CheckRig : Rig {
    CheckRig() {
        fakes.serial.set_PortOpen(false);
        fakes.serial.ports(1);
        form.duration = 15, form.thresh = 1.2f;
        form.form13_open = true;
        form.form13.Form_Load();
        form.start_module_search();
    }
    void tick() { fakes.timers.get("Timer_module_connect").tick(); }
    FakeTimer& close_delay() { return fakes.timers.get("Timer_form13_close_delay"); }
    // What the window shows: connection, then per row caption, pass, fail, result.
    QString shown() const {
        const Form13& w = form.form13;
        QString text = w.Image_connected.Visible       ? QStringLiteral("connected")
                       : w.Image_not_connected.Visible ? QStringLiteral("not connected")
                                                       : QStringLiteral("no connection image");
        const Control* rows[][4] = {
            {&w.Label2, &w.Image_02_pass, &w.Image_02_fail, &w.Label_check_02},
            {&w.Label3, &w.Image_03_pass, &w.Image_03_fail, &w.Label_check_03},
            {&w.Label4, &w.Image_04_pass, &w.Image_04_fail, &w.Label_check_04},
            {&w.Label5, &w.Image_05_pass, &w.Image_05_fail, &w.Label_check_05},
        };
        for (const auto& row : rows) {
            text += QStringLiteral(" |");
            const QString texts[] = {row[0]->Caption, "pass-image", "fail-image", row[3]->Caption};
            for (int k = 0; k < 4; ++k)
                if (row[k]->Visible) text += ' ' + texts[k];
        }
        return text;
    }
};

TEST(SystemCheck, a_flat_battery_fails_its_row_and_passes_once_the_level_rises) {
    CheckRig rig;
    rig.tick();  // opens the port and asks for a status frame
    EXPECT_EQ(rig.shown(), QStringLiteral("not connected | | | |")) << "nothing heard yet";
    rig.fakes.serial.receive(status_frame(103));
    rig.tick();
    EXPECT_EQ(rig.shown(), QStringLiteral("connected | Transducer: pass-image PASS"
                                          " | Battery: fail-image FAIL | Line: pass-image PASS"
                                          " | Balloon: pass-image PASS"));
    EXPECT_FALSE(rig.close_delay().Enabled() || rig.form.system_check_result);

    // The tests repeat at every tick: the level rises and the row turns to PASS by itself.
    rig.fakes.serial.receive(status_frame(104));
    EXPECT_FALSE(rig.close_delay().Enabled()) << "armed by the frame and not by the tick";
    rig.tick();
    EXPECT_EQ(rig.shown(), QStringLiteral("connected | Transducer: pass-image PASS"
                                          " | Battery: pass-image PASS | Line: pass-image PASS"
                                          " | Balloon: pass-image PASS"));
    EXPECT_TRUE(rig.close_delay().Enabled() && rig.form.system_check_result);
    EXPECT_EQ(rig.close_delay().Interval(), 2000);
    // A later failing tick does not stop the close already armed.
    rig.fakes.serial.receive(status_frame(103));
    rig.tick();
    EXPECT_TRUE(rig.close_delay().Enabled() && rig.form.system_check_result);

    rig.close_delay().tick();
    EXPECT_FALSE(rig.form.form13_open || rig.close_delay().Enabled());
    EXPECT_TRUE(rig.fakes.windows.log.contains(QStringLiteral("unload Form13")));
}

// An unplugged module takes the results away on the next tick, and the window stays up.
TEST(SystemCheck, an_unplugged_module_shows_only_the_not_connected_image) {
    CheckRig rig;
    rig.tick();
    rig.fakes.serial.receive(status_frame(104, 170));  // line failing keeps the window up
    rig.tick();
    EXPECT_TRUE(rig.shown().contains(QStringLiteral("Line: fail-image FAIL")));
    rig.fakes.serial.set_PortOpen(false);  // unplugged: nothing more comes in
    rig.tick();
    EXPECT_EQ(rig.shown(), QStringLiteral("not connected | | | |"));
    EXPECT_FALSE(rig.close_delay().Enabled() || rig.form.system_check_result ||
                 !rig.form.form13_open);
}


}  // namespace
}  // namespace zel::test
