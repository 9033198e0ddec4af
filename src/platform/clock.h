#pragma once
#include <QDateTime>

namespace zel {

class Clock {
public:
    virtual ~Clock() = default;
    virtual QDateTime now() const = 0;
};

}  // namespace zel
