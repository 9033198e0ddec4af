// Writes review curves recorded by the console's own code, for measuring the review window
// against other programs on the same files.
//   zel_make_curves DIR [COUNT]     (COUNT 30-minute curves, 5 if not given)
#include <QCoreApplication>
#include <QDir>
#include <cstdio>

#include "recorded_curves.h"

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: zel_make_curves DIR [COUNT]\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const int count = argc > 2 ? std::atoi(argv[2]) : 5;
    if (count < 1 || !QDir().mkpath(folder)) {
        std::fprintf(stderr, "zel_make_curves: can not write %d curves to %s\n", count, argv[1]);
        return 2;
    }
    const QStringList paths = zel::test::record_review_curves(folder, count);
    if (paths.isEmpty()) {
        std::fprintf(stderr, "zel_make_curves: a recording failed\n");
        return 1;
    }
    for (const QString& path : paths) std::printf("%s\n", qPrintable(path));
    return 0;
}
