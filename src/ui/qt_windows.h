#pragma once
// The program's windows on screen: the main window, the banner, the system check, the
// question dialogs and the key guard.
#include <QDialog>
#include <QPointer>
#include <map>
#include <memory>

#include "platform/windows.h"
#include "ui/key_guard_filter.h"

namespace zel {

class Form1;
class Form1View;

class QtWindows final : public Windows {
public:
    QtWindows(Form1& form, Form1View& main_window);
    ~QtWindows() override;
    void show_modal(Window window) override;
    void show_modeless(Window window) override;
    void unload(Window window) override;
    void show_main_window(bool visible) override;
    int ask(const QString& caption, const QString& question, const QStringList& buttons) override;
    int show_message(Window window, const QString& caption, const QStringList& texts,
                     const QStringList& buttons) override;
    bool install_key_guard() override;
    void remove_key_guard() override;

private:
    Form1& form;
    Form1View& main_window;
    QPointer<QDialog> banner;
    QPointer<QDialog> system_check;
    QPointer<QDialog> new_patient;
    std::map<Window, QPointer<QDialog>> settings;  // the settings dialogs while they stand
    QPointer<QWidget> review;
    std::map<Window, QPointer<QDialog>> messages;
    std::unique_ptr<KeyGuardFilter> key_guard;
};

}  // namespace zel
