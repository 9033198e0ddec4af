#include "platform/qt_printer.h"

#include <QDir>
#include <QFile>
#include <QFontMetricsF>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinterInfo>

#include "app/zel_error.h"
#include "data/file_fault.h"
#include "data/whole_file.h"

namespace zel {

namespace {

constexpr int err_printer = 482;
constexpr double twips_per_inch = 1440;

// A PDF is whole when it ends with its trailer and the table it points to stands where the
// trailer says: a write that failed on the way leaves the end or the offset wrong.
bool whole_pdf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() < 32) return false;
    const qint64 size = file.size();
    const qint64 tail_size = std::min<qint64>(size, 64);
    if (!file.seek(size - tail_size)) return false;
    const QByteArray tail = file.read(tail_size).trimmed();
    if (!tail.endsWith("%%EOF")) return false;
    const qsizetype at = tail.lastIndexOf("startxref");
    if (at < 0) return false;
    bool number = false;
    const qint64 table = tail.mid(at + 9, tail.size() - at - 9 - 5).trimmed().toLongLong(&number);
    if (!number || table <= 0 || table >= size || !file.seek(table)) return false;
    return file.read(4) == "xref";
}

}  // namespace

// The printer's own font is 8 points: the seven columns of the history, measured with the
// blanks of their headings, then fit an A4 or letter page upright, which holds a whole course
// of sessions on its one page.
QtPrinter::QtPrinter()
    : printer(QPrinter::HighResolution), font(QStringLiteral("Liberation Sans"), 8) {
    // Without a printer on the machine, the page goes to a PDF file that the dialog names.
    if (QPrinterInfo::availablePrinterNames().isEmpty()) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(QDir::homePath() + QStringLiteral("/session-history.pdf"));
    }
    printer.setDocName(QStringLiteral("ZEL Patient Session History"));
}

QtPrinter::~QtPrinter() {
    if (painter && painter->isActive()) painter->end();
}

bool QtPrinter::choose_printer() {
    QPrintDialog dialog(&printer, parent);
    // One page, always the whole of it.
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
    dialog.setOption(QAbstractPrintDialog::PrintSelection, false);
    return dialog.exec() == QDialog::Accepted;
}

double QtPrinter::device_units(double value) const {
    return value * printer.resolution() / twips_per_inch;
}

double QtPrinter::twips(double value) const {
    return value * twips_per_inch / printer.resolution();
}

double QtPrinter::page_width() const {
    return twips(printer.pageLayout().paintRectPixels(printer.resolution()).width());
}

double QtPrinter::page_height() const {
    return twips(printer.pageLayout().paintRectPixels(printer.resolution()).height());
}

void QtPrinter::set_font(const QString& name, double size) {
    font = QFont(name);
    font.setPointSizeF(size);
}

QPainter& QtPrinter::page() {
    if (!painter) painter = std::make_unique<QPainter>();
    if (!painter->isActive()) {
        if (printer.outputFormat() == QPrinter::PdfFormat && !printer.outputFileName().isEmpty()) {
            pdf_chosen = printer.outputFileName();
            pdf_drawn = temporary_name(pdf_chosen);
            printer.setOutputFileName(pdf_drawn);
        }
        if (!painter->begin(&printer))
            throw ZelError(err_printer, QStringLiteral("Printer"), QStringLiteral("Printer error"));
        // A fine rule, a two-hundredth of an inch: the column rules stand 30 twips before
        // the next column's text.
        QPen pen(Qt::black);
        pen.setWidthF(device_units(7));
        painter->setPen(pen);
        painter->setBrush(Qt::NoBrush);
    }
    return *painter;
}

double QtPrinter::text_width(const QString& text) const {
    return twips(QFontMetricsF(font, &printer).horizontalAdvance(text));
}

double QtPrinter::text_height(const QString&) const {
    return twips(QFontMetricsF(font, &printer).height());
}

void QtPrinter::print_text(const QString& text, bool line_end) {
    QPainter& p = page();
    if (!text.isEmpty()) {
        p.setFont(QFont(font, &printer));
        const double ascent = QFontMetricsF(font, &printer).ascent();
        p.drawText(QPointF(device_units(x), device_units(y) + ascent), text);
    }
    if (line_end) {
        x = 0;
        y += text_height(text);
    } else {
        x += text_width(text);
    }
}

void QtPrinter::line(double x1, double y1, double x2, double y2) {
    page().drawLine(QPointF(device_units(x1), device_units(y1)),
                    QPointF(device_units(x2), device_units(y2)));
    x = x2;
    y = y2;
}

void QtPrinter::box(double x1, double y1, double x2, double y2) {
    page().drawRect(QRectF(QPointF(device_units(x1), device_units(y1)),
                           QPointF(device_units(x2), device_units(y2))));
    x = x2;
    y = y2;
}

void QtPrinter::new_page() {
    if (!printer.newPage())
        throw ZelError(err_printer, QStringLiteral("Printer"), QStringLiteral("Printer error"));
    x = 0;
    y = 0;
}

QString QtPrinter::end_document() {
    if (painter && painter->isActive()) painter->end();
    painter.reset();
    QString failure;
    if (!pdf_drawn.isEmpty()) {
        // A full disk or a failed write leaves the PDF that had the name as it was.
        if (!whole_pdf(pdf_drawn)) {
            failure = pdf_chosen + QStringLiteral(": the PDF was not written whole");
        } else if (const Written written = put_in_place(pdf_drawn, pdf_chosen); !written) {
            failure = file_fault_text(written.error, written.path);
        }
        if (!failure.isEmpty()) QFile::remove(pdf_drawn);
        printer.setOutputFileName(pdf_chosen);
        pdf_drawn.clear();
    }
    x = 0;
    y = 0;
    return failure;
}

}  // namespace zel
