#pragma once
// The machine's regional settings: the decimal separator and the named date and time formats.
#include <QChar>
#include <QDateTime>
#include <QString>

namespace zel {

class Locale {
public:
    virtual ~Locale() = default;
    virtual QChar decimal_separator() const = 0;
    virtual QString long_date(const QDate& date) const = 0;
    virtual QString medium_date(const QDate& date) const = 0;
    virtual QString medium_time(const QTime& time) const = 0;
    virtual QString general_date(const QDateTime& when) const = 0;
};

}  // namespace zel
