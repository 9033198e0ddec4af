#include "app/command_line.h"

#include "app/release.h"

namespace zel {

namespace {

const char usage_lines[] =
    "Usage: zelmoor\n"
    "  or:  zelmoor --review [FILE]...\n"
    "  or:  zelmoor --check FOLDER\n"
    "  or:  zelmoor --stats [--csv] FILE|FOLDER...\n";

bool is_option(const QString& arg) { return arg.startsWith(QLatin1Char('-')) && arg.size() > 1; }

CommandLine usage_error(const QString& error) {
    CommandLine line;
    line.mode = CommandLine::Mode::usage_error;
    line.error = error;
    return line;
}

}  // namespace

CommandLine parse_command_line(const QStringList& args) {
    CommandLine line;
    for (const QString& arg : args) {
        if (arg == QLatin1String("--")) break;
        if (arg == QLatin1String("--help") || arg == QLatin1String("-h")) {
            line.mode = CommandLine::Mode::help;
            return line;
        }
        if (arg == QLatin1String("--version") || arg == QLatin1String("-V")) {
            line.mode = CommandLine::Mode::version;
            return line;
        }
    }
    if (args.isEmpty()) return line;
    const QString& first = args.front();
    QStringList rest = args.mid(1);
    if (first == QLatin1String("--review")) {
        line.mode = CommandLine::Mode::review;
        bool only_files = false;  // behind "--" a name may begin with "-"
        for (const QString& arg : rest) {
            if (!only_files && arg == QLatin1String("--")) {
                only_files = true;
            } else if (!only_files && is_option(arg)) {
                return usage_error(QStringLiteral("unrecognized option '%1'").arg(arg));
            } else {
                line.files.append(arg);
            }
        }
        return line;
    }
    if (first == QLatin1String("--check") || first.startsWith(QLatin1String("--check="))) {
        if (first != QLatin1String("--check")) rest.prepend(first.mid(8));
        if (rest.isEmpty()) return usage_error(QStringLiteral("option '--check' needs a FOLDER"));
        if (rest.size() > 1)
            return usage_error(QStringLiteral("extra operand '%1'").arg(rest.at(1)));
        if (is_option(rest.front()))
            return usage_error(QStringLiteral("unrecognized option '%1'").arg(rest.front()));
        line.mode = CommandLine::Mode::check;
        line.folder = rest.front();
        return line;
    }
    if (first == QLatin1String("--stats")) {
        line.mode = CommandLine::Mode::stats;
        bool only_names = false;  // behind "--" a name may begin with "-"
        for (const QString& arg : rest) {
            if (!only_names && arg == QLatin1String("--")) {
                only_names = true;
            } else if (!only_names && arg == QLatin1String("--csv")) {
                line.csv = true;
            } else if (!only_names && is_option(arg)) {
                return usage_error(QStringLiteral("unrecognized option '%1'").arg(arg));
            } else {
                line.files.append(arg);
            }
        }
        if (line.files.isEmpty())
            return usage_error(QStringLiteral("option '--stats' needs a FILE or a FOLDER"));
        return line;
    }
    if (is_option(first)) return usage_error(QStringLiteral("unrecognized option '%1'").arg(first));
    return usage_error(QStringLiteral("extra operand '%1'").arg(first));
}

QString console_help_text() {
    return QString::fromLatin1(usage_lines) +
           QStringLiteral(
               "The operator's console of the Zelmoor breath-hold device. Without options it\n"
               "starts the console, which searches the serial ports for the control module.\n"
               "\n"
               "Options:\n"
               "      --review [FILE]...  open the curve review alone on the recorded curve\n"
               "                          files: no main window, no link, no patient\n"
               "      --check FOLDER      read every patient folder under FOLDER as a load\n"
               "                          would, change nothing, print one line per patient\n"
               "                          and a summary; exit 0 when every patient, session\n"
               "                          history and curve file reads, 1 otherwise\n"
               "      --stats [--csv] FILE|FOLDER...\n"
               "                          breath-hold statistics of curve files: each hold's\n"
               "                          length, mean, spread, drift and distance from the\n"
               "                          threshold, a summary per curve; of a patient's\n"
               "                          FOLDER every curve file, a summary per session and\n"
               "                          the spread between sessions; as aligned text, or\n"
               "                          CSV with --csv; exit 0, 1 when a file can't be read\n"
               "                          (the others are still printed)\n"
               "  -h, --help              display this help and exit\n"
               "  -V, --version           output version information and exit\n"
               "\n"
               "Settings and logs are kept in ~/.local/share/zelmoor. See zelmoor(1).\n");
}

QString console_usage_text() {
    return QString::fromLatin1(usage_lines) +
           QStringLiteral("Try 'zelmoor --help' for more information.\n");
}

QString console_version_text(const QString& package_version) {
    return QStringLiteral("zelmoor %1\nSoftware version of the patient files: %2\n")
        .arg(package_version, release::software_version());
}

}  // namespace zel
