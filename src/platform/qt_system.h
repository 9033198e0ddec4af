#pragma once
// The machine's clock, regional settings and message boxes.
#include <QWidget>

#include "platform/clock.h"
#include "platform/locale.h"
#include "platform/message_box.h"

namespace zel {

class QtClock final : public Clock {
public:
    QDateTime now() const override { return QDateTime::currentDateTime(); }
};

class QtLocale final : public Locale {
public:
    QChar decimal_separator() const override;
    QString long_date(const QDate& date) const override;
    QString medium_date(const QDate& date) const override;
    QString medium_time(const QTime& time) const override;
    QString general_date(const QDateTime& when) const override;
};

class QtMessageBoxes final : public MessageBoxes {
public:
    int MsgBox(const QString& prompt, int style, const QString& title) override;
    QString InputBox(const QString& prompt) override;
    void notice(const QString& text) override;
    QWidget* parent = nullptr;
};

}  // namespace zel
