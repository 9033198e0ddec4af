// The main window's controls as they stand before the layout derives their places: sizes,
// fonts, colours and first captions. Places inside the status panel are relative to it.
#include "app/form1_controls.h"

namespace zel {

namespace {
Font arial(double size, bool bold) { return Font{QStringLiteral("Liberation Sans"), size, bold}; }
}  // namespace

void Form1Controls::set_design_values() {
    place_twips(Pic, 900, 360, 13056, 7488);
    Pic.BackColor = Rgb{255, 255, 255};
    for (int k = 1; k <= 9; ++k) {
        Control& label = *ylabel(k);
        place_twips(label, 0, 0, 855, 255);
        label.font = arial(9.75, true);
    }
    place_twips(thresh_label, 0, 0, 495, 255);
    thresh_label.font = arial(9.75, true);
    place_twips(Label1, 0, 0, 3075, 240);
    Label1.font = arial(9, true);
    Label1.Caption = QStringLiteral("1 division = 1 sec");
    place_twips(infolabel3, 0, 60, 4815, 270);
    infolabel3.font = arial(9.75, true);
    place_twips(volume_label, 0, 0, 3000, 255);
    volume_label.font = arial(9, true);
    place_twips(infolabel5, 0, 0, 1215, 255);
    infolabel5.font = arial(9, true);
    infolabel5.Caption = QStringLiteral("Elapsed Time:");
    place_twips(elapsed_label, 0, 0, 855, 255);
    elapsed_label.font = arial(9, true);
    elapsed_label.Caption = QStringLiteral("0");
    place_twips(Frame2, 0, 0, 13095, 1815);
    Frame2.BackColor = window_background;

    place_twips(Label_last_name, 120, 240, 3495, 255);
    Label_last_name.Caption = QStringLiteral("No patient defined");
    place_twips(Label_first_name, 135, 650, 3495, 255);
    Label_first_name.Caption = QStringLiteral("first name field-");
    place_twips(label_patient_ID, 120, 1080, 3495, 255);
    label_patient_ID.Caption = QStringLiteral("No medical ID defined");
    place_twips(label_session, 120, 1440, 3525, 270);
    label_session.Caption = QStringLiteral("No session defined");
    for (Control* c : {&Label_last_name, &Label_first_name, &label_patient_ID, &label_session})
        c->font = arial(9, true);
    place_twips(Label2, 3960, 360, 2655, 1335);
    Label2.font = arial(9, true);
    place_twips(countdown2, 9600, 240, 2535, 1455);
    countdown2.font = arial(72, true);
    countdown2.BackColor = Rgb{192, 192, 192};
    place_twips(gating_label, 7200, 480, 1995, 495);
    gating_label.font = arial(18, false);
    place_twips(Label4, 7200, 960, 1995, 495);
    Label4.font = arial(18, false);

    // The lamps stand at one place beside the status panel; the layout lines them up.
    for (Control* lamp : {&Image_Gating_Ready, &Image_Gating_Closed, &Image_Gating_Fault}) {
        place_twips(*lamp, 14220, 8460, 675, 675);
        lamp->Visible = false;
    }
    place_twips(cmdRecord, 0, 0, 855, 855);
    cmdRecord.Caption = QStringLiteral("Record");
    place_twips(cmdPause, 0, 0, 855, 855);
    cmdPause.Caption = QStringLiteral("Pause");
    cmdPause.Enabled = false;
    for (Control* button : {&cmdRecord, &cmdPause}) button->font = arial(8.25, false);
    place_twips(upper_thresh_label, 8640, 2520, 615, 255);
    upper_thresh_label.Caption = QStringLiteral("Label4");
    upper_thresh_label.Visible = false;  // never written; kept out of the operator's way
    place_twips(iconA, 14280, 9300, 960, 960);
}

}  // namespace zel
