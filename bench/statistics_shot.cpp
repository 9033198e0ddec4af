// The review's breath-hold statistics on screen: three sessions recorded by the console's own
// recording code (ten minutes each, holds that sag and differ from session to session), opened
// in the review window, the statistics window opened from its File menu and saved as
// DIR/statistics.png and, its table scrolled to the end, DIR/statistics-end.png, next to
// DIR/review.png of the review itself.
//   zel_statistics_shot DIR [CURVE_FILE...]     (QT_QPA_PLATFORM=offscreen without a display)
#include <QApplication>
#include <QDir>
#include <QMenuBar>
#include <QTableWidget>
#include <QTest>
#include <cstdio>

#include "fakes/fake_platform.h"
#include "language/messages.h"
#include "recorded_curves.h"
#include "ui/breath_hold_statistics_view.h"
#include "ui/patient_curves_view.h"

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    zel::load_default_messages();
    if (argc < 2) {
        std::fprintf(stderr, "usage: zel_statistics_shot DIR [CURVE_FILE...]\n");
        return 2;
    }
    const QString dir = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(dir);
    QStringList files;
    for (int k = 2; k < argc; ++k) files.append(QString::fromLocal8Bit(argv[k]));
    for (int session = 1; files.isEmpty() && session <= 3; ++session) {
        const zel::test::Recording r{QStringLiteral("Doe"),
                                     QStringLiteral("Jane"),
                                     QStringLiteral("A1"),
                                     QString::number(session),
                                     session,
                                     600,
                                     3.6 + 0.3 * session};
        const QString path = zel::test::record_curve(dir, r);
        if (path.isEmpty()) {
            std::fprintf(stderr, "a recording failed\n");
            return 1;
        }
        if (session == 3) files = QDir(dir + QStringLiteral("/Doe_Jane_A1")).entryList({"*.dat"});
    }
    if (argc < 3)
        for (QString& f : files) f = dir + QStringLiteral("/Doe_Jane_A1/") + f;

    zel::test::FakeLocale locale;
    auto run = [](const char*, const std::function<void()>& f) { f(); };
    zel::PatientCurvesView review(dir, locale, run);
    review.load(files);
    review.show();
    QTest::qWait(300);
    if (review.model().curve_count != files.size() || !review.model().mnuStatistics.Enabled) {
        std::fprintf(stderr, "the review did not load the curves\n");
        return 1;
    }
    // The menu's entry, as the operator chooses it.
    QAction* entry = nullptr;
    for (QAction* a : review.menuBar()->actions().front()->menu()->actions())
        if (a->text() == review.model().mnuStatistics.Caption) entry = a;
    if (!entry) {
        std::fprintf(stderr, "no Breath-hold Statistics in the File menu\n");
        return 1;
    }
    entry->trigger();
    QTest::qWait(300);
    zel::BreathHoldStatisticsView* window = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* found = dynamic_cast<zel::BreathHoldStatisticsView*>(w)) window = found;
    if (!window || !window->isVisible()) {
        std::fprintf(stderr, "the statistics window did not open\n");
        return 1;
    }
    const QString review_shot = dir + QStringLiteral("/review.png");
    const QString shot = dir + QStringLiteral("/statistics.png");
    const QString end_shot = dir + QStringLiteral("/statistics-end.png");
    bool saved = review.grab().save(review_shot) && window->grab().save(shot);
    // The table's end: the last curve's summary and the spread between the curves.
    window->table().scrollToBottom();
    QTest::qWait(100);
    saved = saved && window->grab().save(end_shot);
    if (!saved) {
        std::fprintf(stderr, "no screenshot\n");
        return 1;
    }
    std::printf("%s\n%s\n%s\n%zu rows\n", qPrintable(review_shot), qPrintable(shot),
                qPrintable(end_shot), window->model().table.rows.size());
    return 0;
}
