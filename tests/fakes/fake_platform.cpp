#include "fakes/fake_platform.h"

#include <algorithm>

#include "app/zel_error.h"
#include "fakes/scripted.h"

namespace zel::test {

void FakeSerialPort::set_CommPort(int number) {
    if (is_open)
        throw ZelError(err_port_already_open, QStringLiteral("CommPort"),
                       QStringLiteral("Port already open"));
    port_number = number;
}

void FakeSerialPort::set_PortOpen(bool open) {
    if (open == is_open) return;
    if (open) {
        if (port_number < 1 || port_number > port_count)
            throw ZelError(err_invalid_port, QStringLiteral("PortOpen"),
                           QStringLiteral("Invalid port number"));
        last_refusal = {};
        if (const auto d = denied.find(port_number); d != denied.end()) {
            last_refusal = d->second;
            throw ZelError(last_refusal.kind == PortRefusal::Kind::held_by_program
                               ? err_port_already_open
                               : err_permission_denied,
                           QStringLiteral("PortOpen"), d->second.device);
        }
        if (std::find(refusing.begin(), refusing.end(), port_number) != refusing.end())
            throw ZelError(err_port_already_open, QStringLiteral("PortOpen"),
                           QStringLiteral("Port already open"));
    } else {
        inbox.clear();
    }
    is_open = open;
}

bool FakeSerialPort::Output(const QByteArray& bytes) {
    if (!is_open)
        throw ZelError(err_port_not_open, QStringLiteral("Output"),
                       QStringLiteral("Operation valid only when the port is open"));
    if (fail_writes) return false;
    output.append(bytes);
    return true;
}

std::unique_ptr<Timer> FakeTimerFactory::create(const char* name) {
    auto timer = std::make_unique<FakeTimer>();
    by_name[name] = timer.get();
    return timer;
}

QString FakeLocale::long_date(const QDate& d) const { return d.toString(u"dddd, MMMM d, yyyy"); }
QString FakeLocale::medium_date(const QDate& d) const { return d.toString(u"dd-MMM-yy"); }
QString FakeLocale::medium_time(const QTime& t) const { return t.toString(u"HH:mm:ss"); }
QString FakeLocale::general_date(const QDateTime& w) const {
    return w.toString(u"M/d/yyyy HH:mm:ss");
}

int FakeMessageBoxes::MsgBox(const QString& prompt, int style, const QString&) {
    shown.append(prompt);
    styles.push_back(style);
    if (while_shown) while_shown();
    return next_of(answers, int(vbOK));
}

QString FakeMessageBoxes::InputBox(const QString& prompt) {
    prompts.append(prompt);
    return next_of(typed);
}

namespace {
QString colour_text(Rgb c) { return QStringLiteral("%1,%2,%3").arg(c.r).arg(c.g).arg(c.b); }
QString coords(double x1, double y1, double x2, double y2) {
    return QStringLiteral("%1 %2 %3 %4").arg(x1).arg(y1).arg(x2).arg(y2);
}
}  // namespace

void RecordingSurface::set_scale(double x1, double y1, double x2, double y2) {
    log.append(QStringLiteral("scale ") + coords(x1, y1, x2, y2));
}
void RecordingSurface::clear() {
    log.append(QStringLiteral("clear"));
    strokes.clear();
    ++clears;
}
void RecordingSurface::set_line_style(LineStyle s) {
    style = s;
    log.append(s == LineStyle::dotted ? QStringLiteral("style dotted")
                                      : QStringLiteral("style solid"));
}
void RecordingSurface::set_line_width(int pixels) {
    width = pixels;
    log.append(QStringLiteral("width %1").arg(pixels));
}
void RecordingSurface::set_fore_color(Rgb colour) {
    fore = colour;
    log.append(QStringLiteral("fore ") + colour_text(colour));
}
void RecordingSurface::line(double x1, double y1, double x2, double y2) {
    stroke("line", false, x1, y1, x2, y2, fore);
}
void RecordingSurface::line(double x1, double y1, double x2, double y2, Rgb colour) {
    stroke("line", false, x1, y1, x2, y2, colour, true);
}
void RecordingSurface::box(double x1, double y1, double x2, double y2, Rgb colour) {
    stroke("box", true, x1, y1, x2, y2, colour, true);
}
void RecordingSurface::stroke(const char* kind, bool is_box, double x1, double y1, double x2,
                              double y2, Rgb colour, bool coloured) {
    log.append(QString::fromLatin1(kind) + QLatin1Char(' ') + coords(x1, y1, x2, y2) +
               (coloured ? QStringLiteral(" ") + colour_text(colour) : QString()));
    strokes.push_back({is_box, x1, y1, x2, y2, colour, style, width});
}

}  // namespace zel::test
