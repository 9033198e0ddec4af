#pragma once
// A printer without paper, for tests: every operation is kept with its coordinates.
//   ops                 "dialog", "text", "line", "box", "new page", "end", in order
//   cancel              the printer dialog is cancelled
//   fail_at(n)          the n-th drawing operation (text, line or box) fails, as a printer
//                       that goes away in the middle of a page
// Text measures `char_width` twips a character, blanks included, and `line_height` high.
#include <QString>
#include <QStringList>
#include <vector>

#include "platform/printer.h"

namespace zel::test {

class FakePrinter final : public Printer {
public:
    struct Op {
        QString kind;
        double x = 0, y = 0;    // text: its position; line and box: the first point
        double x2 = 0, y2 = 0;  // line and box: the second point
        QString text;
        bool line_end = false;
    };

    bool choose_printer() override;
    double page_width() const override { return 11520; }   // letter, half-inch margins
    double page_height() const override { return 14400; }
    QString font_name() const override { return name; }
    double font_size() const override { return size; }
    void set_font(const QString& font, double points) override;
    double CurrentX() const override { return x; }
    double CurrentY() const override { return y; }
    void set_CurrentX(double value) override { x = value; }
    void set_CurrentY(double value) override { y = value; }
    void print_text(const QString& text, bool line_end) override;
    double text_width(const QString& text) const override { return char_width * text.size(); }
    double text_height(const QString&) const override { return line_height; }
    void line(double x1, double y1, double x2, double y2) override;
    void box(double x1, double y1, double x2, double y2) override;
    void new_page() override;
    QString end_document() override;

    void fail_at(int n) { failing = n; }
    QStringList kinds() const;

    std::vector<Op> ops;
    bool cancel = false;
    double char_width = 100;
    double line_height = 240;

private:
    QString name = QStringLiteral("Fake Sans");
    double size = 10;
    double x = 0, y = 0;
    int drawn = 0;
    int failing = 0;
    void drawing();
    void draw(const char* kind, double x1, double y1, double x2, double y2);
};

}  // namespace zel::test
