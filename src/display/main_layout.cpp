// Placing of the chart and of everything around it in the main window.
#include "app/form1.h"
#include "app/helpers.h"

namespace zel {

Control* Form1Controls::ylabel(int k) {
    Control* labels[] = {&ylabel1, &ylabel2, &ylabel3, &ylabel4, &ylabel5,
                         &ylabel6, &ylabel7, &ylabel8, &ylabel9};
    return labels[k - 1];
}

void Form1::layout_main_window() {
    Height = 11520;
    Width = 15360;
    Pic.Width = 0.85 * Width;
    Pic.Height = 0.65 * Height;
    volume_label.Top = Pic.Top + Pic.Height + 10;
    infolabel5.Top = volume_label.Top;
    elapsed_label.Top = volume_label.Top;
    volume_label.Left = Pic.Left;
    elapsed_label.Left = Pic.Left + Pic.Width - elapsed_label.Width;
    infolabel5.Left = elapsed_label.Left - infolabel5.Width;
    update_chart_labels();
    draw_chart();
}

void Form1::update_chart_labels() {
    for (int k = 1; k <= 9; ++k)
        ylabel(k)->Top = ((k - 1) / 8.0) * Pic.Height + Pic.Top - ylabel1.Height / 2;
    const QChar separator = platform.locale.decimal_separator();
    for (int k = 1; k <= 9; ++k)
        ylabel(k)->Caption =
            format_number(max_y - ((k - 1) / 8.0) * (max_y - min_y), "###0.00", separator);
    thresh_label.Left = Pic.Width * 1.03 + Pic.Left;
    Label1.Left = Pic.Width / 2 + Pic.Left - Label1.Width / 2;
    Label1.Top = Pic.Top + Pic.Height;
    infolabel3.Left = Pic.Left + Pic.Width - infolabel3.Width;
    Frame2.Left = Pic.Width / 2 + Pic.Left - Frame2.Width / 2;
    Frame2.Top = Label1.Top + 2 * Label1.Height;
    Image_Gating_Ready.Left = Image_Gating_Closed.Left;
    Image_Gating_Fault.Left = Image_Gating_Closed.Left;
    cmdPause.Left = Frame2.Left + Frame2.Width - cmdPause.Width - 10;
    cmdPause.Top = Frame2.Top + 110;
    cmdRecord.Left = Frame2.Left + Frame2.Width - cmdRecord.Width - 10;
    cmdRecord.Top = Frame2.Top + Frame2.Height - cmdRecord.Height - 10;

    for (int k = 1; k <= 9; ++k) ylabel(k)->BackColor = window_background;
    for (Control* c : {&Label_last_name, &Label_first_name, &label_session, &infolabel3,
                       &infolabel5, &label_patient_ID})
        c->BackColor = Frame2.BackColor;
    for (int k = 2; k <= 9; ++k) ylabel(k)->ForeColor = ylabel1.ForeColor;
    for (Control* c : {&Label_last_name, &Label_first_name, &label_session, &infolabel3,
                       &label_patient_ID, &infolabel5, &volume_label, &Label1})
        c->ForeColor = ylabel1.ForeColor;
    for (Control* c : {&elapsed_label, &gating_label, &Label4}) c->BackColor = Frame2.BackColor;
    thresh_label.BackColor = window_background;
    elapsed_label.ForeColor = label_patient_ID.ForeColor;
    thresh_label.ForeColor = label_patient_ID.ForeColor;
    Timer2_Timer();
}

void Form1::Timer2_Timer() {
    const QDateTime now = platform.clock.now();
    infolabel3.Caption = platform.locale.long_date(now.date()) + QStringLiteral("   ") +
                         platform.locale.medium_time(now.time());
}

}  // namespace zel
