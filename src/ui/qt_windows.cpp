#include "ui/qt_windows.h"

#include <QApplication>
#include <QKeyEvent>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <cstdio>

#include "app/form1.h"
#include "ui/control_widgets.h"
#include "ui/form10_view.h"
#include "ui/dialog_session_history_view.h"
#include "ui/form13_view.h"
#include "ui/form11_view.h"
#include "ui/form12_view.h"
#include "ui/form1_view.h"
#include "ui/form5_view.h"
#include "ui/form_gating_view.h"
#include "ui/patient_curves_view.h"

namespace zel {

namespace {

// The start-up banner: its one picture, no frame; the banner timer closes it.
class Form6View final : public QDialog {
public:
    explicit Form6View(QWidget* parent) : QDialog(parent, Qt::SplashScreen | Qt::FramelessWindowHint) {
        auto* picture = new QLabel(this);
        picture->setPixmap(product_image(QStringLiteral("banner")));
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(picture);
        setFixedSize(picture->pixmap().isNull() ? QSize(480, 270) : picture->pixmap().size());
    }

protected:
    void reject() override {}
};

}  // namespace

QtWindows::QtWindows(Form1& form_, Form1View& main_window_)
    : form(form_), main_window(main_window_) {}

QtWindows::~QtWindows() { remove_key_guard(); }

void QtWindows::show_modal(Window window) {
    if (window == Window::Form10 || window == Window::Form_Gating) {
        QWidget* parent = main_window.isVisible() ? &main_window : nullptr;
        QDialog* view = window == Window::Form10 ? make_form10_view(form, parent)
                                                 : make_form_gating_view(form, parent);
        view->setAttribute(Qt::WA_DeleteOnClose);
        view->exec();
        return;
    }
    if (window == Window::Form5) {
        if (!form.form5) return;
        new_patient =
            new Form5View(form, *form.form5, main_window.isVisible() ? &main_window : nullptr);
        new_patient->setAttribute(Qt::WA_DeleteOnClose);
        new_patient->exec();
        return;
    }
    if (window == Window::Form12 || window == Window::Form11) {
        QWidget* parent = main_window.isVisible() ? &main_window : nullptr;
        QPointer<QDialog>& dialog = settings[window];
        if (window == Window::Form12 && form.form12)
            dialog = new Form12View(form, *form.form12, parent);
        else if (window == Window::Form11 && form.form11)
            dialog = new Form11View(form, *form.form11, parent);
        else
            return;
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->exec();
        return;
    }
    if (window == Window::DialogSessionHistory) {
        DialogSessionHistoryView history(form, main_window.isVisible() ? &main_window : nullptr);
        history.load();
        if (!history.model().unloaded) history.exec();
        return;
    }
    QPointer<QDialog>& slot = window == Window::Form6 ? banner : system_check;
    if (window == Window::Form6)
        slot = new Form6View(main_window.isVisible() ? &main_window : nullptr);
    else
        slot = new Form13View(form, main_window.isVisible() ? &main_window : nullptr);
    slot->setAttribute(Qt::WA_DeleteOnClose);
    slot->exec();
}

void QtWindows::show_modeless(Window window) {
    if (window != Window::PatientCurves) return;
    if (!review) {
        auto* view = new PatientCurvesView(form.data_directory, form.platform.locale,
                                           [this](const char* source, const std::function<void()>& f) {
                                               form.run_event(source, f);
                                           });
        review = view;
        // The session's curve file, recorded or paused, is never the target of an export.
        view->model().files_being_written = [this] {
            return form.record_file_created ? QStringList{form.record_filename} : QStringList();
        };
        view->setAttribute(Qt::WA_DeleteOnClose);
        view->load();
    }
    if (!review) return;
    review->show();
    review->raise();
    review->activateWindow();
}

void QtWindows::unload(Window window) {
    if (window == Window::Form5) {
        if (new_patient) new_patient->done(QDialog::Accepted);
        return;
    }
    if (auto open = settings.find(window); open != settings.end()) {
        if (open->second) open->second->done(QDialog::Accepted);
        return;
    }
    if (window != Window::Form6 && window != Window::Form13) {
        if (auto open = messages.find(window); open != messages.end() && open->second)
            open->second->done(QDialog::Rejected);
        return;
    }
    QPointer<QDialog>& slot = window == Window::Form6 ? banner : system_check;
    if (slot) slot->done(QDialog::Accepted);
}

int QtWindows::show_message(Window window, const QString& caption, const QStringList& texts,
                            const QStringList& buttons) {
    // As a message box's text, what the operator was told stands in the program's output too.
    std::fprintf(stderr, "zelmoor: message: %s\n", qPrintable(texts.join(QLatin1Char(' '))));
    QDialog dialog(main_window.isVisible() ? &main_window : nullptr);
    dialog.setWindowTitle(caption);
    // Only a button or the console closes it: the operator must answer.
    dialog.setWindowFlag(Qt::WindowCloseButtonHint, false);
    auto* layout = new QVBoxLayout(&dialog);
    for (const QString& line : texts) {
        auto* text = new QLabel(line, &dialog);
        text->setWordWrap(true);
        text->setFont(QFont(QStringLiteral("Liberation Sans"), 10, QFont::Bold));
        layout->addWidget(text);
    }
    auto* box = new QDialogButtonBox(&dialog);
    int pressed = -1;
    for (int k = 0; k < buttons.size(); ++k) {
        QPushButton* button = box->addButton(buttons[k], QDialogButtonBox::ActionRole);
        // Return presses the button that has the focus (Tab moves it); none is pressed by a
        // Return typed while no button has it. The spacebar is the patient's key.
        button->setAutoDefault(true);
        QObject::connect(button, &QPushButton::clicked, &dialog, [&dialog, &pressed, k] {
            pressed = k;
            dialog.accept();
        });
    }
    layout->addWidget(box);
    dialog.setMinimumWidth(480);
    messages[window] = &dialog;
    // Escape would close it without an answer.
    struct NoEscape final : QObject {
        bool eventFilter(QObject*, QEvent* e) override {
            return e->type() == QEvent::KeyPress &&
                   static_cast<QKeyEvent*>(e)->key() == Qt::Key_Escape;
        }
    } no_escape;
    dialog.installEventFilter(&no_escape);
    dialog.exec();
    messages.erase(window);
    return pressed;
}

void QtWindows::show_main_window(bool visible) { main_window.setVisible(visible); }

int QtWindows::ask(const QString& caption, const QString& question, const QStringList& buttons) {
    QDialog dialog(main_window.isVisible() ? &main_window : nullptr);
    dialog.setWindowTitle(caption);
    auto* layout = new QVBoxLayout(&dialog);
    auto* text = new QLabel(question, &dialog);
    text->setWordWrap(true);
    text->setFont(QFont(QStringLiteral("Liberation Sans"), 10));
    layout->addWidget(text);
    auto* box = new QDialogButtonBox(&dialog);
    int pressed = static_cast<int>(buttons.size()) - 1;
    for (int k = 0; k < buttons.size(); ++k) {
        QPushButton* button = box->addButton(buttons[k], QDialogButtonBox::ActionRole);
        // Return presses the button that has the focus (Tab moves it); none is pressed by a
        // Return typed while no button has it. The spacebar is the patient's key.
        button->setAutoDefault(true);
        QObject::connect(button, &QPushButton::clicked, &dialog, [&dialog, &pressed, k] {
            pressed = k;
            dialog.accept();
        });
    }
    layout->addWidget(box);
    dialog.setMinimumWidth(420);
    dialog.exec();
    return pressed;
}

bool QtWindows::install_key_guard() {
    if (!key_guard) {
        key_guard = std::make_unique<KeyGuardFilter>(form);
        qApp->installEventFilter(key_guard.get());
    }
    return true;
}

void QtWindows::remove_key_guard() {
    if (key_guard) {
        qApp->removeEventFilter(key_guard.get());
        key_guard.reset();
    }
}

}  // namespace zel
