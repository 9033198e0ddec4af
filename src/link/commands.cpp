// Commands to the control module: one ASCII letter each, parameters as raw bytes.
#include "app/form1.h"

namespace zel {

void Form1::send_command(const char* letters) { platform.serial.Output(QByteArray(letters)); }

}  // namespace zel
