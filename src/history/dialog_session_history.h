#pragma once
// The session history window: one row per treatment session saved for the patient in force,
// read from the patient's "session.ini" in file order, and a printed page of it. It only
// reads; each opening reads the file afresh.
#include <QString>
#include <vector>

#include "app/control.h"
#include "app/proportional_layout.h"
#include "history/report_list_view.h"
#include "platform/printer.h"

namespace zel {

class Form1;

class DialogSessionHistory {
public:
    DialogSessionHistory(Form1& form, Printer& printer);
    DialogSessionHistory(const DialogSessionHistory&) = delete;
    DialogSessionHistory& operator=(const DialogSessionHistory&) = delete;

    Form1& form;
    Printer& printer;  // the system's default printer, with its dialog

    // The window and its controls; places in twips.
    QString Caption;
    double ScaleWidth = 0, ScaleHeight = 0;  // inner size
    bool minimized = false;
    bool unloaded = false;  // Done has closed the window
    Control LabelSession;
    ReportListView ListView1;
    Control DoneButton;
    Control cmdPrint;

    void Form_Load();
    void Form_Resize();
    void load_session_list();
    void record_layout();
    void scale_layout();
    void DoneButton_Click();
    void cmdPrint_Click();
    // The printer dialog, then the page; a cancel or a failure ends it without a word.
    void print_session_list(const ReportListView& list);

private:
    ProportionalLayout layout;
    std::vector<Control*> layout_controls();
};

}  // namespace zel
