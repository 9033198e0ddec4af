#pragma once
// The program's windows without a display.
//   during(window, f)   runs f while the window is shown, as its event loop would
//   answer(i)           the next question is answered with button i (default: the last)
//   log                 "show Form6", "unload Form13", "ask <question>", "main shown"...
#include <QStringList>
#include <deque>
#include <functional>
#include <map>

#include "platform/windows.h"

namespace zel::test {

class FakeWindows final : public Windows {
public:
    void show_modal(Window window) override;
    void unload(Window window) override;
    void show_main_window(bool visible) override;
    int ask(const QString& caption, const QString& question, const QStringList& buttons) override;
    bool install_key_guard() override;
    void remove_key_guard() override;

    void during(Window window, std::function<void()> f) { scripts[window] = std::move(f); }
    void answer(int button) { answers.push_back(button); }

    QStringList log;
    bool main_visible = true;
    bool key_guard = false;

private:
    std::map<Window, std::function<void()>> scripts;
    std::deque<int> answers;
};

}  // namespace zel::test
