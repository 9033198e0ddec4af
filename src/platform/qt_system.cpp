#include "platform/qt_system.h"

#include <QApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>
#include <cstdio>

namespace zel {

QChar QtLocale::decimal_separator() const {
    const QString point = QLocale::system().decimalPoint();
    return point.isEmpty() ? QLatin1Char('.') : point.front();
}

QString QtLocale::long_date(const QDate& date) const {
    return QLocale::system().toString(date, QLocale::LongFormat);
}

QString QtLocale::medium_date(const QDate& date) const {
    return QLocale::system().toString(date, QLocale::ShortFormat);
}

QString QtLocale::medium_time(const QTime& time) const {
    // The short time format, with seconds added where it has none.
    QString format = QLocale::system().timeFormat(QLocale::ShortFormat);
    if (!format.contains(QLatin1Char('s'))) format.replace(QStringLiteral("mm"), QStringLiteral("mm:ss"));
    return QLocale::system().toString(time, format);
}

QString QtLocale::general_date(const QDateTime& when) const {
    // The short date and the time with seconds: two curve files stamped within one minute
    // take names of their own.
    return medium_date(when.date()) + QLatin1Char(' ') + medium_time(when.time());
}

int QtMessageBoxes::MsgBox(const QString& prompt, int style, const QString& title) {
    // What the operator was told stands in the program's output too, for the service engineer
    // who looks into a failure afterwards.
    std::fprintf(stderr, "zelmoor: message: %s\n", qPrintable(QString(prompt).replace(QLatin1Char('\n'), QLatin1Char(' '))));
    QMessageBox box(parent);
    box.setWindowTitle(title.isEmpty() ? QStringLiteral("Zelmoor") : title);
    box.setText(prompt);
    switch (style & 0x70) {
        case vbCritical: box.setIcon(QMessageBox::Critical); break;
        case vbQuestion: box.setIcon(QMessageBox::Question); break;
        case vbExclamation: box.setIcon(QMessageBox::Warning); break;
        case vbInformation: box.setIcon(QMessageBox::Information); break;
        default: break;
    }
    switch (style & 0x0F) {
        case vbOKCancel: box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel); break;
        case vbYesNoCancel:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            break;
        case vbYesNo: box.setStandardButtons(QMessageBox::Yes | QMessageBox::No); break;
        default: box.setStandardButtons(QMessageBox::Ok); break;
    }
    switch (box.exec()) {
        case QMessageBox::Cancel: return vbCancel;
        case QMessageBox::Yes: return vbYes;
        case QMessageBox::No: return vbNo;
        default: return vbOK;
    }
}

void QtMessageBoxes::notice(const QString& text) {
    std::fprintf(stderr, "zelmoor: message: %s\n",
                 qPrintable(QString(text).replace(QLatin1Char('\n'), QLatin1Char(' '))));
    // A modal window up (the system check at start) would block a box of the main window;
    // one of its own is not blocked by it.
    QWidget* owner = QApplication::activeModalWidget();
    auto* box = new QMessageBox(QMessageBox::Warning, QStringLiteral("Zelmoor"), text,
                                QMessageBox::Ok, owner ? owner : parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::NonModal);
    box->show();
}

QString QtMessageBoxes::InputBox(const QString& prompt) {
    bool ok = false;
    const QString text = QInputDialog::getText(parent, QStringLiteral("Zelmoor"), prompt,
                                               QLineEdit::Normal, QString(), &ok);
    return ok ? text : QString();
}

}  // namespace zel
