#pragma once
// The About box, and the control module's service panel while it is open: supply voltages and
// reservoir pressures as the status frames bring them, and the versions of each part.
#include <QString>

#include "app/control.h"

namespace zel {

class Form1;

struct Form10 {
    QString Caption;
    double Width = 0, Height = 0;
    Control Label1, Label2;  // the notice, the title
    Control software_version, Label3, firmware_version, Label20;  // captions, then values
    Control line_label, line_voltage, battery_label, battery_voltage;
    Control Label9, Label_pressure, Label10, Label_vacuum;
    Control Frame_gating;
    Control Label12, Label_tarrow_dll, Label13, Label_tarrow_control, Label14, Label_tarrow_relay;
    Control Label4, Label5, Label6, Label7, Label8, Label11;  // the maker's contact lines
    Control WARNING;
    Control Done;
    bool unloaded = false;

    Form10();
    void Form_Load(Form1& form);
    // A status frame's levels, each "###0.00".
    void show_levels(float line, float battery, float pressure, float vacuum, QChar separator);
    void Done_Click(Form1& form);
};

}  // namespace zel
