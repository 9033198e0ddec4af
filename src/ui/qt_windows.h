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

// The windows need the model and the model needs the windows: the model reaches them through
// this forwarder, pointed at them once they exist.
struct LateWindows final : Windows {
    Windows* target = nullptr;
    void show_modal(Window w) override { target->show_modal(w); }
    void show_modeless(Window w) override { target->show_modeless(w); }
    void unload(Window w) override { target->unload(w); }
    void show_main_window(bool v) override { target->show_main_window(v); }
    int ask(const QString& c, const QString& q, const QStringList& b) override {
        return target->ask(c, q, b);
    }
    int show_message(Window w, const QString& c, const QStringList& t,
                     const QStringList& b) override {
        return target->show_message(w, c, t, b);
    }
    bool install_key_guard() override { return target->install_key_guard(); }
    void remove_key_guard() override { target->remove_key_guard(); }
};

}  // namespace zel
