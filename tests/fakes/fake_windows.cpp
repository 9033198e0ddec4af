#include "fakes/fake_windows.h"

namespace zel::test {

namespace {
QString name(Window window) {
    switch (window) {
        case Window::Form6: return QStringLiteral("Form6");
        case Window::Form13: return QStringLiteral("Form13");
        case Window::Form_OverRide_Enable: return QStringLiteral("Form_OverRide_Enable");
        case Window::Form_OverRide_Disable: return QStringLiteral("Form_OverRide_Disable");
        case Window::Form_FastGatingClear: return QStringLiteral("Form_FastGatingClear");
        case Window::Form5: return QStringLiteral("Form5");
        case Window::Form_CorruptInfo: return QStringLiteral("Form_CorruptInfo");
        case Window::Form_WrongVersion: return QStringLiteral("Form_WrongVersion");
        case Window::Form_NumberFormatWarning: return QStringLiteral("Form_NumberFormatWarning");
        case Window::PatientCurves: return QStringLiteral("PatientCurves");
        case Window::Form10: return QStringLiteral("Form10");
        case Window::Form_Gating: return QStringLiteral("Form_Gating");
        case Window::Form12: return QStringLiteral("Form12");
        case Window::Form11: return QStringLiteral("Form11");
        case Window::DialogSessionHistory: return QStringLiteral("DialogSessionHistory");
    }
    return QStringLiteral("?");
}
}  // namespace

void FakeWindows::show_modal(Window window) {
    log.append(QStringLiteral("show ") + name(window));
    if (auto script = scripts.find(window); script != scripts.end()) script->second();
}

void FakeWindows::show_modeless(Window window) {
    log.append(QStringLiteral("show modeless ") + name(window));
    if (auto script = scripts.find(window); script != scripts.end()) script->second();
}

void FakeWindows::unload(Window window) {
    log.append(QStringLiteral("unload ") + name(window));
    unloaded[window] = true;
}

int FakeWindows::show_message(Window window, const QString&, const QStringList& texts,
                              const QStringList& buttons) {
    log.append(QStringLiteral("show ") + name(window));
    message_texts.push_back(texts);
    message_buttons.push_back(buttons);
    open.push_back(window);
    unloaded[window] = false;
    if (auto script = scripts.find(window); script != scripts.end()) script->second();
    open.pop_back();
    if (unloaded[window]) return -1;
    std::deque<int>& queue = presses[window];
    if (queue.empty()) return 0;
    const int button = queue.front();
    queue.pop_front();
    return button;
}

void FakeWindows::show_main_window(bool visible) {
    main_visible = visible;
    log.append(visible ? QStringLiteral("main shown") : QStringLiteral("main hidden"));
}

int FakeWindows::ask(const QString&, const QString& question, const QStringList& buttons) {
    log.append(QStringLiteral("ask ") + question);
    if (answers.empty()) return static_cast<int>(buttons.size()) - 1;
    const int button = answers.front();
    answers.pop_front();
    return button;
}

bool FakeWindows::install_key_guard() {
    key_guard = true;
    log.append(QStringLiteral("key guard on"));
    return true;
}

void FakeWindows::remove_key_guard() {
    key_guard = false;
    log.append(QStringLiteral("key guard off"));
}

}  // namespace zel::test
