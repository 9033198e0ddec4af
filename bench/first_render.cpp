// Times a program from its start to its first complete picture on the screen: the screen is
// grabbed over and over from the moment the program is started, and the picture is complete
// at the last change after which the screen stays the same for the settling time. Every
// program measured this way is measured alike, whatever it draws.
//   zel_first_render [--settle MS] [--timeout S] PROGRAM [ARGUMENTS...]
// Prints "first_render_ms N" and exits 0; exits 1 when nothing was drawn in time.
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QThread>
#include <cstdio>
#include <time.h>

namespace {

double now_ms() {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

QImage grab(QScreen& screen, int width, int height) {
    return screen.grabWindow(0, 0, 0, width, height).toImage();
}

}  // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    double settle_ms = 2000;
    double timeout_ms = 30000;
    int width = 1000, height = 800;
    while (args.size() >= 2 && args.front().startsWith(QLatin1String("--"))) {
        const QString option = args.takeFirst();
        const double value = args.takeFirst().toDouble();
        if (option == QLatin1String("--settle")) settle_ms = value;
        else if (option == QLatin1String("--timeout")) timeout_ms = value * 1000;
        else if (option == QLatin1String("--width")) width = static_cast<int>(value);
        else if (option == QLatin1String("--height")) height = static_cast<int>(value);
    }
    if (args.isEmpty()) {
        std::fprintf(stderr, "usage: zel_first_render [--settle MS] [--timeout S] [--width PIXELS] "
                             "[--height PIXELS] PROGRAM [ARGUMENTS...]\n");
        return 2;
    }
    QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) {
        std::fprintf(stderr, "zel_first_render: no screen\n");
        return 2;
    }
    const QImage empty = grab(*screen, width, height);

    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    const double started = now_ms();
    program.start(args.front(), args.mid(1));
    QImage last = empty;
    double last_change = -1;
    int grabs = 0;
    for (;;) {
        const QImage image = grab(*screen, width, height);
        const double t = now_ms();
        ++grabs;
        if (image != last) {
            last = image;
            last_change = t;
        }
        if (last_change >= 0 && last != empty && t - last_change >= settle_ms) break;
        if (t - started > timeout_ms) {
            std::fprintf(stderr, "zel_first_render: no settled picture within %.0f s\n", timeout_ms / 1000);
            program.kill();
            program.waitForFinished(3000);
            return 1;
        }
        QThread::msleep(10);
    }
    program.terminate();
    if (!program.waitForFinished(3000)) program.kill();
    program.waitForFinished(3000);
    std::printf("first_render_ms %.0f grabs %d\n", last_change - started, grabs);
    return 0;
}
