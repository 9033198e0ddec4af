#include "history/dialog_session_history.h"

#include "app/form1.h"
#include "data/profile_file.h"
#include "data/session_history_file.h"
#include "history/history_printout.h"
#include "language/messages.h"

namespace zel {

namespace {


// The keys of a session's section, in the order of its columns.
constexpr const char* column_keys[] = {
    "ID",
    "Date",
    "Threshold",
    "Breath_Hold_Duration",
    "Trigger_on_Inhale",
    "Number_of_breath_holds",
    "Gating Mode",
};

}  // namespace

DialogSessionHistory::DialogSessionHistory(Form1& form, Printer& printer)
    : form(form), printer(printer) {
    // A 920 by 420 pixel inner area: the heading, the list with room for its seven columns,
    // the two buttons under it.
    ScaleWidth = 13800;
    ScaleHeight = 6300;
    place_twips(LabelSession, 240, 180, 6000, 360);
    LabelSession.font.size = 12;
    LabelSession.font.bold = true;
    place_twips(ListView1, 240, 660, 13320, 4620);
    ListView1.BackColor = Rgb{255, 255, 255};
    place_twips(DoneButton, 11940, 5580, 1620, 480);
    place_twips(cmdPrint, 10080, 5580, 1620, 480);
}

std::vector<Control*> DialogSessionHistory::layout_controls() {
    return {&LabelSession, &ListView1, &DoneButton, &cmdPrint};
}

void DialogSessionHistory::Form_Load() {
    Caption = message_text(314);
    LabelSession.Caption = message_text(314);
    DoneButton.Caption = message_text(113);
    cmdPrint.Caption = message_text(317);
    load_session_list();
}

void DialogSessionHistory::load_session_list() {
    record_layout();
    const QString path =
        form.sessionfile(form.patient_last_name, form.patient_first_name, form.patient_medical_id);
    int16_t total = 0;
    try {
        total = read_total_sessions(path);
    } catch (const ZelError& e) {
        if (e.number == err_session_history_read) {
            form.platform.boxes.MsgBox(e.description);
            return;
        }
        // A count that can't be read is no count: the list stays empty.
    }
    if (total == 0) return;
    // The file is read once for all its values, not once for each.
    const ProfileIndex history(read_profile_file(path));
    for (int i = 1; i <= total; ++i) {
        const QString section = session_section(i);
        auto value = [&](const char* key) {
            return history.value(section, QString::fromLatin1(key), QString());
        };
        ListView1.add_item(i, value(column_keys[0]));
        for (int k = 1; k < 7; ++k) ListView1.add_sub_item(i, k, value(column_keys[k]));
    }
    const std::pair<int, double> columns[] = {
        {156, ReportListView::default_column_width},
        {157, 2400},
        {158, ReportListView::default_column_width},
        {159, 1800},
        {160, ReportListView::default_column_width},
        {161, ReportListView::default_column_width},
        {300, 2000},
    };
    int position = 1;
    for (const auto& [message, width] : columns)
        ListView1.add_column(position++, message_text(message), width);
}

void DialogSessionHistory::record_layout() {
    layout.record(layout_controls(), ScaleWidth, ScaleHeight);
}

void DialogSessionHistory::Form_Resize() {
    if (!minimized) scale_layout();
}

void DialogSessionHistory::scale_layout() {
    layout.scale(layout_controls(), ScaleWidth, ScaleHeight);
}

void DialogSessionHistory::DoneButton_Click() { unloaded = true; }

void DialogSessionHistory::cmdPrint_Click() {
    if (ListView1.item_count() < 1) {
        form.platform.boxes.MsgBox(message_text(199), vbInformation);
        return;
    }
    printer.set_CurrentX(1440);
    printer.set_CurrentY(1440);
    print_session_list(ListView1);
    // Also after a cancel or a failure: whatever was drawn goes out. A page that could not go
    // out whole (a PDF on a full disk) is not left unsaid.
    const QString failure = printer.end_document();
    if (!failure.isEmpty())
        form.platform.boxes.MsgBox(message_text(142) + QLatin1Char('\n') + failure, vbExclamation);
}

void DialogSessionHistory::print_session_list(const ReportListView& list) {
    try {
        if (!printer.choose_printer()) return;
        const QDateTime now = form.platform.clock.now();
        const Locale& locale = form.platform.locale;
        HistoryPage page;
        page.heading = message_text(162) + locale.medium_date(now.date()) + QLatin1Char(' ') +
                       locale.medium_time(now.time()) + QLatin1Char(')');
        page.name = message_text(163) + form.patient_last_name + QStringLiteral(", ") +
                    form.patient_first_name;
        page.medical_id = message_text(164) + form.patient_medical_id;
        draw_session_list(printer, page, list);
    } catch (const ZelError&) {
        // A page that could not be drawn whole is left as far as it got.
    }
}

}  // namespace zel
