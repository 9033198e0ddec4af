#include "platform/scheduling.h"

#include <sched.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstring>

namespace zel {

QString raise_scheduling_priority() {
    // Low within the real-time range: above every ordinary program, below the kernel's own
    // real-time threads. Round-robin rather than first-in-first-out, and the console only ever
    // waits on events, so it can't hold a core for long.
    sched_param param{};
    param.sched_priority = 10;
    if (sched_setscheduler(0, SCHED_RR | SCHED_RESET_ON_FORK, &param) == 0)
        return QStringLiteral("real-time scheduling (round-robin, priority 10)");
    const int rt_error = errno;
    if (setpriority(PRIO_PROCESS, 0, -20) == 0)
        return QStringLiteral("no real-time scheduling (%1); ordinary scheduling at nice -20")
            .arg(QString::fromLocal8Bit(std::strerror(rt_error)));
    const int nice_error = errno;
    return QStringLiteral(
               "ordinary scheduling: neither real-time (%1) nor a raised priority (%2) is allowed "
               "for this user; the beam may stop later when other programs keep the cores busy")
        .arg(QString::fromLocal8Bit(std::strerror(rt_error)),
             QString::fromLocal8Bit(std::strerror(nice_error)));
}

}  // namespace zel
