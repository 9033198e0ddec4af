#include "fakes/fake_windows.h"

namespace zel::test {

namespace {
QString name(Window window) {
    return window == Window::Form6 ? QStringLiteral("Form6") : QStringLiteral("Form13");
}
}  // namespace

void FakeWindows::show_modal(Window window) {
    log.append(QStringLiteral("show ") + name(window));
    if (auto script = scripts.find(window); script != scripts.end()) script->second();
}

void FakeWindows::unload(Window window) { log.append(QStringLiteral("unload ") + name(window)); }

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
