#pragma once
// The system's default printer as a page that is drawn on in twips (1440 to the inch), from
// the top left of the printable area, and its printer dialog.
//
// Text is placed at the current position, the top left of its line, and moves it: behind the
// text, or with a line end to the left edge one text height lower. A line or box moves it to
// its second point. Nothing goes out before the first drawing operation, and nothing at all
// when the document is ended without one.
#include <QString>

namespace zel {

class Printer {
public:
    virtual ~Printer() = default;

    // The printer dialog: the operator chooses the printer (or a file) and prints or cancels.
    // False when cancelled.
    virtual bool choose_printer() = 0;

    // The printable area.
    virtual double page_width() const = 0;
    virtual double page_height() const = 0;

    // The font of what is printed next; the printer's own until it is set.
    virtual QString font_name() const = 0;
    virtual double font_size() const = 0;  // points
    virtual void set_font(const QString& name, double size) = 0;

    virtual double CurrentX() const = 0;
    virtual double CurrentY() const = 0;
    virtual void set_CurrentX(double x) = 0;
    virtual void set_CurrentY(double y) = 0;

    // Prints at the current position; `line_end` then goes to the start of the next line.
    virtual void print_text(const QString& text, bool line_end) = 0;
    // In the current font.
    virtual double text_width(const QString& text) const = 0;
    virtual double text_height(const QString& text) const = 0;

    virtual void line(double x1, double y1, double x2, double y2) = 0;
    // A rectangle with these corners, not filled.
    virtual void box(double x1, double y1, double x2, double y2) = 0;

    virtual void new_page() = 0;
    // Sends what was drawn to the printer. What failed and why when the page did not go out
    // whole (a PDF that could not be written: the file of that name stays as it was); empty
    // otherwise.
    virtual QString end_document() = 0;
};

}  // namespace zel
