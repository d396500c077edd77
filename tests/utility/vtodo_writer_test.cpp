#include "ZVtodoParser.h"

#include "berlin_time.h"
#include "log_capture.h"
#include "task_text.h"
#include "temporary_directory.h"
#include "utc_zone.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTimeZone>

#include <fstream>
#include <sstream>

using testing::HasSubstr;
using testing::Not;
using Task = ZTASK_ENG_Task;

namespace {

class VtodoWriter : public testing::Test {
protected:
  std::string contents() const {
    std::ostringstream text;
    text << std::ifstream(name_.toStdString(), std::ios::binary).rdbuf();
    return text.str();
  }
  // Writes a task. Returns the lines of its to-do.
  std::string written(Task& task) {
    parser_.writeVtodo(name_, &task);
    const std::string text = contents();
    const std::string start = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\n";
    const std::string end = "END:VTODO\r\n\r\nEND:VCALENDAR\r\n\r\n";
    EXPECT_THAT(text, testing::StartsWith(start));
    EXPECT_THAT(text, testing::EndsWith(end));
    return text.size() < start.size() + end.size()
               ? text
               : text.substr(start.size(), text.size() - start.size() - end.size());
  }
  Task readBack() {
    QList<Task> tasks;
    tasks.setAutoDelete(true);
    parser_.readVtodo(name_, tasks);
    EXPECT_EQ(tasks.count(), 1U);
    return tasks.isEmpty() ? Task() : *tasks.first();
  }

  LogCapture log_;
  TemporaryDirectory directory_;
  QString name_ = QString::fromStdString(directory_.path() / "ä.vcs");
  ZVtodoParser parser_;
};

TEST_F(VtodoWriter, NewRecordHasStatusAndPriority) {
  Task task;
  EXPECT_EQ(written(task), "STATUS:NEEDS ACTION\r\nPRIORITY:0\r\n");
  task.setString(Task::TASK_FIELD_SUMMARY, "");
  task.setString(Task::TASK_FIELD_NOTE, "");
  task.setString(Task::TASK_FIELD_CATEGORY, "");
  EXPECT_EQ(written(task), "STATUS:NEEDS ACTION\r\nPRIORITY:0\r\n");
  EXPECT_EQ(log_.text(), "");
}

TEST_F(VtodoWriter, WritesPropertiesInFixedOrder) {
  Task task;
  task.setUINT32(Task::TASK_FIELD_UID, 7);
  task.setString(Task::TASK_FIELD_UUID, "uuid");
  task.setString(Task::TASK_FIELD_SUMMARY, QString::fromUtf8("Käse"));
  task.setString(Task::TASK_FIELD_NOTE, "one\ntwo; three=3");
  task.setString(Task::TASK_FIELD_CATEGORY, "work");
  task.setDateTime(Task::TASK_FIELD_DUE, QDateTime(QDate(2006, 3, 5), QTime(23, 59)));
  task.setDateTime(Task::TASK_FIELD_END, QDateTime(QDate(2006, 3, 4), QTime(1, 2, 3)));
  task.setDateTime(Task::TASK_FIELD_ALARM, QDateTime(QDate(2006, 7, 4), QTime(8, 0)));
  task.setDateTime(Task::TASK_FIELD_REVISION, QDateTime(QDate(2006, 1, 1), QTime(0, 0)));
  task.setPriority(9);
  task.setStatus(0);
  EXPECT_EQ(written(task),
            "STATUS:COMPLETED\r\n"
            "SUMMARY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:K=C3=A4se\r\n"
            "DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:one=0Atwo=3B three=3D3\r\n"
            "CATEGORY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:work\r\n"
            "DUE:20060305T120000Z\r\n"
            "COMPLETED:20060304T000203Z\r\n"
            "DALARM:20060704T060000Z\r\n"
            "PRIORITY:9\r\n");
}

// DUE contains only a local date and is written for any year.
TEST_F(VtodoWriter, OmitsTimesBeyondFourDigitYears) {
  Task task;
  const QDateTime far(QDate(10000, 1, 2), QTime(12, 0));
  task.setDateTime(Task::TASK_FIELD_END, far);
  task.setDateTime(Task::TASK_FIELD_ALARM, far);
  EXPECT_EQ(written(task), "STATUS:NEEDS ACTION\r\nPRIORITY:0\r\n");
  EXPECT_THAT(log_.text(), HasSubstr("The year 10000 can't be written with four digits"));
}

TEST_F(VtodoWriter, EachStatusHasItsWord) {
  Task task;
  const auto statusLine = [&](int status) {
    task.setStatus(status);
    const std::string lines = written(task);
    return lines.substr(0, lines.find("\r\n"));
  };
  EXPECT_EQ(statusLine(0), "STATUS:COMPLETED");
  EXPECT_EQ(statusLine(1), "STATUS:NEEDS ACTION");
  EXPECT_EQ(statusLine(2), "STATUS:ACCEPTED");
  EXPECT_EQ(statusLine(3), "STATUS:SENT");
  EXPECT_EQ(statusLine(4), "STATUS:TENTATIVE");
  EXPECT_EQ(statusLine(5), "STATUS:CONFIRMED");
  EXPECT_EQ(statusLine(6), "STATUS:DECLINED");
  EXPECT_EQ(statusLine(7), "STATUS:DELEGATED");
  for (int other : {-1, 8, 9, 1000, -2147483647 - 1})
    EXPECT_EQ(statusLine(other), "STATUS:NEEDS ACTION") << other;
}

TEST_F(VtodoWriter, WritesPriorityUnchanged) {
  Task task;
  for (int priority : {0, 1, 12, -3}) {
    task.setPriority(priority);
    EXPECT_THAT(written(task), HasSubstr("PRIORITY:" + std::to_string(priority) + "\r\n"));
  }
}

TEST_F(VtodoWriter, DueDateIsLocalDayAtNoonUtc) {
  Task task;
  const auto dueOf = [&](const QDateTime& due) {
    task.setDateTime(Task::TASK_FIELD_DUE, due);
    const std::string lines = written(task);
    const std::size_t at = lines.find("DUE:");
    return at == lines.npos ? "none" : lines.substr(at + 4, lines.find("\r\n", at) - at - 4);
  };
  EXPECT_EQ(dueOf(QDateTime(QDate(2007, 1, 1), QTime(0, 0))), "20070101T120000Z");
  EXPECT_EQ(dueOf(QDateTime(QDate(2007, 10, 31), QTime(23, 59, 59))), "20071031T120000Z");
  EXPECT_EQ(dueOf(QDateTime(QDate(987, 9, 10), QTime(0, 0))), "9870910T120000Z");
  EXPECT_EQ(dueOf(Task::noDate()), "none");
  EXPECT_EQ(dueOf(QDateTime()), "none");
  // 2006-03-06 00:30 in Berlin.
  EXPECT_EQ(dueOf(QDateTime(QDate(2006, 3, 5), QTime(23, 30), ulo::utcZone)), "20060306T120000Z");
  EXPECT_EQ(dueOf(ulo::atOffset(QDate(2006, 3, 5), QTime(20, 30), -4 * 3600)), "20060306T120000Z");
  EXPECT_EQ(dueOf(QDateTime(QDate(2006, 3, 6), QTime(8, 0), QTimeZone("Asia/Tokyo"))),
            "20060306T120000Z");
  EXPECT_EQ(dueOf(QDateTime(QDate(2006, 3, 6), QTime(7, 0), QTimeZone("Asia/Tokyo"))),
            "20060305T120000Z");
  // A local time skipped by daylight saving.
  EXPECT_EQ(dueOf(QDateTime(QDate(2006, 3, 26), QTime(2, 30))), "20060326T120000Z");
}

TEST_F(VtodoWriter, OmitsUnsetDates) {
  Task task;
  task.setDateTime(Task::TASK_FIELD_END, QDateTime());
  task.setDateTime(Task::TASK_FIELD_ALARM, QDateTime());
  EXPECT_EQ(written(task), "STATUS:NEEDS ACTION\r\nPRIORITY:0\r\n");
}

TEST_F(VtodoWriter, TextsEndAtFirstZeroUnit) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, QString(QChar(0)) + "a");
  EXPECT_EQ(written(task), "STATUS:NEEDS ACTION\r\nPRIORITY:0\r\n");
  task.setString(Task::TASK_FIELD_SUMMARY, QString("a") + QChar(0) + "b");
  EXPECT_THAT(written(task), HasSubstr("PRINTABLE:a\r\n"));
}

TEST_F(VtodoWriter, WritesListInOrder) {
  QList<Task> tasks;
  Task first;
  Task second;
  first.setPriority(1);
  second.setPriority(2);
  tasks.append(&first);
  tasks.append(nullptr);
  tasks.append(&second);
  parser_.writeVtodo(name_, tasks);
  EXPECT_EQ(contents(), "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n"
                        "BEGIN:VTODO\r\nSTATUS:NEEDS ACTION\r\nPRIORITY:1\r\nEND:VTODO\r\n\r\n"
                        "BEGIN:VTODO\r\nSTATUS:NEEDS ACTION\r\nPRIORITY:2\r\nEND:VTODO\r\n\r\n"
                        "END:VCALENDAR\r\n\r\n");
}

TEST_F(VtodoWriter, WritesEmptyListAsEmptyCalendar) {
  QList<Task> tasks;
  parser_.writeVtodo(name_, tasks);
  EXPECT_EQ(contents(), "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nEND:VCALENDAR\r\n\r\n");
}

TEST_F(VtodoWriter, NullTaskLeavesFileUnchanged) {
  parser_.writeVtodo(name_, static_cast<Task*>(nullptr));
  EXPECT_FALSE(QFile::exists(name_));
  std::ofstream(name_.toStdString()) << "before";
  parser_.writeVtodo(name_, static_cast<Task*>(nullptr));
  EXPECT_EQ(contents(), "before");
  EXPECT_EQ(log_.text(), "");
}

TEST_F(VtodoWriter, ReplacesExistingFile) {
  std::ofstream(name_.toStdString()) << std::string(100000, 'x');
  Task task;
  written(task);
  EXPECT_LT(contents().size(), 200U);
}

TEST_F(VtodoWriter, LogsFileThatCannotBeOpened) {
  QList<Task> tasks;
  parser_.writeVtodo(QString::fromStdString(directory_.path() / "no" / "a.vcs"), tasks);
  EXPECT_EQ(log_.withoutLines(), "(utility/ZVtodoParser.cpp)Unable to open vcard write");
}

TEST_F(VtodoWriter, LeavesNoFileOpen) {
  const auto openFiles = [] {
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
  };
  Task task;
  written(task);
  const auto before = openFiles();
  written(task);
  readBack();
  EXPECT_EQ(openFiles(), before);
}

// Tasks are read back unchanged, except for the category and the alarm, which are written in a form
// that is not read.
TEST_F(VtodoWriter, TextsAreReadBackUnchanged) {
  const QString units = QString("aä日") + QString::fromUtf8("😀");
  QString longest;
  while (longest.size() < 4002)
    longest += units;
  longest.truncate(4002);
  const QStringList texts = {
      "a",
      "a\nb\n\nc",
      "a\r\nb\rc\n",
      "\n",
      " a ",
      "  ",
      "\ta\t",
      "a;b;;c; d;",
      ";",
      "=",
      "a=3Db=\n=",
      "a=",
      QString::fromUtf8("Käse 日本語 😀"),
      "a,b\\,c\\;d\\ne\\",
      "a:b\"c\"",
      "END:VTODO\nEND:VCALENDAR\n",
      "BEGIN:VTODO",
      QString("a").repeated(76),
      (QString("a").repeated(75) + " ").repeated(5),
      QString(" ").repeated(300),
      longest,
      QString("b\n").repeated(2001),
      "\x01\x1B\x7F",
      QString(QChar(0xFF)),
      QString(QChar(0xFFFF)),
      QString(QChar(0x2028)) + QChar(0x2029) + QChar(0x85),
  };
  for (const QString& text : texts) {
    Task task;
    task.setString(Task::TASK_FIELD_SUMMARY, text);
    task.setString(Task::TASK_FIELD_NOTE, text + "n");
    task.setString(Task::TASK_FIELD_CATEGORY, text);
    written(task);
    const Task back = readBack();
    EXPECT_EQ(back.getString(Task::TASK_FIELD_SUMMARY), text);
    EXPECT_EQ(back.getString(Task::TASK_FIELD_NOTE), text + "n");
    EXPECT_TRUE(back.getString(Task::TASK_FIELD_CATEGORY).isNull());
  }
}

TEST_F(VtodoWriter, OtherFieldsAreReadBack) {
  Task task;
  task.setStatus(1);
  task.setPriority(5);
  task.setDateTime(Task::TASK_FIELD_DUE, QDateTime(QDate(2006, 3, 5), QTime(12, 0), ulo::utcZone));
  task.setDateTime(Task::TASK_FIELD_END, QDateTime(QDate(2006, 3, 5), QTime(1, 2, 3)));
  task.setDateTime(Task::TASK_FIELD_ALARM, QDateTime(QDate(2006, 3, 5), QTime(1, 2, 3)));
  written(task);
  Task expected = task;
  expected.setStatus(0);  // a task with an end is completed
  expected.setDateTime(Task::TASK_FIELD_ALARM, Task::noDate());
  EXPECT_EQ(taskText(readBack()), taskText(expected));
}

// An unpaired surrogate cannot be encoded in UTF-8.
TEST_F(VtodoWriter, ReplacesUnpairedSurrogates) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, QString("a") + QChar(0xD83D));
  written(task);
  EXPECT_EQ(readBack().getString(Task::TASK_FIELD_SUMMARY), "a?");
}

TEST_F(VtodoWriter, KeepsByteOrderMarkInText) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, QString(QChar(0xFEFF)) + "a");
  task.setString(Task::TASK_FIELD_NOTE, QString("a") + QChar(0xFEFF));
  EXPECT_THAT(written(task), HasSubstr("SUMMARY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:"
                                       "=EF=BB=BFa\r\n"));
  EXPECT_EQ(readBack().getString(Task::TASK_FIELD_NOTE), QString("a") + QChar(0xFEFF));
}

TEST_F(VtodoWriter, ManyTasksAreReadBack) {
  QList<Task> tasks;
  tasks.setAutoDelete(true);
  for (int i = 0; i < 1000; ++i) {
    auto* task = new Task;
    task->setString(Task::TASK_FIELD_SUMMARY, QString::number(i));
    tasks.append(task);
  }
  parser_.writeVtodo(name_, tasks);
  parser_.readVtodo(name_, tasks);
  ASSERT_EQ(tasks.count(), 1000U);
  for (uint i = 0; i < 1000; ++i)
    ASSERT_EQ(tasks.at(i)->getString(Task::TASK_FIELD_SUMMARY), QString::number(i));
}

}  // namespace
