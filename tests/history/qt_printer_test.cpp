// The printer through Qt, printing to a PDF file as on a machine without a printer: the page
// is a PDF, twips measure as twips, and a document ended without drawing writes nothing.
#include "platform/qt_printer.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "history/history_printout.h"
#include "language/messages.h"

namespace zel::test {
namespace {

TEST(QtPrinter, measures_the_default_font_in_twips) {
    QtPrinter printer;
    // An 8 point line is 160 twips of type and a little more.
    EXPECT_EQ(printer.font_size(), 8);
    EXPECT_GT(printer.text_height(QStringLiteral("X")), 160);
    EXPECT_LT(printer.text_height(QStringLiteral("X")), 240);
    const double date = printer.text_width(QStringLiteral("Date and Time"));
    EXPECT_GT(date, 800);
    EXPECT_LT(date, 1600);
    EXPECT_GT(printer.text_width(QStringLiteral("Date and Time      ")), date + 150);
    // A letter or A4 page, less its margins.
    EXPECT_GT(printer.page_width(), 10000);
    EXPECT_GT(printer.page_height(), 14000);
}

TEST(QtPrinter, the_history_table_fits_the_width_of_an_upright_page) {
    QtPrinter printer;
    for (QPageSize::PageSizeId size : {QPageSize::A4, QPageSize::Letter}) {
        printer.device().setPageSize(QPageSize(size));
        const QString row[] = {"12", "23.11.2026 at 14:17:52", "1.5", "15", "Inhale",
                               "12", "Manual Overide"};
        double right = 1440 + 60 + 60;
        int k = 0;
        for (int heading : {156, 157, 158, 159, 160, 161, 300}) {
            right +=
                std::max(printer.text_width(message_text(heading)), printer.text_width(row[k++])) +
                240;
        }
        EXPECT_LT(right, printer.page_width()) << int(size);
    }
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
