#pragma once
// Everything outside the process that the console's logic talks to.
#include "platform/chart_surface.h"
#include "platform/clock.h"
#include "platform/file_dialogs.h"
#include "platform/gating_library.h"
#include "platform/locale.h"
#include "platform/message_box.h"
#include "platform/serial_port.h"
#include "platform/timer.h"
#include "platform/windows.h"

namespace zel {

struct Platform {
    SerialPort& serial;
    TimerFactory& timers;
    Clock& clock;
    Locale& locale;
    MessageBoxes& boxes;
    ChartSurface& chart;
    GatingLibrary& tarrow;
    FileDialogs& dialogs;
    Windows& windows;
};

}  // namespace zel
