#pragma once
// The gating system's service view on screen.
#include <QDialog>

namespace zel {

class Form1;
QDialog* make_form_gating_view(Form1& form, QWidget* parent);

}  // namespace zel
