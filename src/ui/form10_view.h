#pragma once
// The About box on screen.
#include <QDialog>

namespace zel {

class Form1;
QDialog* make_form10_view(Form1& form, QWidget* parent);

}  // namespace zel
