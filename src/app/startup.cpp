// Program start.
#include "app/form1.h"
#include "language/messages.h"

namespace zel {

void Form1::Form_Load() {
    // Chart and the labels around it; the window's full layout places them exactly.
    Pic.Left = 120;
    Pic.Top = 120;
    Pic.Width = 870 * twips_per_pixel;
    Pic.Height = 499 * twips_per_pixel;
    thresh_label.Left = Pic.Left + Pic.Width + 60;
    thresh_label.Width = 900;
    thresh_label.Height = 285;
    elapsed_label.Left = 120;
    elapsed_label.Top = Pic.Top + Pic.Height + 120;
    elapsed_label.Width = 3000;
    elapsed_label.Height = 400;
    elapsed_label.font.size = 14;
    volume_label.Left = 3300;
    volume_label.Top = elapsed_label.Top;
    volume_label.Width = 4000;
    volume_label.Height = 400;
    volume_label.font.size = 14;
    countdown2.Left = 7500;
    countdown2.Top = elapsed_label.Top;
    countdown2.Width = 1500;
    countdown2.Height = 900;
    countdown2.BackColor = Rgb{192, 192, 192};
    countdown2.font.size = 36;
    countdown2.font.bold = true;
    Label2.Left = 120;
    Label2.Top = elapsed_label.Top + 1000;
    Label2.Width = 13000;
    Label2.Height = 900;
    Label2.font.size = 14;
    draw_chart();

    // Until the search for the module exists: the first port, streaming at once.
    platform.serial.set_CommPort(1);
    platform.serial.set_PortOpen(true);
    send_command("E");
}

}  // namespace zel
