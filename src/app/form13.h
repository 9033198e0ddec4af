#pragma once
// The system check window shown at start: the module being searched for and its four tests.
#include "app/control.h"

namespace zel {

struct Form13 {
    Control Label1;
    Control Label_check_01;
    Control Image_connected;
    Control Image_not_connected;
    // Row captions, pass and fail images, result labels: transducer, battery, line, balloon.
    Control Label2, Label3, Label4, Label5;
    Control Image_02_pass, Image_02_fail, Label_check_02;
    Control Image_03_pass, Image_03_fail, Label_check_03;
    Control Image_04_pass, Image_04_fail, Label_check_04;
    Control Image_05_pass, Image_05_fail, Label_check_05;
    Control Command1;

    // The window's load: captions set, all results hidden.
    void Form_Load();
    // A status frame came in: connected, and each test's image and PASS or FAIL.
    void show_status(bool turbine_check, bool battery_check, bool line_check,
                     bool pneumatics_check);
    // The search's tick: row captions and results shown with a status frame, hidden without.
    void show_rows(bool visible);
    void show_connected(bool connected);
};

}  // namespace zel
