// The items of the options menus, and the published meta-objects of the screens.

#include "tasksMenu.h"

#include "TASK_UI_SDAction.h"
#include "TASK_UI_VTodo.h"
#include "ZOptionsMenu.h"
#include "screen_test.h"

#include <QMetaMethod>

using testing::ElementsAre;

namespace {

// Returns the items of a menu in order, each as "id/parent text".
std::vector<std::string> itemsOf(const char* menu) {
  tasksMenu parser;
  QValueList<ZOptMenuItem> items;
  parser.fillItems(items, QString::fromLatin1(menu));
  std::vector<std::string> result;
  for (const ZOptMenuItem& item : items) {
    EXPECT_EQ(item.reserved, 0);
    result.push_back(std::to_string(item.id) + '/' + std::to_string(item.parent) + ' ' +
                     item.text.toStdString());
  }
  return result;
}

TEST(TasksMenu, OfList) {
  EXPECT_THAT(itemsOf("listView"),
              ElementsAre("15/0 Select All", "16/0 Unselect All", "1/0 View by", "2/1 All Tasks",
                          "3/1 Due Tasks", "4/1 Incomplete Tasks", "5/1 Completed Tasks",
                          "6/0 Create New Task", "7/0 Edit", "8/0 Share Task via", "9/8 Bluetooth",
                          "10/8 Message", "18/0 Synchronize", "17/0 Delete", "11/0 Select Multiple",
                          "12/0 Sort by", "13/12 Due Date", "14/12 Priority"));
}

TEST(TasksMenu, OfDetailView) {
  EXPECT_THAT(itemsOf("detailedView"), ElementsAre("1/0 Edit", "2/0 Share Task via",
                                                   "3/2 Bluetooth", "4/2 Message", "5/0 Delete"));
}

TEST(TasksMenu, OfForm) {
  EXPECT_THAT(itemsOf("formView"), ElementsAre("1/0 Cancel Edit"));
}

TEST(TasksMenu, UnknownMenuIsEmpty) {
  for (const char* name : {"", "listview", "detailView", "formView "})
    EXPECT_THAT(itemsOf(name), ElementsAre()) << name;
}

TEST(TasksMenu, AppendsItems) {
  tasksMenu parser;
  QValueList<ZOptMenuItem> items;
  items.append({QStringLiteral("first"), 99, 0, 0});
  parser.fillItems(items, QStringLiteral("formView"));
  ASSERT_EQ(items.count(), 2U);
  EXPECT_EQ(items.at(0).id, 99);
}

// Returns the methods of this type that the class itself declares.
std::vector<std::string> ownMethods(const QMetaObject& meta, QMetaMethod::MethodType type) {
  std::vector<std::string> result;
  for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
    if (meta.method(i).methodType() == type)
      result.push_back(meta.method(i).methodSignature().toStdString());
  return result;
}

TEST(MetaObject, OfViewBaseClass) {
  const QMetaObject& meta = TASK_UI_View::staticMetaObject;
  EXPECT_STREQ(meta.className(), "TASK_UI_View");
  EXPECT_STREQ(meta.superClass()->className(), "ZKbMainWidget");
  EXPECT_THAT(ownMethods(meta, QMetaMethod::Signal),
              ElementsAre("changeView(TASK_UI_View::TASK_VIEW_TYPE,TASK_UI_View::TASK_VIEW_TYPE,"
                          "ZTASK_ENG_Task*)",
                          "disposeView(TASK_UI_View::TASK_VIEW_TYPE)"));
  EXPECT_THAT(ownMethods(meta, QMetaMethod::Slot), ElementsAre());
}

TEST(MetaObject, OfDetailView) {
  const QMetaObject& meta = TASK_UI_DetailView::staticMetaObject;
  EXPECT_STREQ(meta.className(), "TASK_UI_DetailView");
  EXPECT_STREQ(meta.superClass()->className(), "TASK_UI_View");
  EXPECT_THAT(ownMethods(meta, QMetaMethod::Slot),
              ElementsAre("slotBack()", "slotTaskEditView()", "slotDeleteTask()", "sendToMessage()",
                          "sendToBluetooth()"));
  EXPECT_THAT(ownMethods(meta, QMetaMethod::Signal), ElementsAre());
}

TEST(MetaObject, OfEntryPoints) {
  for (const QMetaObject* meta :
       {&TASK_UI_VTodo::staticMetaObject, &TASK_UI_SDAction::staticMetaObject}) {
    EXPECT_STREQ(meta->superClass()->className(), "QObject");
    EXPECT_EQ(meta->methodCount(), QObject::staticMetaObject.methodCount());
  }
  EXPECT_STREQ(TASK_UI_VTodo::staticMetaObject.className(), "TASK_UI_VTodo");
  EXPECT_STREQ(TASK_UI_SDAction::staticMetaObject.className(), "TASK_UI_SDAction");
}

TEST(ViewType, HasFixedValues) {
  EXPECT_EQ(TASK_UI_View::TASK_LIST_VIEW, 0);
  EXPECT_EQ(TASK_UI_View::TASK_FORM_VIEW, 2);
  EXPECT_EQ(TASK_UI_View::TASK_DETAIL_VIEW, 3);
}

}  // namespace
