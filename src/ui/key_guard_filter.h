#pragma once
// Application-wide key filter: brings the spacebar to the main window's handler from any of
// the program's windows, and swallows the keys that would switch away from the console.
#include <QObject>

namespace zel {

class Form1;

class KeyGuardFilter final : public QObject {
public:
    explicit KeyGuardFilter(Form1& form);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Form1& form;
};

}  // namespace zel
