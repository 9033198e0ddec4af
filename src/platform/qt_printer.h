#pragma once
// The default printer through Qt: the print dialog chooses the printer, or a PDF file where
// the machine has none, and a painter draws the page in the printer's own resolution.
#include <QFont>
#include <QPrinter>
#include <QWidget>
#include <memory>

#include "platform/printer.h"

class QPainter;

namespace zel {

class QtPrinter final : public Printer {
public:
    QtPrinter();
    ~QtPrinter() override;

    bool choose_printer() override;
    double page_width() const override;
    double page_height() const override;
    QString font_name() const override { return font.family(); }
    double font_size() const override { return font.pointSizeF(); }
    void set_font(const QString& name, double size) override;
    double CurrentX() const override { return x; }
    double CurrentY() const override { return y; }
    void set_CurrentX(double value) override { x = value; }
    void set_CurrentY(double value) override { y = value; }
    void print_text(const QString& text, bool line_end) override;
    double text_width(const QString& text) const override;
    double text_height(const QString& text) const override;
    void line(double x1, double y1, double x2, double y2) override;
    void box(double x1, double y1, double x2, double y2) override;
    void new_page() override;
    QString end_document() override;

    // The window the dialog belongs to.
    QWidget* parent = nullptr;
    // The device, for its settings (a test prints to a file without the dialog).
    QPrinter& device() { return printer; }

private:
    QPrinter printer;
    QFont font;
    std::unique_ptr<QPainter> painter;
    double x = 0, y = 0;
    // A PDF is drawn into a file beside the one chosen and takes its place only when whole.
    QString pdf_chosen, pdf_drawn;

    QPainter& page();
    double device_units(double twips) const;
    double twips(double device_units) const;
};

}  // namespace zel
