// The window on screen shows the model's list and hands it the buttons; the rules are the
// model's.
#include <gtest/gtest.h>

#include <QHeaderView>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

#include "history_rig.h"
#include "language/messages.h"
#include "ui/dialog_session_history_view.h"

namespace zel::test {
namespace {

QPushButton* button(QWidget& window, const QString& text) {
    for (QPushButton* b : window.findChildren<QPushButton*>())
        if (b->text() == text) return b;
    return nullptr;
}

TEST(DialogSessionHistoryView, shows_the_sessions_under_their_headings) {
    HistoryRig rig;
    rig.write_history(2,
                      {{" 1", "04-Mar-26 at 09:05:07", "1.2", " 15", "Inhale", " 2", "Manual"},
                       {" 2", "05-Mar-26 at 14:30:00", "1.5", " 20", "Exhale", " 0", "Automated"}});
    DialogSessionHistoryView view(rig.form, nullptr);
    view.load();
    EXPECT_EQ(view.windowTitle(), QStringLiteral("Session History"));
    auto* list = view.findChild<QTreeWidget*>();
    ASSERT_NE(list, nullptr);
    EXPECT_FALSE(list->isHeaderHidden());
    ASSERT_EQ(list->columnCount(), 7);
    EXPECT_EQ(list->headerItem()->text(6), QStringLiteral("Gating Mode"));
    EXPECT_EQ(list->columnWidth(1), 2400 / 15);
    ASSERT_EQ(list->topLevelItemCount(), 2);
    EXPECT_EQ(list->topLevelItem(1)->text(0), QStringLiteral("2"));
    EXPECT_EQ(list->topLevelItem(1)->text(6), QStringLiteral("Automated"));
}

TEST(DialogSessionHistoryView, print_and_done_reach_the_model) {
    HistoryRig rig;  // no history: Print refuses with its message
    DialogSessionHistoryView view(rig.form, nullptr);
    view.load();
    EXPECT_TRUE(view.findChild<QTreeWidget*>()->isHeaderHidden());
    view.show();
    QPushButton* print = button(view, message_text(317));
    QPushButton* done = button(view, message_text(113));
    ASSERT_TRUE(print && done);
    QTest::mouseClick(print, Qt::LeftButton);
    EXPECT_EQ(rig.fakes.boxes.shown, QStringList{message_text(199)});
    QTest::mouseClick(done, Qt::LeftButton);
    EXPECT_TRUE(view.model().unloaded);
    EXPECT_FALSE(view.isVisible());
}

}  // namespace
}  // namespace zel::test
