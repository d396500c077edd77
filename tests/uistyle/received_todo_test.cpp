// To-dos received from another device.

#include "TASK_UI_VTodo.h"

#include "entry_test.h"
#include "received_todo.h"

#include <QPointer>

using testing::ElementsAre;

namespace {

constexpr char receivedTodoSource[] = "uistyle/prism/TASK_UI_VTodo.cpp";
constexpr char wrongFormat[] = "Task shareby bluetooth fail for Task_Sync's error : the vtodo is "
                               "in wrong format or is empty!";

class ReceivedTodo : public EntryPoint {
protected:
  // Passes a text with a terminating zero byte.
  unsigned int receive(const std::string& text) { return receiveBytes(text + '\0'); }
  unsigned int receiveBytes(const std::string& bytes) {
    QArray<char> data;
    data.duplicate(bytes.data(), static_cast<uint>(bytes.size()));
    QPointer<TASK_UI_VTodo> entry = TASK_UI_VTodo::getInstance();
    const unsigned int result = entry->addVTodo(data);
    EXPECT_TRUE(entry.isNull()) << "the call must delete the object";
    return result;
  }
};

TEST_F(ReceivedTodo, EachInstanceIsNew) {
  TASK_UI_VTodo* one = TASK_UI_VTodo::getInstance();
  TASK_UI_VTodo* other = TASK_UI_VTodo::getInstance();
  EXPECT_NE(one, other);
  EXPECT_EQ(one->parent(), nullptr);
  EXPECT_EQ(one->objectName(), "");
  QArray<char> nothing;
  one->addVTodo(nothing);
  other->addVTodo(nothing);
}

TEST_F(ReceivedTodo, IsStoredAndShown) {
  EXPECT_EQ(receive(milk), 0U);
  EXPECT_THAT(stored(), ElementsAre("Buy milk"));
  EXPECT_THAT(shown(), ElementsAre("Buy milk"));
  EXPECT_THAT(lines(receivedTodoSource), ElementsAre("after add to db the vtodo is " + milk));
}

TEST_F(ReceivedTodo, BackClosesAndDeletesView) {
  receive(milk);
  std::vector<QPointer<TASK_UI_DetailView>> views;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (auto* view = qobject_cast<TASK_UI_DetailView*>(window))
      views.emplace_back(view);
  ASSERT_EQ(views.size(), 1U);
  ASSERT_THAT(shown(), ElementsAre("Buy milk"));
  views[0]->slotBack();
  EXPECT_THAT(shown(), ElementsAre());
  finishEvents();
  EXPECT_TRUE(views[0].isNull());
}

TEST_F(ReceivedTodo, StoresOnlyFirstTodo) {
  EXPECT_EQ(receive(calendar(todo("SUMMARY:one\r\n") + todo("SUMMARY:two\r\n"))), 0U);
  EXPECT_THAT(stored(), ElementsAre("one"));
  EXPECT_THAT(shown(), ElementsAre("one"));
}

TEST_F(ReceivedTodo, TruncatesTexts) {
  const std::string note(4003, 'n');
  EXPECT_EQ(receive(calendar(
                todo("SUMMARY:" + std::string(513, 's') + "\r\nDESCRIPTION:" + note + "\r\n"))),
            0U);
  EXPECT_EQ(receive(calendar(todo("SUMMARY:" + std::string(512, 't') +
                                  "\r\nDESCRIPTION:" + note.substr(1) + "\r\n"))),
            0U);
  ZTASK_ENG_Model store;
  for (const unsigned int uid : {1U, 2U}) {
    ZTASK_ENG_Task task;
    ASSERT_EQ(store.getTask(uid, task), 0);
    EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY),
              QString(512, QLatin1Char(uid == 1 ? 's' : 't')));
    EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE), QString(4002, u'n'));
  }
}

TEST_F(ReceivedTodo, IgnoresLastByteWithoutZeroByte) {
  // A calendar is complete without its last line end, but not if another byte is missing.
  const std::string text = milk.substr(0, milk.size() - 2);
  EXPECT_EQ(receiveBytes(text), 1U);
  EXPECT_EQ(receiveBytes(text + '\n'), 0U);
  EXPECT_THAT(stored(), ElementsAre("Buy milk"));
}

TEST_F(ReceivedTodo, IsReadUpToFirstZeroByte) {
  EXPECT_EQ(receiveBytes(milk + '\0' + calendar(todo("SUMMARY:x\r\n")) + '\0'), 0U);
  EXPECT_THAT(stored(), ElementsAre("Buy milk"));
  std::string cut = milk;
  cut[30] = '\0';
  EXPECT_EQ(receive(cut), 1U);
}

TEST_F(ReceivedTodo, RejectsTextWithoutTodo) {
  for (const std::string& text : {std::string(), std::string("no calendar"), calendar("")}) {
    log_.~LogCapture();
    new (&log_) LogCapture;
    EXPECT_EQ(receive(text), 1U);
    EXPECT_THAT(lines(receivedTodoSource), ElementsAre(wrongFormat));
  }
  EXPECT_THAT(stored(), ElementsAre());
  EXPECT_THAT(shown(), ElementsAre());
}

TEST_F(ReceivedTodo, RejectsEmptyArray) {
  EXPECT_EQ(receiveBytes(""), 1U);
  EXPECT_THAT(lines(receivedTodoSource), ElementsAre(wrongFormat));
}

TEST_F(ReceivedTodo, RejectsNullTask) {
  QList<ZTASK_ENG_Task> tasks;
  tasks.append(nullptr);
  ZTASK_ENG_Task task;
  EXPECT_FALSE(takeReceived(tasks, task));
  EXPECT_THAT(lines(receivedTodoSource),
              ElementsAre("Task shareby bluetooth fail for Task_Sync's error : the task pointer "
                          "is empty!"));
}

TEST_F(ReceivedTodo, MustPassLock) {
  platform_.lockResult = 0;
  EXPECT_EQ(receive(milk), 1U);
  EXPECT_THAT(lines(receivedTodoSource), ElementsAre("for applock"));
  EXPECT_THAT(lines(detailViewSource), ElementsAre("get dllHandle success!\n", "verify failed!\n"));
  platform_.hasLockLibrary = false;
  EXPECT_EQ(receive(milk), 1U);
  EXPECT_THAT(stored(), ElementsAre());
  EXPECT_THAT(shown(), ElementsAre());
}

TEST_F(ReceivedTodo, FailingStoreLooksLikeSuccess) {
  closeStore();
  EXPECT_EQ(receive(milk), 0U);
  EXPECT_THAT(lines(receivedTodoSource),
              ElementsAre("after add to db the vtodo is " + milk, "add to task db error, ret = 6"));
  EXPECT_THAT(stored(), ElementsAre());
  EXPECT_THAT(shown(), ElementsAre());
}

}  // namespace
