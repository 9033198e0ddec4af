// The small question dialogs of the patient workflow: each modal under the console's caption,
// each closed by any of its buttons.
#include "app/form1.h"
#include "language/messages.h"

namespace zel {

void Form1::show_Form3() {
    switch (platform.windows.ask(message_text(108), message_text(123),
                                 {message_text(310), message_text(309), message_text(114)})) {
        case 0: load_existing_patient_Click(); break;
        case 1: create_new_patient_Click(); break;
        default: break;
    }
}

void Form1::show_Form8() {
    const int answer = platform.windows.ask(
        message_text(108), message_text(120),
        {message_text(290), message_text(291), message_text(114)});
    save_session_response = answer == 0 ? vbYes : answer == 1 ? vbNo : vbCancel;
}

void Form1::show_Form2() {
    if (platform.windows.ask(message_text(108), message_text(202),
                             {message_text(290), message_text(291)}) == 0)
        cmdRecord_Click();
}

void Form1::show_Form9() {
    if (platform.windows.ask(message_text(108), message_text(139),
                             {message_text(290), message_text(114)}) == 0)
        save_ini_file();
}

void Form1::show_Form_ConfirmCancel() {
    confirm_cancel = platform.windows.ask(message_text(108), message_text(353),
                                          {message_text(290), message_text(291)}) == 0;
}

}  // namespace zel
