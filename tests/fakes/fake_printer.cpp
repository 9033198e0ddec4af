#include "fakes/fake_printer.h"

#include <QStringList>

#include "app/zel_error.h"

namespace zel::test {

namespace {
FakePrinter::Op op(const char* kind, double x = 0, double y = 0, double x2 = 0, double y2 = 0) {
    return {QString::fromLatin1(kind), x, y, x2, y2, {}, false};
}
}  // namespace

bool FakePrinter::choose_printer() {
    ops.push_back(op("dialog"));
    return !cancel;
}

void FakePrinter::set_font(const QString& font, double points) {
    name = font;
    size = points;
}

void FakePrinter::drawing() {
    if (++drawn == failing)
        throw ZelError(482, QStringLiteral("Printer"), QStringLiteral("Printer error"));
}

void FakePrinter::print_text(const QString& text, bool line_end) {
    drawing();
    ops.push_back({QStringLiteral("text"), x, y, 0, 0, text, line_end});
    if (line_end) {
        x = 0;
        y += line_height;
    } else {
        x += text_width(text);
    }
}

void FakePrinter::line(double x1, double y1, double x2, double y2) { draw("line", x1, y1, x2, y2); }
void FakePrinter::box(double x1, double y1, double x2, double y2) { draw("box", x1, y1, x2, y2); }

void FakePrinter::draw(const char* kind, double x1, double y1, double x2, double y2) {
    drawing();
    ops.push_back(op(kind, x1, y1, x2, y2));
    x = x2;
    y = y2;
}

void FakePrinter::new_page() { ops.push_back(op("new page")); }

QString FakePrinter::end_document() {
    ops.push_back(op("end"));
    x = 0;
    y = 0;
    return {};
}

QStringList FakePrinter::kinds() const {
    QStringList out;
    for (const Op& op : ops) out.append(op.kind);
    return out;
}

}  // namespace zel::test
