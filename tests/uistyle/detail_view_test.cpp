// The contents of the detail view.

#include "UTIL_DateTime.h"
#include "UTIL_TimeConversion.h"
#include "ZDetailView.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "menu_items.h"
#include "screen_test.h"

using testing::ElementsAre;

namespace {

enum Row { titleRow, dueRow, statusRow, priorityRow, notesRow };

class DetailView : public Screen {
protected:
  DetailView() {
    for (int i = 0; i < 5; ++i) {
      QPixmap icon(16, 16);
      icon.fill(QColor::fromHsv(60 * i, 200, 200));
      icons_.append(icon);
    }
    task_.setString(Task::TASK_FIELD_SUMMARY, QStringLiteral("Buy milk"));
    task_.setString(Task::TASK_FIELD_NOTE, QStringLiteral("Two litres\nand bread"));
  }

  // Opens the task. Returns the rows of the view.
  ZDetailView* open() {
    view_.loadPixmap(icons_);
    view_.openView(&task_);
    return qobject_cast<ZDetailView*>(view_.contentWidget());
  }
  QString content(Row row) { return open()->item(row)->content(); }
  // Returns the index of a row's icon in the list, or -1 if it has none.
  int iconOf(Row row) {
    const QPixmap icon = open()->item(row)->icon();
    for (uint i = 0; i < icons_.count(); ++i)
      if (!icon.isNull() && icons_.at(i).cacheKey() == icon.cacheKey())
        return static_cast<int>(i);
    return -1;
  }

  ZTASK_ENG_Task task_;
  QValueList<QPixmap> icons_;
  TASK_UI_DetailView view_{nullptr, nullptr, 0};
};

TEST_F(DetailView, HasFiveRows) {
  const ZDetailView* rows = open();
  ASSERT_EQ(rows->count(), 5);
  std::vector<std::string> seen;
  for (int i = 0; i < 5; ++i)
    seen.push_back(std::to_string(rows->item(i)->kind()) + ' ' +
                   rows->item(i)->label().toStdString() + ' ' +
                   rows->item(i)->content().toStdString());
  EXPECT_THAT(seen,
              ElementsAre("5 Title: Buy milk", "5 Due Date: No Due Date", "6 Status: Incomplete",
                          "6 Priority: Normal", "5 Notes: Two litres\nand bread"));
}

TEST_F(DetailView, TitleIsSummary) {
  open();
  EXPECT_EQ(view_.appTitle(), "Buy milk");
}

TEST_F(DetailView, LabelIdsDependOnMode) {
  const TextsAsIds ids;
  const auto labels = [](const TASK_UI_DetailView& view) {
    const auto* rows = qobject_cast<ZDetailView*>(view.contentWidget());
    std::vector<std::string> result;
    for (int i = 0; i < rows->count(); ++i)
      result.push_back(rows->item(i)->label().toStdString());
    return result;
  };
  open();
  EXPECT_THAT(labels(view_), ElementsAre("[TXT_RID_EMPHASIS_TITLE]", "[TXT_RID_EMPHASIS_DUE_DATE]",
                                         "[TXT_RID_EMPHASIS_STATUS]", "[TXT_RID_EMPHASIS_PRIORITY]",
                                         "[TXT_RID_EMPHASIS_NOTE]"));
  TASK_UI_DetailView standalone(nullptr, nullptr, 0);
  standalone.openStandaloneView(task_);
  EXPECT_THAT(labels(standalone),
              ElementsAre("[TXT_RID_LABEL_FORMITEM_TITLE]", "[TXT_RID_LABEL_FORMITEM_DUE_DATE]",
                          "[TXT_RID_LABEL_FORMITEM_STATUS]", "[TXT_RID_LABEL_FORMITEM_PRIORITY]",
                          "[TXT_RID_LABEL_FORMITEM_NOTES]"));
}

TEST_F(DetailView, ContentsHaveIds) {
  const TextsAsIds ids;
  EXPECT_EQ(content(dueRow), "[TXT_RID_STANDARD_NO_DUE_DATE]");
  EXPECT_EQ(content(statusRow), "[TXT_RID_STANDARD_INCOMPLETE]");
  task_.setStatus(0);
  EXPECT_EQ(content(statusRow), "[TXT_RID_STANDARD_COMPLETED]");
  const std::pair<int, const char*> priorities[] = {{1, "[TXT_RID_SETTING_B_HIGH]"},
                                                    {5, "[TXT_RID_SETTING_B_NORMAL]"},
                                                    {9, "[TXT_RID_SETTING_B_LOW]"}};
  for (const auto& [priority, text] : priorities) {
    task_.setPriority(priority);
    EXPECT_EQ(content(priorityRow), text);
  }
}

TEST_F(DetailView, DueDateHasNoTime) {
  const QDateTime due(QDate(2027, 3, 5), QTime(18, 30));
  task_.setDateTime(Task::TASK_FIELD_DUE, due);
  EXPECT_EQ(content(dueRow), UTIL_DateTime::dateToString(due, UTIL_DateTime::dateOnly));
  EXPECT_FALSE(content(dueRow).contains("18"));
  task_.setDateTime(Task::TASK_FIELD_DUE, UTIL_TimeConversion::fromUTC(2147483647));
  EXPECT_EQ(content(dueRow), "No Due Date");
}

TEST_F(DetailView, InvalidDueDateIsEmpty) {
  task_.setDateTime(Task::TASK_FIELD_DUE, QDateTime());
  EXPECT_EQ(content(dueRow), "");
}

TEST_F(DetailView, StatusHasTextAndIcon) {
  for (const int status : {-1, 1, 2, 7, 8}) {
    task_.setStatus(status);
    EXPECT_EQ(content(statusRow), "Incomplete") << status;
    EXPECT_EQ(iconOf(statusRow), 1) << status;
  }
  task_.setStatus(0);
  EXPECT_EQ(content(statusRow), "Completed");
  EXPECT_EQ(iconOf(statusRow), 0);
}

TEST_F(DetailView, PriorityIsShownInThreeClasses) {
  struct Class {
    int priority;
    const char* text;
    int icon;
  };
  for (const Class& expected :
       {Class{1, "High", 2}, Class{3, "High", 2}, Class{4, "High", 2}, Class{0, "Normal", 3},
        Class{5, "Normal", 3}, Class{6, "Low", 4}, Class{9, "Low", 4}, Class{10, "Low", 4}}) {
    task_.setPriority(expected.priority);
    EXPECT_EQ(content(priorityRow), expected.text) << expected.priority;
    EXPECT_EQ(iconOf(priorityRow), expected.icon) << expected.priority;
  }
}

TEST_F(DetailView, ShowsTextsWithoutIcons) {
  view_.openView(&task_);
  const auto* rows = qobject_cast<ZDetailView*>(view_.contentWidget());
  EXPECT_EQ(rows->item(statusRow)->content(), "Incomplete");
  EXPECT_TRUE(rows->item(statusRow)->icon().isNull());
}

TEST_F(DetailView, KeepsCopyOfTask) {
  open();
  task_.setString(Task::TASK_FIELD_SUMMARY, QStringLiteral("changed"));
  QString shown;
  QObject::connect(&view_, &TASK_UI_View::changeView, &view_,
                   [&](auto, auto, const ZTASK_ENG_Task* task) {
                     shown = task->getString(Task::TASK_FIELD_SUMMARY);
                   });
  view_.slotTaskEditView();
  EXPECT_EQ(shown, "Buy milk");
}

TEST_F(DetailView, HasTwoKeys) {
  open();
  EXPECT_EQ(view_.cstWidget()->text(ZSoftKey::left), "Options");
  EXPECT_EQ(view_.cstWidget()->text(ZSoftKey::right), "Back");
  const TextsAsIds ids;
  open();
  EXPECT_EQ(view_.cstWidget()->text(ZSoftKey::left), "[TXT_RID_SOFTKEY_OPTIONS]");
  EXPECT_EQ(view_.cstWidget()->text(ZSoftKey::right), "[TXT_RID_SOFTKEY_BACK]");
}

TEST_F(DetailView, MenuHasOwnTexts) {
  open();
  const auto texts = [this] {
    const auto* menu = view_.findChild<ZOptionsMenu*>();
    std::vector<std::string> result;
    for (const int id : menu->getAllItemIds())
      result.push_back(std::to_string(id) + ' ' + menu->item(id)->text().toStdString());
    return result;
  };
  EXPECT_THAT(texts(),
              ElementsAre("1 Edit", "2 Share via", "3 Bluetooth", "4 Message", "5 Delete"));
  const auto* menu = view_.findChild<ZOptionsMenu*>();
  ASSERT_NE(menu->item(ulo::detailMenu::share)->menu(), nullptr);
  EXPECT_THAT(
      menu->item(ulo::detailMenu::share)->menu()->actions(),
      ElementsAre(menu->item(ulo::detailMenu::bluetooth), menu->item(ulo::detailMenu::message)));
  EXPECT_EQ(menu->actions().size(), 3);
  const TextsAsIds ids;
  open();
  EXPECT_THAT(texts(), ElementsAre("1 [TXT_RID_OPTION_EDIT]", "2 [TXT_RID_OPTION_SHARE_VIA]",
                                   "3 [TXT_RID_OPTION_BLUETOOTH]", "4 [TXT_RID_OPTION_MESSAGE]",
                                   "5 [TXT_RID_OPTION_DELETE]"));
  EXPECT_THAT(lines(), ElementsAre());
}

TEST_F(DetailView, LogsUnknownMenuItem) {
  platform_.unknownMenuItem = 99;
  open();
  EXPECT_THAT(lines(), ElementsAre("shouldn't come here! check the ini file"));
  EXPECT_EQ(view_.findChild<ZOptionsMenu*>()->item(ulo::detailMenu::edit)->text(), "Edit");
}

TEST_F(DetailView, StandaloneOnlyGoesBack) {
  TASK_UI_DetailView view(nullptr, nullptr, 0);
  view.openStandaloneView(task_);
  EXPECT_EQ(view.cstWidget()->text(ZSoftKey::left), "");
  EXPECT_EQ(view.cstWidget()->text(ZSoftKey::right), "Back");
  EXPECT_EQ(view.findChild<ZOptionsMenu*>(), nullptr);
}

TEST_F(DetailView, StandaloneReadsItsIcons) {
  TASK_UI_DetailView view(nullptr, nullptr, 0);
  const auto icon = [&](int status, int priority, Row row) {
    task_.setStatus(status);
    task_.setPriority(priority);
    view.openStandaloneView(task_);
    return qobject_cast<ZDetailView*>(view.contentWidget())->item(row)->icon();
  };
  EXPECT_TRUE(isIcon(icon(0, 5, statusRow), "todo_task_complete_small.gif"));
  EXPECT_TRUE(isIcon(icon(1, 5, statusRow), "todo_task_incomplete_small.gif"));
  EXPECT_TRUE(isIcon(icon(1, 1, priorityRow), "todo_task_hi_pri_small.gif"));
  EXPECT_TRUE(isIcon(icon(1, 5, priorityRow), "todo_task_normal_pri_small.gif"));
  EXPECT_TRUE(isIcon(icon(1, 9, priorityRow), "todo_task_lo_pri_small.gif"));
  EXPECT_THAT(lines(), ElementsAre());
}

TEST_F(DetailView, StandaloneUsesOnlyItsIcons) {
  view_.loadPixmap(icons_);
  view_.openStandaloneView(task_);
  const QPixmap icon = qobject_cast<ZDetailView*>(view_.contentWidget())->item(statusRow)->icon();
  EXPECT_TRUE(isIcon(icon, "todo_task_incomplete_small.gif"));
}

TEST_F(DetailView, RowsHaveFocus) {
  open();
  view_.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&view_));
  view_.setFocus();
  EXPECT_EQ(QApplication::focusWidget(), view_.contentWidget());
}

}  // namespace
