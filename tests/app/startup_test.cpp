#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "fakes/rig.h"
#include "language/messages.h"

namespace zel::test {
namespace {

// A rig whose system check passes at once: the module answers during the check window.
struct StartRig : Rig {
    QTemporaryDir patients;
    StartRig() {
        fakes.serial.set_PortOpen(false);
        fakes.windows.during(Window::Form13, [this] { module_passes_the_check(); });
        fakes.windows.during(Window::Form6, [this] {
            fakes.timers.get("logo_banner").tick();
            fakes.timers.get("logo_banner").tick();
        });
    }
    // While the check window stands the search finds the module, its status frame passes, and
    // the tick that sees it arms the window's close.
    void module_passes_the_check() {
        fakes.timers.get("Timer_module_connect").tick();
        fakes.serial.receive(status_frame(104, 171, 200, 200, 15, 1.2f));
        fakes.timers.get("Timer_module_connect").tick();
        FakeTimer& close = fakes.timers.get("Timer_form13_close_delay");
        ASSERT_TRUE(close.Enabled()) << "the passing tick did not arm the close";
        close.tick();
    }
    void write_data_path() {
        QFile file(form.AppDataPath + QStringLiteral("/datapath.ini"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[ZEL]\r\nDataPath=" + patients.path().toLatin1() + "\r\n");
    }
    // What the operator saw, in order: message boxes, dialogs and windows.
    QStringList seen() const {
        QStringList all = fakes.boxes.shown;
        all.append(fakes.windows.log);
        return all;
    }
};

TEST(Startup, a_bare_machine_asks_for_the_data_folder_then_checks_and_asks_for_a_patient) {
    StartRig rig;
    rig.fakes.dialogs.choose_folder(rig.patients.path());
    QStringList order;
    rig.fakes.boxes.while_shown = [&] { order.append(rig.fakes.boxes.shown.last().left(30)); };
    rig.fakes.windows.during(Window::Form6, [&] {
        order.append(QStringLiteral("banner"));
        rig.fakes.timers.get("logo_banner").tick();
        rig.fakes.timers.get("logo_banner").tick();
    });
    rig.fakes.windows.during(Window::Form13, [&] {
        order.append(QStringLiteral("system check"));
        rig.module_passes_the_check();
    });
    rig.form.Form_Load();
    order.append(rig.fakes.dialogs.titles);
    EXPECT_EQ(order.mid(0, 4),
              (QStringList{QStringLiteral("ZEL System Initialization file"),
                           message_text(109).left(30), QStringLiteral("banner"),
                           QStringLiteral("system check")}));
    EXPECT_EQ(rig.fakes.dialogs.titles, QStringList{QStringLiteral("Select Patient Data Path")});
    EXPECT_EQ(rig.fakes.windows.log.filter(QStringLiteral("ask")),
              QStringList{QStringLiteral("ask ") + message_text(123)});
    EXPECT_TRUE(rig.fakes.windows.main_visible);
    EXPECT_TRUE(rig.fakes.windows.key_guard);
    EXPECT_EQ(rig.form.data_directory, rig.patients.path());
    EXPECT_TRUE(QFile::exists(rig.form.AppDataPath + QStringLiteral("/datapath.ini")));
    EXPECT_TRUE(rig.ended.isEmpty());
}

TEST(Startup, cancelling_the_folder_chooser_ends_the_program_and_leaves_no_file) {
    StartRig rig;
    rig.form.Form_Load();
    EXPECT_EQ(rig.ended, QStringList{QStringLiteral("0")});
    EXPECT_EQ(QDir(rig.form.AppDataPath).entryList(QDir::Files), QStringList{});
    EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("Form6")).isEmpty());
    EXPECT_FALSE(rig.fakes.windows.main_visible);
}

TEST(Startup, a_failed_system_check_closes_the_port_and_ends_without_asking) {
    StartRig rig;
    rig.write_data_path();
    rig.fakes.windows.during(Window::Form13, [&] {
        rig.fakes.serial.set_PortOpen(true);
        rig.form.Form13_Command1_Click();
    });
    rig.form.Form_Load();
    EXPECT_EQ(rig.ended, QStringList{QStringLiteral("0")});
    EXPECT_FALSE(rig.fakes.serial.PortOpen());
    EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("ask")).isEmpty());
    EXPECT_FALSE(rig.fakes.windows.main_visible);
}

TEST(Startup, sets_captions_and_the_time_scale_and_searches_for_the_module) {
    StartRig rig;
    rig.write_data_path();
    rig.form.Form_Load();
    EXPECT_EQ(rig.form.Caption, QStringLiteral("Zelmoor  3.00.01"));
    EXPECT_EQ(rig.form.zel_exit.Caption, QStringLiteral("&Exit"));
    EXPECT_EQ(rig.form.Label_last_name.Caption, QStringLiteral("No patient defined"));
    EXPECT_EQ(rig.form.Label1.Caption, QStringLiteral("1 sec / division"));
    EXPECT_TRUE(rig.form.label_session.Caption.isEmpty());
    EXPECT_FALSE(rig.form.Patient_Settings.Enabled);
    EXPECT_TRUE(rig.fakes.timers.get("Timer_module_connect").Enabled());
    EXPECT_EQ(rig.form.Pic.Width, 13056);
    EXPECT_EQ(rig.form.Pic.Height, 7488);
}

TEST(ChartLabels, stand_on_the_grid_lines_with_their_volumes) {
    struct Case { double max_y; const char* top; const char* middle; const char* bottom; };
    const Case cases[] = {{2, "2.00", "0.00", "-2.00"}, {1, "1.00", "0.00", "-1.00"},
                          {2.5, "2.50", "0.00", "-2.50"}};
    for (const auto& c : cases) {
        Rig rig;
        rig.form.max_y = c.max_y;
        rig.form.min_y = -c.max_y;
        rig.form.layout_main_window();
        EXPECT_EQ(rig.form.ylabel1.Caption, QString::fromLatin1(c.top));
        EXPECT_EQ(rig.form.ylabel5.Caption, QString::fromLatin1(c.middle));
        EXPECT_EQ(rig.form.ylabel9.Caption, QString::fromLatin1(c.bottom));
        for (int k = 1; k <= 9; ++k)
            EXPECT_DOUBLE_EQ(rig.form.ylabel(k)->Top,
                             (k - 1) / 8.0 * 7488 + rig.form.Pic.Top - 255 / 2.0);
    }
    Rig rig;
    rig.form.max_y = 2;
    rig.form.min_y = -2;
    rig.form.layout_main_window();
    EXPECT_EQ(rig.form.ylabel2.Caption, QStringLiteral("1.50"));
    EXPECT_DOUBLE_EQ(rig.form.thresh_label.Left, 13056 * 1.03 + rig.form.Pic.Left);
    EXPECT_DOUBLE_EQ(rig.form.elapsed_label.Left, rig.form.Pic.Left + 13056 - 855);
    EXPECT_DOUBLE_EQ(rig.form.infolabel5.Left, rig.form.elapsed_label.Left - 1215);
    EXPECT_DOUBLE_EQ(rig.form.Frame2.Top, rig.form.Pic.Top + 7488 + 2 * 240);
    EXPECT_DOUBLE_EQ(rig.form.cmdRecord.Top, rig.form.Frame2.Top + 1815 - 855 - 10);
    EXPECT_EQ(rig.form.infolabel3.Caption, QStringLiteral("Sunday, November 22, 2026   09:05:07"));
}

TEST(Shutdown, with_no_patient_asks_nothing_and_sends_nothing) {
    Rig rig;
    rig.form.zel_exit_Click();
    EXPECT_TRUE(rig.fakes.windows.log.filter(QStringLiteral("ask")).isEmpty());
    EXPECT_EQ(rig.fakes.serial.sent(), "");
    EXPECT_FALSE(rig.fakes.serial.PortOpen());
    EXPECT_EQ(rig.ended, QStringList{QStringLiteral("0")});
}

// Doe, Jane, A1 in force, session 1, with her folder.
void define_patient(Rig& rig) {
    rig.form.patient_defined = true;
    rig.form.data_directory = rig.app_data.path();
    rig.form.patient_last_name = QStringLiteral("Doe");
    rig.form.patient_first_name = QStringLiteral("Jane");
    rig.form.patient_medical_id = QStringLiteral("A1");
    rig.form.session = QStringLiteral("1");
    QDir().mkpath(rig.app_data.path() + QStringLiteral("/Doe_Jane_A1"));
}

TEST(Shutdown, with_a_patient_asks_to_save_and_cancel_changes_nothing) {
    struct Case { int button; bool ends; };
    for (const Case c : {Case{2, false}, Case{1, true}, Case{0, true}}) {
        Rig rig;
        define_patient(rig);
        rig.form.Gated_Treatment = true;
        rig.form.hhkLowLevelKybd = rig.fakes.windows.install_key_guard();
        rig.fakes.windows.answer(c.button);
        rig.form.zel_exit_Click();
        EXPECT_EQ(QFile::exists(rig.app_data.path() + QStringLiteral("/Doe_Jane_A1/session.ini")),
                  c.button == 0)
            << c.button;
        EXPECT_EQ(rig.fakes.windows.log.filter(QStringLiteral("ask")),
                  QStringList{QStringLiteral("ask Save session history?")});
        EXPECT_EQ(rig.ended.size(), c.ends ? 1 : 0) << c.button;
        EXPECT_EQ(rig.fakes.serial.sent(), c.ends ? QByteArray("d") : QByteArray()) << c.button;
        EXPECT_EQ(rig.fakes.serial.PortOpen(), !c.ends) << c.button;
        EXPECT_EQ(rig.fakes.windows.key_guard, !c.ends) << c.button;
        EXPECT_EQ(rig.fakes.tarrow.calls.contains(QStringLiteral("Close()")), c.ends) << c.button;
    }
}

// A recording running at the exit is closed and left read-only; one paused before was closed
// by its Pause and stays as it was.
TEST(Shutdown, leaves_a_running_recording_read_only_and_a_paused_one_writable) {
    for (const bool paused : {false, true}) {
        Rig rig;
        define_patient(rig);
        rig.form.cmdRecord.Enabled = true;
        rig.form.cmdRecord_Click();
        rig.fakes.serial.receive(data_frame(0x06, 1, 250));
        if (paused) rig.form.cmdPause_Click();
        const QString curve = rig.form.record_filename;
        ASSERT_TRUE(QFile::exists(curve));
        rig.fakes.windows.answer(1);  // the session not saved
        rig.form.zel_exit_Click();
        EXPECT_FALSE(rig.form.curve_file) << paused;
        EXPECT_EQ(bool(QFile::permissions(curve) & QFile::WriteOwner), paused) << paused;
        EXPECT_EQ(rig.ended, QStringList{QStringLiteral("0")}) << paused;
    }
}

}  // namespace
}  // namespace zel::test
