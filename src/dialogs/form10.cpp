#include "dialogs/form10.h"

#include "app/form1.h"
#include "app/helpers.h"
#include "language/messages.h"

namespace zel {

namespace {


constexpr Rgb button_face{240, 240, 240};

}  // namespace

Form10::Form10() {
    Width = 7800;
    Height = 7380;
    place_twips(Label2, 240, 180, 7320, 360);
    Label2.font = Font{QStringLiteral("Liberation Sans"), 12, true};
    place_twips(Label1, 240, 600, 7320, 660);
    // Caption and value side by side, one row each.
    Control* rows[][2] = {
        {&software_version, &Label3}, {&firmware_version, &Label20},
        {&line_label, &line_voltage}, {&battery_label, &battery_voltage},
        {&Label9, &Label_pressure},   {&Label10, &Label_vacuum},
    };
    double top = 1380;
    for (auto& row : rows) {
        place_twips(*row[0], 240, top, 4200, 300);
        place_twips(*row[1], 4560, top, 1800, 300);
        top += 360;
    }
    place_twips(Frame_gating, 240, top + 60, 7320, 1380);
    Control* gating_rows[][2] = {
        {&Label12, &Label_tarrow_dll}, {&Label13, &Label_tarrow_control},
        {&Label14, &Label_tarrow_relay},
    };
    double inner = 300;
    for (auto& row : gating_rows) {
        place_twips(*row[0], 120, inner, 4080, 300);
        place_twips(*row[1], 4320, inner, 1800, 300);
        inner += 330;
    }
    top += 1560;
    for (Control* line : {&Label4, &Label5, &Label6, &Label7, &Label8, &Label11}) {
        place_twips(*line, 240, top, 5400, 270);
        top += 270;
    }
    place_twips(WARNING, 240, top + 120, 5400, 300);
    WARNING.ForeColor = Rgb{192, 0, 0};
    WARNING.font.bold = true;
    place_twips(Done, 6120, Height - 720, 1440, 420);
}

void Form10::Form_Load(Form1& form) {
    if (form.Gated_Treatment) {
        Label_tarrow_dll.Caption = form.tarrow_DLL_firmware;
        Label_tarrow_relay.Caption = form.tarrow_relay_firmware;
        Label_tarrow_control.Caption = form.tarrow_control_firmware;
    } else {
        Frame_gating.Visible = false;
    }
    form.about_visible = true;
    Caption = Label2.Caption = message_text(136);
    Label1.Caption = message_text(137);
    software_version.Caption = message_text(118);
    firmware_version.Caption = message_text(119);
    line_label.Caption = message_text(145);
    battery_label.Caption = message_text(146);
    Label9.Caption = message_text(312);
    Label10.Caption = message_text(313);
    Label12.Caption = message_text(297);
    Label13.Caption = message_text(299);
    Label14.Caption = message_text(298);
    WARNING.Caption = message_text(147);
    Done.Caption = message_text(113);
    const char* contact[] = {"Zelmoor Medical Systems", "Service and support",
                             "service@zelmoor.example", "+1 555 0100", "", ""};
    Control* lines[] = {&Label4, &Label5, &Label6, &Label7, &Label8, &Label11};
    for (int k = 0; k < 6; ++k) lines[k]->Caption = QString::fromLatin1(contact[k]);
    Label3.Caption = form.software_version;
    Label20.Caption = form.zel_version_id;
    const QChar separator = form.platform.locale.decimal_separator();
    line_voltage.Caption = format_single(form.line_level, "###0.00", separator);
    battery_voltage.Caption = format_single(form.battery_level, "###0.00", separator);
    for (Control* value : {&line_voltage, &battery_voltage, &Label_pressure, &Label_vacuum})
        value->BackColor = button_face;
}

void Form10::show_levels(float line, float battery, float pressure, float vacuum, QChar separator) {
    line_voltage.Caption = format_single(line, "###0.00", separator);
    battery_voltage.Caption = format_single(battery, "###0.00", separator);
    Label_pressure.Caption = format_single(pressure, "###0.00", separator);
    Label_vacuum.Caption = format_single(vacuum, "###0.00", separator);
}

void Form10::Done_Click(Form1& form) {
    form.about_visible = false;
    unloaded = true;
}

}  // namespace zel
