// Drafts, and what is stored of them.

#include "form/task_draft.h"
#include "tasks_test.h"

using tasks::TaskDraft;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString loneSurrogate = QStringLiteral("a") + QChar(0xD800) + QStringLiteral("\r\n\u0001b");
// One letter of two units.
const QString bicycleSign = QString::fromUcs4(U"\U0001F6B2");

class Drafts : public Tasks {
protected:
  static QDateTime noon(int day) { return {QDate(2027, 3, day), QTime(12, 0)}; }
  static unsigned int uidOf(const TaskDraft& draft) {
    return draft.task().getUINT32(Task::TASK_FIELD_UID);
  }
  TaskDraft edit(unsigned int uid) { return TaskDraft(stored(uid)); }
  void expectSaved(TaskDraft& draft) {
    EXPECT_TRUE(draft.isChanged());
    EXPECT_EQ(draft.save(store_), ok);
    EXPECT_FALSE(draft.isChanged());
    EXPECT_THAT(draft.task(), IsSameTask(stored(uidOf(draft))));
  }
  // Changes the stored task as another program would.
  template <typename Work> void meanwhile(unsigned int uid, Work work) {
    Task task = stored(uid);
    work(task);
    ASSERT_EQ(store_.updateTask(task), ok);
  }
  void removeCategory(QString name) { ASSERT_EQ(store_.removeCategory(name, false), ok); }
};

TEST_F(Drafts, NewTaskNeedsActionAndHasRevision) {
  TaskDraft draft;
  EXPECT_TRUE(draft.isNew());
  EXPECT_FALSE(draft.isChanged());
  draft.setSummary("Buy milk");
  const qint64 before = QDateTime::currentSecsSinceEpoch();
  expectSaved(draft);
  const qint64 after = QDateTime::currentSecsSinceEpoch();
  EXPECT_FALSE(draft.isNew());
  const Task task = stored(uidOf(draft));
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "Buy milk");
  EXPECT_EQ(task.getStatusValue(), 1);
  EXPECT_EQ(task.getPriorityValue(), 5);
  EXPECT_TRUE(task.getString(Task::TASK_FIELD_NOTE).isNull());
  EXPECT_TRUE(task.getString(Task::TASK_FIELD_CATEGORY).isNull());
  const qint64 revision = task.getDateTime(Task::TASK_FIELD_REVISION).toSecsSinceEpoch();
  EXPECT_GE(revision, before);
  EXPECT_LE(revision, after);
  for (const auto field : {Task::TASK_FIELD_DUE, Task::TASK_FIELD_ALARM, Task::TASK_FIELD_END})
    EXPECT_EQ(task.getDateTime(field), Task::noDate());
}

TEST_F(Drafts, NewCompletedTaskEndsNow) {
  TaskDraft draft;
  draft.setStatus(ulo::Status::completed);
  const qint64 before = QDateTime::currentSecsSinceEpoch();
  expectSaved(draft);
  const Task task = stored(uidOf(draft));
  EXPECT_EQ(task.getStatusValue(), 0);
  EXPECT_GE(task.getDateTime(Task::TASK_FIELD_END).toSecsSinceEpoch(), before);
  EXPECT_LE(task.getDateTime(Task::TASK_FIELD_END).toSecsSinceEpoch(),
            QDateTime::currentSecsSinceEpoch());
}

TEST_F(Drafts, StoresNothingWithoutChange) {
  TaskDraft fresh;
  fresh.setSummary("");
  fresh.setNote("");
  fresh.setCategory("none");
  fresh.setPriority(ulo::Priority::normal);
  fresh.setStatus(ulo::Status::needsAction);
  fresh.setDue({});
  fresh.setAlarm({});
  EXPECT_FALSE(fresh.isChanged());
  EXPECT_EQ(fresh.save(store_), ok);
  EXPECT_THAT(allUids(), IsEmpty());

  const unsigned int uid = add("a");
  const Task before = stored(uid);
  TaskDraft draft = edit(uid);
  EXPECT_EQ(draft.save(store_), ok);
  EXPECT_THAT(stored(uid), IsSameTask(before));
}

TEST_F(Drafts, EachFieldIsStored) {
  TaskDraft draft = edit(add("a"));
  draft.setSummary("b");
  draft.setNote("note");
  draft.setDue(QDate(2027, 3, 5));
  draft.setAlarm(noon(4));
  draft.setStatus(ulo::Status::completed);
  draft.setPriority(ulo::Priority::low);
  draft.setCategory("Garden");
  expectSaved(draft);
  const Task task = stored(uidOf(draft));
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "b");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE), "note");
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE), QDate(2027, 3, 5).startOfDay());
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_ALARM), noon(4));
  EXPECT_EQ(task.getStatusValue(), 0);
  EXPECT_NE(task.getDateTime(Task::TASK_FIELD_END), Task::noDate());
  EXPECT_EQ(task.getPriorityValue(), 9);
  EXPECT_EQ(task.getString(Task::TASK_FIELD_CATEGORY), "Garden");
}

TEST_F(Drafts, EachFieldIsAChangeUntilItIsSetBack) {
  const unsigned int uid = add({.summary = "a", .due = noon(5), .priority = 3, .status = 2});
  const auto expectChange = [&](auto change, auto back) {
    TaskDraft draft = edit(uid);
    change(draft);
    EXPECT_TRUE(draft.isChanged());
    back(draft);
    EXPECT_FALSE(draft.isChanged());
    EXPECT_THAT(draft.task(), IsSameTask(stored(uid)));
  };
  using D = TaskDraft;
  expectChange([](D& d) { d.setSummary("b"); }, [](D& d) { d.setSummary("a"); });
  expectChange([](D& d) { d.setNote("b"); }, [](D& d) { d.setNote(""); });
  expectChange([](D& d) { d.setDue({}); }, [](D& d) { d.setDue(QDate(2027, 3, 5)); });
  expectChange([](D& d) { d.setDue(QDate(2027, 3, 6)); },
               [](D& d) { d.setDue(QDate(2027, 3, 5)); });
  expectChange([](D& d) { d.setAlarm(noon(5)); }, [](D& d) { d.setAlarm({}); });
  expectChange([](D& d) { d.setStatus(ulo::Status::completed); },
               [](D& d) { d.setStatus(ulo::Status::needsAction); });
  expectChange([](D& d) { d.setPriority(ulo::Priority::normal); },
               [](D& d) { d.setPriority(ulo::Priority::high); });
  expectChange([](D& d) { d.setCategory("b"); }, [](D& d) { d.setCategory("None"); });
}

TEST_F(Drafts, UneditedFieldsStayUnitByUnit) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, loneSurrogate);
  task.setString(Task::TASK_FIELD_NOTE, loneSurrogate.repeated(2000));
  task.setPriority(3);
  task.setStatus(2);
  ASSERT_EQ(store_.addTask(task), ok);
  TaskDraft draft = edit(task.getUINT32(Task::TASK_FIELD_UID));
  draft.setSummary(loneSurrogate);
  draft.setNote(loneSurrogate.repeated(2000));
  EXPECT_FALSE(draft.isChanged());
  draft.setCategory("Garden");
  expectSaved(draft);
  const Task after = stored(uidOf(draft));
  EXPECT_EQ(after.getString(Task::TASK_FIELD_SUMMARY), loneSurrogate);
  EXPECT_EQ(after.getString(Task::TASK_FIELD_NOTE), loneSurrogate.repeated(2000));
  EXPECT_EQ(after.getPriorityValue(), 3);
  EXPECT_EQ(after.getStatusValue(), 2);
}

TEST_F(Drafts, TruncatesTextsAtWholeLetter) {
  const auto summaryOf = [](const QString& text) {
    TaskDraft draft;
    draft.setSummary(text);
    return draft.task().getString(Task::TASK_FIELD_SUMMARY);
  };
  const QString nearly(Task::summaryLimit - 1, u'x');
  EXPECT_EQ(summaryOf(nearly), nearly);
  EXPECT_EQ(summaryOf(nearly + u'y'), nearly + u'y');
  EXPECT_EQ(summaryOf(nearly + "yz"), nearly + u'y');
  EXPECT_EQ(summaryOf(nearly + bicycleSign), nearly);
  EXPECT_EQ(summaryOf(nearly.chopped(1) + bicycleSign), nearly.chopped(1) + bicycleSign);
  EXPECT_EQ(summaryOf(nearly + QStringLiteral("e\u0301")), nearly);
  TaskDraft draft;
  const QString note(Task::noteLimit, u'n');
  draft.setNote(note + u'o');
  EXPECT_EQ(draft.task().getString(Task::TASK_FIELD_NOTE), note);
  draft.setNote(QStringLiteral("a") + QChar(u'\0') + u'b');
  EXPECT_EQ(draft.task().getString(Task::TASK_FIELD_NOTE), "ab");
}

TEST_F(Drafts, DueDateKeepsItsTimeOfDay) {
  TaskDraft draft = edit(add({.summary = "a", .due = noon(5)}));
  EXPECT_EQ(draft.due(), QDate(2027, 3, 5));
  draft.setDue(QDate(2027, 3, 6));
  expectSaved(draft);
  EXPECT_EQ(stored(uidOf(draft)).getDateTime(Task::TASK_FIELD_DUE), noon(6));
  draft.setDue({});
  expectSaved(draft);
  EXPECT_EQ(draft.due(), std::nullopt);
  EXPECT_EQ(stored(uidOf(draft)).getDateTime(Task::TASK_FIELD_DUE), Task::noDate());
}

TEST_F(Drafts, SkippedTimeStaysOnItsDay) {
  const QDate spring(2027, 3, 28);
  TaskDraft draft = edit(add({.summary = "a", .due = QDateTime(spring.addDays(-1), QTime(2, 30))}));
  draft.setDue(spring);
  EXPECT_EQ(draft.due(), spring);
  expectSaved(draft);
  EXPECT_EQ(stored(uidOf(draft)).getDateTime(Task::TASK_FIELD_DUE).date(), spring);
}

TEST_F(Drafts, KeepsChangesOfOtherPrograms) {
  const unsigned int uid = add("a");
  TaskDraft draft = edit(uid);
  meanwhile(uid, [](Task& task) {
    task.setString(Task::TASK_FIELD_NOTE, "theirs");
    task.setPriority(7);
    task.setString(Task::TASK_FIELD_SUMMARY, "theirs");
  });
  draft.setSummary("mine");
  expectSaved(draft);
  const Task task = stored(uid);
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "mine");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE), "theirs");
  EXPECT_EQ(task.getPriorityValue(), 7);
}

TEST_F(Drafts, AddsRemovedTaskAgain) {
  Task task = stored(add({.summary = "a", .priority = 3, .category = "garden"}));
  removeCategory("garden");
  TaskDraft draft = edit(task.getUINT32(Task::TASK_FIELD_UID));
  ASSERT_EQ(store_.removeTask(task.getUINT32(Task::TASK_FIELD_UID)), ok);
  draft.setSummary("b");
  draft.setStatus(ulo::Status::completed);
  expectSaved(draft);
  const Task after = stored(uidOf(draft));
  EXPECT_EQ(after.getString(Task::TASK_FIELD_SUMMARY), "b");
  EXPECT_EQ(after.getPriorityValue(), 3);
  EXPECT_NE(after.getDateTime(Task::TASK_FIELD_END), Task::noDate());
  EXPECT_TRUE(after.getString(Task::TASK_FIELD_CATEGORY).isNull());
  EXPECT_EQ(after.getString(Task::TASK_FIELD_UUID), task.getString(Task::TASK_FIELD_UUID));
}

TEST_F(Drafts, RemovedCategoryBecomesNone) {
  const unsigned int uid = add({.summary = "a", .category = "garden"});
  TaskDraft draft = edit(uid);
  removeCategory("garden");
  draft.setSummary("b");
  expectSaved(draft);
  EXPECT_EQ(stored(uid).getString(Task::TASK_FIELD_SUMMARY), "b");
  EXPECT_TRUE(stored(uid).getString(Task::TASK_FIELD_CATEGORY).isNull());
}

TEST_F(Drafts, RenamedNullCategoryCanBeChosen) {
  const unsigned int uid = add({.summary = "a", .category = "garden"});
  const unsigned int other = add("b");
  TaskDraft draft = edit(uid);
  TaskDraft untouched = edit(other);
  raw_.run("update task_table_category set name = 'renamed' where name is null");
  draft.setCategory({});
  expectSaved(draft);
  EXPECT_TRUE(stored(uid).getString(Task::TASK_FIELD_CATEGORY).isNull());
  untouched.setSummary("c");
  expectSaved(untouched);
  EXPECT_EQ(stored(other).getString(Task::TASK_FIELD_CATEGORY), "renamed");
}

TEST_F(Drafts, RejectedDraftStaysUnchanged) {
  raw_.run("create trigger refusal before update on task_table_task"
           " begin select raise(abort, 'refused by the test'); end");
  const unsigned int uid = add("a");
  TaskDraft draft = edit(uid);
  draft.setSummary("b");
  EXPECT_EQ(draft.save(store_), databaseFailure);
  EXPECT_TRUE(draft.isChanged());
  EXPECT_EQ(draft.task().getString(Task::TASK_FIELD_SUMMARY), "b");
  EXPECT_EQ(stored(uid).getString(Task::TASK_FIELD_SUMMARY), "a");
  raw_.run("drop trigger refusal");
  expectSaved(draft);
}

}  // namespace
