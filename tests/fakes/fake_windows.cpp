#include "fakes/fake_windows.h"

#include "fakes/scripted.h"

namespace zel::test {

namespace {
QString name(Window window) {
    static const char* const names[] = {
        "Form6", "Form13", "Form_OverRide_Enable", "Form_OverRide_Disable",
        "Form_FastGatingClear", "Form5", "Form_CorruptInfo", "Form_WrongVersion",
        "Form_NumberFormatWarning", "PatientCurves", "Form10", "Form_Gating", "Form12", "Form11",
        "DialogSessionHistory"};
    return QString::fromLatin1(names[static_cast<int>(window)]);
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

int FakeWindows::show_message(Window window, const QString& caption, const QStringList& texts,
                              const QStringList& buttons) {
    log.append(QStringLiteral("show ") + name(window));
    message_captions.append(caption);
    message_texts.push_back(texts);
    message_buttons.push_back(buttons);
    unloaded[window] = false;
    if (auto script = scripts.find(window); script != scripts.end()) script->second();
    if (unloaded[window]) return -1;
    return next_of(presses[window]);
}

void FakeWindows::show_main_window(bool visible) {
    main_visible = visible;
    log.append(visible ? QStringLiteral("main shown") : QStringLiteral("main hidden"));
}

int FakeWindows::ask(const QString&, const QString& question, const QStringList& buttons) {
    log.append(QStringLiteral("ask ") + question);
    return next_of(answers, static_cast<int>(buttons.size()) - 1);
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
