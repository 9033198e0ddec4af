#pragma once
// The session history window on screen: renders DialogSessionHistory and hands it what the
// operator does. It owns the printer the model draws its page on.
#include <QDialog>
#include <functional>
#include <vector>

#include "history/dialog_session_history.h"
#include "platform/qt_printer.h"

class QTreeWidget;

namespace zel {

class Form1;

class DialogSessionHistoryView final : public QDialog {
public:
    DialogSessionHistoryView(Form1& form, QWidget* parent);
    ~DialogSessionHistoryView() override;

    // The window's load: captions and the list, then the first rendering.
    void load();
    DialogSessionHistory& model() { return history; }
    // Puts the model's state on the widgets; closes the window once the model has unloaded.
    void sync();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    Form1& form;
    QtPrinter printer;
    DialogSessionHistory history;
    QTreeWidget* list = nullptr;
    std::vector<std::pair<Control*, QWidget*>> bound;
    bool loaded = false;  // the layout is recorded at load; sizes before it are the design's

    void run(const char* source, const std::function<void()>& handler);
    void sync_list();
};

}  // namespace zel
