#pragma once
// Why a serial port that exists can't be opened by this user, as far as the device's file and
// the port's lock file tell. The driver's own error can't: it names a permission error and a
// port locked by another program alike.
#include <QString>
#include <QStringList>

namespace zel {

struct PortRefusal {
    enum class Kind {
        none,               // nothing the files tell; the port may simply be busy
        join_group,         // the device's group may read and write it: the user can join
        ask_administrator,  // only the owner may: the device's rights must change
        stale_lock,         // a lock file of a program that has ended, this user can't remove
        held_by_program,    // a lock file of a program that runs
    };
    Kind kind = Kind::none;
    QString device{};     // full path
    QString group{};      // join_group
    QString owner{};      // ask_administrator: the device's owner; the locks: the lock's owner
    QString lock_file{};  // stale_lock, held_by_program
    QString program{};    // held_by_program: its name
    qint64 pid = 0;       // the locks: the process number in the lock file

    bool operator==(const PortRefusal&) const = default;
};

// The folders where serial ports' lock files ("LCK..<name>") are kept, in the order they are
// looked in.
QStringList serial_lock_folders();

// Examines `device` for a user who failed to open it. `lock_folders` is where lock files are
// looked for.
PortRefusal examine_port_refusal(const QString& device,
                                 const QStringList& lock_folders = serial_lock_folders());

}  // namespace zel
