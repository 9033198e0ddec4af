// The printer through Qt, printing to a PDF file as on a machine without a printer: the page
// is a PDF, twips measure as twips, and a document ended without drawing writes nothing.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "history/history_printout.h"
#include "platform/qt_printer.h"

namespace zel::test {
namespace {

TEST(QtPrinter, measures_the_default_font_in_twips) {
    QtPrinter printer;
    // A 10 point line is 200 twips of type and a little leading.
    EXPECT_EQ(printer.font_size(), 10);
    EXPECT_GT(printer.text_height(QStringLiteral("X")), 200);
    EXPECT_LT(printer.text_height(QStringLiteral("X")), 300);
    const double date = printer.text_width(QStringLiteral("Date and Time"));
    EXPECT_GT(date, 1000);
    EXPECT_LT(date, 2000);
    EXPECT_GT(printer.text_width(QStringLiteral("Date and Time      ")), date + 200);
    // A letter or A4 page, less its margins.
    EXPECT_GT(printer.page_width(), 10000);
    EXPECT_GT(printer.page_height(), 14000);
}

TEST(QtPrinter, draws_the_history_page_into_a_pdf_file) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("history.pdf"));
    QtPrinter printer;
    printer.device().setOutputFormat(QPrinter::PdfFormat);
    printer.device().setOutputFileName(path);

    printer.end_document();
    EXPECT_FALSE(QFile::exists(path)) << "a document without a page went out";

    ReportListView list;
    list.add_item(1, QStringLiteral("1"));
    list.add_sub_item(1, 1, QStringLiteral("04.03.26 at 09:05:07"));
    list.add_column(1, QStringLiteral("Session"));
    list.add_column(2, QStringLiteral("Date and Time      "), 2400);
    printer.set_CurrentX(1440);
    printer.set_CurrentY(1440);
    draw_session_list(printer,
                      {QStringLiteral("ZEL Patient Session History (04.03.26 09:05:07)"),
                       QStringLiteral("Name: Doe, Jane"), QStringLiteral("Medical ID: A1")},
                      list);
    // The last column rule leaves the position at its foot.
    EXPECT_GT(printer.CurrentY(), 1440 + 900);
    printer.end_document();

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray pdf = file.readAll();
    EXPECT_TRUE(pdf.startsWith("%PDF-")) << pdf.left(16).toStdString();
    EXPECT_GT(pdf.size(), 1000);
}

}  // namespace
}  // namespace zel::test
