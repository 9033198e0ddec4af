#include "ui/form11_view.h"

#include <QAbstractButton>
#include <QGroupBox>

#include "app/form1.h"

namespace zel {

Form11View::Form11View(Form1& form_, Form11& model_, QWidget* parent)
    : EntryDialogView(form_, parent), model(model_) {
    Form11& m = model;
    setFixedSize(qRound(m.Width / twips_per_pixel), qRound(m.Height / twips_per_pixel));

    label(m.Label_Title, this);
    QWidget* x_axis = frame(m.Frame1);
    for (Control* option : {&m.Sec_Div_1, &m.Sec_Div_2, &m.Sec_Div_3, &m.Sec_Length_10,
                            &m.Sec_Length_20, &m.Sec_Length_30})
        tick(*option, x_axis, true);
    QWidget* y_axis = frame(m.Frame2);
    label(m.Label1, y_axis);
    field(m.Y_Range_Text, y_axis, true);
    bar(m.Y_Range_Scroll, y_axis);
    label(m.Label_warning, y_axis, true);
    QWidget* language = frame(m.LanguageFrame);
    list(m.LangCombo, language);
    label(m.Label_warningB, language, true);
    QWidget* directory = frame(m.Frame10);
    field(m.Patient_directory_text, directory, false);
    button(m.Change_directory, directory);
    button(m.Done);
    opening_focus = button(m.Cancel);

    sync();
}

void Form11View::reject() {
    if (model.Cancel.Enabled) run("Click", [&] { model.click(model.Cancel); });
}

}  // namespace zel
