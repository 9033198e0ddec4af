#pragma once
// The program's windows without a display.
//   during(window, f)   runs f while the window is shown, as its event loop would
//   answer(i)           the next question is answered with button i (default: the last)
//   press(window, i)    the next showing of that message window ends with button i (default:
//                       the first; -1 when the console unloads it while it is shown)
//   log                 "show Form6", "unload Form13", "ask <question>", "main shown"...
#include <QStringList>
#include <deque>
#include <functional>
#include <map>
#include <vector>

#include "platform/windows.h"

namespace zel::test {

class FakeWindows final : public Windows {
public:
    void show_modal(Window window) override;
    void show_modeless(Window window) override;
    void unload(Window window) override;
    void show_main_window(bool visible) override;
    int ask(const QString& caption, const QString& question, const QStringList& buttons) override;
    int show_message(Window window, const QString& caption, const QStringList& texts,
                     const QStringList& buttons) override;
    bool install_key_guard() override;
    void remove_key_guard() override;

    void during(Window window, std::function<void()> f) { scripts[window] = std::move(f); }
    void answer(int button) { answers.push_back(button); }
    void press(Window window, int button) { presses[window].push_back(button); }
    // The texts and the buttons of every message window shown, in order.
    QStringList message_captions;
    std::vector<QStringList> message_texts;
    std::vector<QStringList> message_buttons;

    QStringList log;
    bool main_visible = true;
    bool key_guard = false;

private:
    std::map<Window, std::function<void()>> scripts;
    std::deque<int> answers;
    std::map<Window, std::deque<int>> presses;
    std::map<Window, bool> unloaded;
};

}  // namespace zel::test
