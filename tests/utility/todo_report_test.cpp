// Reading and writing to-dos in memory: the records, the text, and the reports.
#include "failing_new.h"
#include "library_faults.h"

#include "TASK_ENG_SyncML.h"
#include "ZVtodoParser.h"
#include "log_capture.h"
#include "task_text.h"
#include "todo_reader.h"
#include "todo_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <thread>
#include <utility>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Task = ZTASK_ENG_Task;

namespace {

std::string calendar(const std::string& lines) {
  return "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\n" + lines + "END:VTODO\r\nEND:VCALENDAR\r\n";
}

std::vector<std::string> summaries(const ulo::TodosRead& read) {
  std::vector<std::string> result;
  for (const std::unique_ptr<Task>& task : read.tasks)
    result.push_back(task->getString(Task::TASK_FIELD_SUMMARY).toStdString());
  return result;
}

// Reading

class TodoReading : public VObjectLibrary {
protected:
  LogCapture log_;
};

TEST_F(TodoReading, ReportsNoRepairsForCleanText) {
  const ulo::TodosRead read = ulo::readTodos(threeTodos);
  EXPECT_THAT(summaries(read), ElementsAre("first", "second", "third"));
  EXPECT_EQ(read.report.failure, ulo::ReadFailure::none);
  EXPECT_EQ(read.report.text.todos, 3U);
  EXPECT_THAT(read.report.text.repairs, IsEmpty());
  EXPECT_THAT(read.report.undecoded, IsEmpty());
}

TEST_F(TodoReading, ReportsRepairs) {
  const ulo::TodosRead read = ulo::readTodos(calendar("SUMMARY;X-A=1:a\r\nDESCRIPTION:\r\n"));
  EXPECT_THAT(summaries(read), ElementsAre("a"));
  EXPECT_EQ(read.report.failure, ulo::ReadFailure::none);
  const std::vector<ulo::RepairNote>& repairs = read.report.text.repairs;
  ASSERT_EQ(repairs.size(), 2U);
  EXPECT_EQ(repairs[0].repair, ulo::Repair::rewritten);
  EXPECT_EQ(repairs[0].line, 3U);
  EXPECT_EQ(repairs[0].property, "SUMMARY");
  EXPECT_EQ(repairs[1].repair, ulo::Repair::noValue);
  EXPECT_EQ(repairs[1].line, 4U);
  EXPECT_EQ(repairs[1].property, "DESCRIPTION");
}

TEST_F(TodoReading, ReadsSameTasksAsParser) {
  for (const std::string& text : {threeTodos, "\xEF\xBB\xBF" + threeTodos}) {
    const ulo::TodosRead read = ulo::readTodos(text);
    QList<Task> tasks;
    tasks.setAutoDelete(true);
    ZVtodoParser().readVtodo(QCString(text.c_str()), tasks);
    ASSERT_EQ(read.tasks.size(), tasks.count());
    for (uint i = 0; i < tasks.count(); ++i)
      EXPECT_EQ(taskText(*read.tasks[i]), taskText(*tasks.at(i)));
  }
}

TEST_F(TodoReading, OpensLibraryOnlyDuringCall) {
  EXPECT_EQ(ulo::readTodos(threeTodos).tasks.size(), 3U);
  EXPECT_THAT(loader_.opened, ElementsAre("libicalvcal.so lazy"));
  EXPECT_EQ(loader_.closed, 1);
}

TEST_F(TodoReading, ReportsUnreadableTextWithoutOpeningLibrary) {
  const ulo::TodosRead truncated =
      ulo::readTodos("BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nSUMMARY:a\r\n");
  EXPECT_EQ(truncated.report.failure, ulo::ReadFailure::text);
  EXPECT_EQ(truncated.report.text.problem, ulo::TextProblem::truncated);
  EXPECT_EQ(truncated.report.text.line, 2U);
  const ulo::TodosRead empty = ulo::readTodos("BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n");
  EXPECT_EQ(empty.report.failure, ulo::ReadFailure::text);
  EXPECT_EQ(empty.report.text.problem, ulo::TextProblem::noTodo);
  EXPECT_THAT(loader_.opened, IsEmpty());
  EXPECT_EQ(log_.text(), "");
}

TEST_F(TodoReading, ReportsTextsInvalidInTheirCharacterSet) {
  const std::string declared = ";CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:";
  const ulo::TodosRead read =
      ulo::readTodos(calendar("SUMMARY" + declared + "=C3=A4\r\n") +
                     calendar("SUMMARY" + declared + "=C3\r\nDESCRIPTION" + declared + "=A4\r\n"));
  ASSERT_EQ(read.report.undecoded.size(), 2U);
  EXPECT_EQ(read.report.undecoded[0].todo, 1U);
  EXPECT_EQ(read.report.undecoded[0].field, Task::TASK_FIELD_SUMMARY);
  EXPECT_EQ(read.report.undecoded[1].todo, 1U);
  EXPECT_EQ(read.report.undecoded[1].field, Task::TASK_FIELD_NOTE);
}

TEST_F(TodoReading, LimitsReportedUndecodedTexts) {
  const auto reported = [](std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
      text += calendar("SUMMARY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3\r\n");
    return ulo::readTodos(text).report.undecoded.size();
  };
  EXPECT_EQ(reported(ulo::loggedLimit - 1), ulo::loggedLimit - 1);
  EXPECT_EQ(reported(ulo::loggedLimit), ulo::loggedLimit);
  EXPECT_EQ(reported(ulo::loggedLimit + 1), ulo::loggedLimit);
}

TEST_F(TodoReading, ReportsLibraryThatCannotRead) {
  for (const char* function : {"Parse_MIME", "nextVObject", "vObjectName"}) {
    loader_.missing = {function};
    const ulo::TodosRead read = ulo::readTodos(threeTodos);
    EXPECT_EQ(read.report.failure, ulo::ReadFailure::library) << function;
    EXPECT_EQ(read.report.text.todos, 3U) << function;
    EXPECT_THAT(read.tasks, IsEmpty()) << function;
  }
}

TEST_F(TodoReading, ReportsRecordThatCannotBeAllocated) {
  const LeaksExpected ofRemainingObjects;
  allocationsLeft = 1;
  const ulo::TodosRead read = ulo::readTodos(threeTodos);
  allocationsLeft = allAllocationsSucceed;
  EXPECT_EQ(read.report.failure, ulo::ReadFailure::memory);
  EXPECT_THAT(read.tasks, IsEmpty());
  EXPECT_EQ(read.report.text.todos, 3U);
}

// The to-dos of the slices, and their report.
struct Slices {
  ulo::TodosRead read;
  std::vector<std::size_t> sizes;
};
Slices slicesOf(const std::string& text, std::size_t kept = ulo::slicesKept) {
  Slices result;
  ulo::TodoSlices slices(text, kept);
  for (std::vector<std::unique_ptr<Task>> tasks; slices.next(tasks);) {
    result.sizes.push_back(tasks.size());
    for (std::unique_ptr<Task>& task : tasks)
      result.read.tasks.push_back(std::move(task));
  }
  result.read.report = slices.report();
  return result;
}

std::string manyTodos(std::size_t count) {
  std::string todos;
  for (std::size_t i = 0; i < count; ++i)
    todos += "BEGIN:VTODO\r\nSUMMARY;X-A=1:" + std::to_string(i) + "\r\nEND:VTODO\r\n";
  return "BEGIN:VCALENDAR\r\n" + todos + "END:VCALENDAR\r\n";
}

TEST_F(TodoReading, ReportsValueThatCannotBeAllocated) {
  loader_.failingMalloc = 2;
  const ulo::TodosRead read = ulo::readTodos(manyTodos(3));
  EXPECT_EQ(read.report.failure, ulo::ReadFailure::memory);
  EXPECT_THAT(read.tasks, IsEmpty());
}

TEST_F(TodoReading, PublishedReaderSkipsValueThatCannotBeAllocated) {
  loader_.failingMalloc = 2;
  QList<Task> tasks;
  tasks.setAutoDelete(true);
  ZVtodoParser().readVtodo(QCString(manyTodos(3).c_str()), tasks);
  ASSERT_EQ(tasks.count(), 3U);
  EXPECT_EQ(tasks.at(0)->getString(Task::TASK_FIELD_SUMMARY), "0");
  EXPECT_TRUE(tasks.at(1)->getString(Task::TASK_FIELD_SUMMARY).isEmpty());
  EXPECT_EQ(tasks.at(2)->getString(Task::TASK_FIELD_SUMMARY), "2");
  EXPECT_THAT(log_.withoutLines(), HasSubstr(errorLine("Unable to allocate memory")));
}

// The second value of the to-do.
TEST_F(TodoReading, ReplacementThatLacksValueIsRejected) {
  const DataDirectory directory;
  TASK_ENG_SyncML adaptor;
  unsigned int uid = 0;
  const std::string text = calendar("SUMMARY:a\r\nDESCRIPTION:b\r\n");
  ASSERT_EQ(adaptor.addEvent(text, uid), TASK_SYNCML_OK);
  loader_.failingMalloc = 2;
  EXPECT_NE(adaptor.updateEvent(text, uid), TASK_SYNCML_OK);
  Task task;
  ASSERT_EQ(adaptor.getTask(uid, task), TASK_ENG_OK);
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE), "b");
  loader_.failingMalloc = 2;
  EXPECT_NE(adaptor.addEvent(text, uid), TASK_SYNCML_OK);
  EXPECT_EQ(adaptor.addEvent(text, uid), TASK_SYNCML_OK);
}

TEST_F(TodoReading, ReportsAlarmTimeThatCannotBeAllocated) {
  loader_.failingMalloc = 2;  // after the one for the value of DALARM
  const ulo::TodosRead read = ulo::readTodos(calendar("DALARM:20261123T080000Z;;;x;y\r\n"));
  EXPECT_EQ(read.report.failure, ulo::ReadFailure::memory);
}

TEST_F(TodoReading, SlicesContainAllTodosInOrder) {
  for (const std::size_t count : {1U, 99U, 100U, 101U, 200U, 201U, 1050U}) {
    const std::string text = manyTodos(count);
    const ulo::TodosRead whole = ulo::readTodos(text);
    ASSERT_EQ(whole.tasks.size(), count);
    // All pieces are kept, some of them, or none.
    for (const std::size_t kept : {ulo::keptLimit, text.size() / 2, std::size_t{0}}) {
      const Slices slices = slicesOf(text, kept);
      EXPECT_EQ(summaries(slices.read), summaries(whole)) << kept;
      EXPECT_THAT(slices.sizes, testing::Each(testing::Le(100U))) << kept;
      EXPECT_EQ(slices.read.report.failure, ulo::ReadFailure::none) << kept;
      EXPECT_EQ(slices.read.report.text.todos, count) << kept;
      EXPECT_EQ(slices.read.report.text.repairs.size(), whole.report.text.repairs.size()) << kept;
      EXPECT_EQ(slices.read.report.text.moreRepairs, whole.report.text.moreRepairs) << kept;
    }
  }
}

TEST_F(TodoReading, SliceOfLargeTodoHasNoOther) {
  const std::string note(std::size_t{3} << 20, 'n');
  const std::string large =
      "BEGIN:VTODO\r\nSUMMARY;X-A=1:large\r\nDESCRIPTION:" + note + "\r\nEND:VTODO\r\n";
  const std::string small = "BEGIN:VTODO\r\nSUMMARY:small\r\nEND:VTODO\r\n";
  const std::string text =
      "BEGIN:VCALENDAR\r\n" + large + large + small + small + "END:VCALENDAR\r\n";
  for (const std::size_t kept : {ulo::keptLimit, std::size_t{0}}) {
    const Slices slices = slicesOf(text, kept);
    EXPECT_THAT(summaries(slices.read), ElementsAre("large", "large", "small", "small")) << kept;
    EXPECT_THAT(slices.sizes, ElementsAre(1U, 1U, 2U)) << kept;
    EXPECT_EQ(slices.read.tasks[1]->getString(Task::TASK_FIELD_NOTE).size(),
              static_cast<qsizetype>(note.size()));
  }
}

TEST_F(TodoReading, SlicesOfBadTextAreEmpty) {
  const std::string text = manyTodos(250);
  for (const std::string& bad :
       {text.substr(0, text.size() - 40), std::string("BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n")}) {
    const Slices slices = slicesOf(bad, 0);
    EXPECT_THAT(slices.sizes, IsEmpty());
    EXPECT_EQ(slices.read.report.failure, ulo::ReadFailure::text);
    EXPECT_EQ(slices.read.report.text.problem, ulo::readTodos(bad).report.text.problem);
  }
  EXPECT_THAT(loader_.opened, IsEmpty());
}

// The slices before it may have been taken in by then.
TEST_F(TodoReading, SlicesEndBeforeOneThatLacksValue) {
  loader_.failingMalloc = 150;
  const Slices slices = slicesOf(manyTodos(250), 0);
  EXPECT_EQ(slices.read.report.failure, ulo::ReadFailure::memory);
  EXPECT_THAT(slices.sizes, ElementsAre(100U));
}

TEST_F(TodoReading, SlicesReportUndecodedTextsByTheirTodo) {
  std::string text = manyTodos(150);
  text += calendar("SUMMARY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3\r\n");
  const Slices slices = slicesOf(text, 0);
  ASSERT_EQ(slices.read.report.undecoded.size(), 1U);
  EXPECT_EQ(slices.read.report.undecoded[0].todo, 150U);
}

TEST_F(TodoReading, SlicesReportLibraryThatCannotRead) {
  for (const char* function : {"Parse_MIME", "nextVObject", "vObjectName"}) {
    loader_.missing = {function};
    const Slices slices = slicesOf(manyTodos(250));
    EXPECT_EQ(slices.read.report.failure, ulo::ReadFailure::library) << function;
    EXPECT_THAT(slices.read.tasks, IsEmpty()) << function;
  }
}

TEST_F(TodoReading, SlicesOpenLibraryUntilTheEnd) {
  const std::string text = manyTodos(250);
  ulo::TodoSlices slices(text);
  EXPECT_THAT(loader_.opened, IsEmpty());
  std::vector<std::unique_ptr<Task>> tasks;
  while (slices.next(tasks))
    EXPECT_EQ(loader_.closed, 0);
  EXPECT_THAT(loader_.opened, ElementsAre("libicalvcal.so lazy"));
  EXPECT_EQ(loader_.closed, 1);
}

// Writing

class TodoWriting : public VObjectLibrary {
protected:
  TodoWriting() {
    tasks_.setAutoDelete(true);
    for (const char* summary : {"a", "b"}) {
      auto* task = new Task;
      task->setString(Task::TASK_FIELD_SUMMARY, summary);
      tasks_.append(task);
    }
  }

  LogCapture log_;
  QList<Task> tasks_;
};

TEST_F(TodoWriting, ReturnsSameBytesAsParser) {
  const ulo::TodosWritten result = ulo::writeTodos(tasks_);
  EXPECT_EQ(result.report.failure, ulo::WriteFailure::none);
  EXPECT_EQ(result.report.todos, 2U);
  EXPECT_THAT(result.report.lossy, IsEmpty());
  ZVtodoParser().writeVtodo(outName(), tasks_);
  EXPECT_EQ(result.text, written());
  EXPECT_THAT(summaries(ulo::readTodos(result.text)), ElementsAre("a", "b"));
}

TEST_F(TodoWriting, OpensLibraryOnlyDuringCall) {
  EXPECT_NE(ulo::writeTodos(tasks_).text, "");
  EXPECT_THAT(loader_.opened, ElementsAre("libicalvcal.so lazy"));
  EXPECT_EQ(loader_.closed, 1);
}

TEST_F(TodoWriting, SkipsNullPointers) {
  tasks_.append(nullptr);
  EXPECT_EQ(ulo::writeTodos(tasks_).report.todos, 2U);
}

TEST_F(TodoWriting, ReportsValuesThatTextCannotExpress) {
  Task& task = *tasks_.at(1);
  task.setString(Task::TASK_FIELD_SUMMARY, QString("b") + QChar(0xD83D));
  task.setString(Task::TASK_FIELD_NOTE, QString("b") + QChar(0) + "c");
  task.setString(Task::TASK_FIELD_CATEGORY, QString(QChar(0)) + "c");
  const QDateTime far(QDate(10000, 1, 2), QTime(12, 0));
  task.setDateTime(Task::TASK_FIELD_DUE, far);
  task.setDateTime(Task::TASK_FIELD_END, far);
  task.setDateTime(Task::TASK_FIELD_ALARM, far);
  const ulo::TodosWritten result = ulo::writeTodos(tasks_);
  EXPECT_EQ(result.report.failure, ulo::WriteFailure::none);
  std::vector<Task::TASK_FIELD_T> fields;
  for (const ulo::LossyValue& lossy : result.report.lossy) {
    EXPECT_EQ(lossy.task, 1U);
    fields.push_back(lossy.field);
  }
  EXPECT_THAT(fields,
              ElementsAre(Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_NOTE,
                          Task::TASK_FIELD_CATEGORY, Task::TASK_FIELD_END, Task::TASK_FIELD_ALARM));
}

TEST_F(TodoWriting, ReportsLibraryThatCannotWrite) {
  for (const char* function : {"newVObject", "addProp", "addPropValue", "writeMemVObject"}) {
    loader_.missing = {function};
    EXPECT_EQ(ulo::writeTodos(tasks_).report.failure, ulo::WriteFailure::library) << function;
  }
  loader_.missing.clear();
  loader_.libraryMissing = true;
  const ulo::TodosWritten result = ulo::writeTodos(tasks_);
  EXPECT_EQ(result.report.failure, ulo::WriteFailure::library);
  EXPECT_EQ(result.report.todos, 0U);
  EXPECT_EQ(result.text, "");
}

void writeOtherText(FILE* stream, VObject*) {
  std::fputs("written", stream);
}

TEST_F(TodoWriting, UsesStreamFunctionIfNoOtherExists) {
  loader_.missing = {"writeMemVObject"};
  loader_.replaced["writeVObject"] = reinterpret_cast<void*>(&writeOtherText);
  const ulo::TodosWritten result = ulo::writeTodos(tasks_);
  EXPECT_EQ(result.text, "written");
  EXPECT_EQ(result.report.failure, ulo::WriteFailure::none);
}

// Writing in pages

class TodoPaging : public TodoWriting {
protected:
  // The text of a page with one task.
  std::string textOf(const char* summary) {
    tasks_.clear();
    auto* task = new Task;
    task->setString(Task::TASK_FIELD_SUMMARY, summary);
    tasks_.append(task);
    return ulo::writeTodos(tasks_).text;
  }
};

TEST_F(TodoPaging, ReturnsTextsInOrder) {
  std::vector<std::string> expected;
  ulo::TodoPages pages;
  for (const char* summary : {"c", "d", "e"}) {
    expected.push_back(textOf(summary));
    pages.add(tasks_);
  }
  EXPECT_EQ(pages.count(), 3U);
  std::vector<std::string> texts;
  while (pages.count() > 0) {
    const ulo::TodosWritten page = pages.take();
    EXPECT_EQ(page.report.todos, 1U);
    texts.push_back(page.text);
  }
  EXPECT_EQ(texts, expected);
}

TEST_F(TodoPaging, ReleasesPagesThatAreNotTaken) {
  ulo::TodoPages pages;
  pages.add(tasks_);
  pages.add(tasks_);
  EXPECT_EQ(pages.count(), 2U);
}

std::atomic<int> writing = 0;
std::atomic<bool> areAdded = false;

bool waitFor(const std::function<bool()>& condition) {
  for (int i = 0; i < 30000 && !condition(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return condition();
}

char* writeWhenAllAreAdded(char*, int*, VObject*) {
  ++writing;
  return strdup(waitFor([] { return areAdded.load(); }) ? "in time" : "too late");
}

TEST_F(TodoPaging, BuildsNextPageWhileLibraryWrites) {
  loader_.replaced["writeMemVObject"] = reinterpret_cast<void*>(&writeWhenAllAreAdded);
  writing = 0;
  areAdded = false;
  ulo::TodoPages pages;
  pages.add(tasks_);
  pages.add(tasks_);
  EXPECT_TRUE(waitFor([] { return writing == 2; }));
  areAdded = true;
  EXPECT_EQ(pages.take().text, "in time");
  EXPECT_EQ(pages.take().text, "in time");
}

TEST_F(TodoPaging, ReportsPageThatCannotBeWritten) {
  loader_.missing = {"addPropValue"};
  ulo::TodoPages pages;
  pages.add(tasks_);
  const ulo::TodosWritten page = pages.take();
  EXPECT_EQ(page.report.failure, ulo::WriteFailure::library);
  EXPECT_EQ(page.report.todos, 2U);
}

}  // namespace
