#include "app/form1.h"

namespace zel {

void Form1::mnuSessionHistory_Click() {
    // Reading the history disturbs nothing: it opens at any balloon state, and the frames go on
    // being handled underneath it.
    platform.windows.show_modal(Window::DialogSessionHistory);
}

}  // namespace zel
