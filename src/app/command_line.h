#pragma once
// The console's command line: no option starts the console; the others are for an office
// machine or the service engineer, and none of them starts the console.
#include <QString>
#include <QStringList>

namespace zel {

struct CommandLine {
    enum class Mode { console, review, check, stats, help, version, usage_error };
    Mode mode = Mode::console;
    QStringList files;  // --review; --stats: its files and folders
    QString folder;     // --check
    bool csv = false;   // --stats --csv
    QString error;      // usage_error: what was wrong, without the program's name
};

// `args` without the program's name. --help and --version win wherever they stand, as in the
// usual tools; an unknown option or a stray operand is a usage error.
CommandLine parse_command_line(const QStringList& args);

// "Usage: zelmoor ..." and the options, for --help on standard output.
QString console_help_text();
// The usage lines alone and the hint to --help, for a usage error on standard error.
QString console_usage_text();
// The package's version and the software version that patient files carry.
QString console_version_text(const QString& package_version);

}  // namespace zel
