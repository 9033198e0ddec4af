#include "app/form13.h"

#include "language/messages.h"

namespace zel {

namespace {
struct Row {
    Control Form13::*caption;
    Control Form13::*pass;
    Control Form13::*fail;
    Control Form13::*result;
};
constexpr Row rows[] = {
    {&Form13::Label2, &Form13::Image_02_pass, &Form13::Image_02_fail, &Form13::Label_check_02},
    {&Form13::Label3, &Form13::Image_03_pass, &Form13::Image_03_fail, &Form13::Label_check_03},
    {&Form13::Label4, &Form13::Image_04_pass, &Form13::Image_04_fail, &Form13::Label_check_04},
    {&Form13::Label5, &Form13::Image_05_pass, &Form13::Image_05_fail, &Form13::Label_check_05},
};
}  // namespace

void Form13::Form_Load() {
    Label1.Caption = message_text(141);
    Label_check_01.Caption = message_text(302);
    Label2.Caption = message_text(303);
    Label3.Caption = message_text(304);
    Label4.Caption = message_text(305);
    Label5.Caption = message_text(311);
    Command1.Caption = message_text(249);
    Image_connected.Visible = false;
    Image_not_connected.Visible = false;
    for (const Row& row : rows) {
        (this->*row.caption).Visible = false;
        (this->*row.pass).Visible = false;
        (this->*row.fail).Visible = false;
        (this->*row.result).Visible = false;
    }
}

void Form13::show_connected(bool connected) {
    Image_connected.Visible = connected;
    Image_not_connected.Visible = !connected;
}

void Form13::show_status(bool turbine_check, bool battery_check, bool line_check,
                         bool pneumatics_check) {
    show_connected(true);
    const bool passed[] = {turbine_check, battery_check, line_check, pneumatics_check};
    for (int k = 0; k < 4; ++k) {
        (this->*rows[k].pass).Visible = passed[k];
        (this->*rows[k].fail).Visible = !passed[k];
        (this->*rows[k].result).Caption = message_text(passed[k] ? 307 : 308);
    }
}

void Form13::show_rows(bool visible) {
    for (const Row& row : rows) {
        (this->*row.caption).Visible = visible;
        (this->*row.result).Visible = visible;
        if (!visible) {
            (this->*row.pass).Visible = false;
            (this->*row.fail).Visible = false;
        }
    }
}

}  // namespace zel
