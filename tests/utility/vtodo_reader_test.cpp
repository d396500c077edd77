#include "ZVtodoParser.h"

#include "EMAIL_Util.h"
#include "berlin_time.h"
#include "log_capture.h"
#include "task_text.h"
#include "temporary_directory.h"
#include "todo_values.h"
#include "utc_zone.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <fstream>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Task = ZTASK_ENG_Task;

namespace {

class Tasks : public QList<Task> {
public:
  Tasks() { setAutoDelete(true); }
};

std::string calendar(const std::string& items) {
  return "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + items + "END:VCALENDAR\r\n";
}

std::string todo(const std::string& lines) {
  return "BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n";
}

void readText(const std::string& text, QList<Task>& tasks) {
  ZVtodoParser parser;
  parser.readVtodo(QCString(text.c_str()), tasks);
}

// Reads a calendar whose only to-do has these lines, from memory and from a file.
Task read(const std::string& lines) {
  const LogCapture quiet;
  const std::string text = calendar(todo(lines));
  Tasks tasks;
  readText(text, tasks);
  const TemporaryDirectory directory;
  const std::string name = directory.path() / "ä.vcs";
  std::ofstream(name, std::ios::binary) << text;
  Tasks fromFile;
  ZVtodoParser parser;
  parser.readVtodo(QString::fromStdString(name), fromFile);
  EXPECT_EQ(tasks.count(), 1U);
  EXPECT_EQ(fromFile.count(), 1U);
  if (tasks.count() != 1 || fromFile.count() != 1)
    return {};
  EXPECT_EQ(taskText(*tasks.first()), taskText(*fromFile.first()));
  return *tasks.first();
}

std::vector<std::string> summaries(const QList<Task>& tasks) {
  std::vector<std::string> result;
  for (uint i = 0; i < tasks.count(); ++i)
    result.push_back(tasks.at(i)->getString(Task::TASK_FIELD_SUMMARY).toStdString());
  return result;
}

std::vector<std::string> summariesOf(const std::string& text) {
  const LogCapture quiet;
  Tasks tasks;
  readText(text, tasks);
  return summaries(tasks);
}

std::string logOf(const std::string& text) {
  LogCapture log;
  Tasks tasks;
  readText(text, tasks);
  return log.withoutLines();
}

std::string errorLine(const std::string& message) {
  return "(utility/ZVtodoParser.cpp)" + message;
}

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return QDateTime(QDate(year, month, day), QTime(hour, minute, second), ulo::utcZone)
      .toLocalTime();
}

TEST(VtodoReader, ReadsEmptyTodoAsNewRecord) {
  EXPECT_EQ(taskText(read("")), taskText(Task()));
}

TEST(VtodoReader, EachPropertySetsItsField) {
  const Task task = read("SUMMARY:s\r\nDESCRIPTION:d\r\nCATEGORIES:c\r\nSTATUS:SENT\r\n"
                         "PRIORITY:7\r\nDUE:20260305T120000Z\r\nCOMPLETED:20260306T010203Z\r\n"
                         "DALARM:20260304T080000Z;;;x;y\r\n");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "s");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE), "d");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_CATEGORY), "c");
  EXPECT_EQ(task.getStatusValue(), 3);
  EXPECT_EQ(task.getPriorityValue(), 7);
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE), utc(2026, 3, 5, 12));
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_END), utc(2026, 3, 6, 1, 2, 3));
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_ALARM), utc(2026, 3, 4, 8));
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE).timeSpec(), Qt::LocalTime);
}

// As in iCalendar 2.0. The time zone is ignored and escapes are kept.
TEST(VtodoReader, IgnoresTimeZonesAndKeepsEscapes) {
  const Task task = read("SUMMARY:a\\nb\\;c\\\\\r\nDUE;TZID=America/New_York:20260305T120000\r\n");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "a\\nb\\;c\\\\");
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_DUE), QDateTime(QDate(2026, 3, 5), QTime(12, 0)));
}

TEST(VtodoReader, IgnoresOtherProperties) {
  const Task task = read("CATEGORY:c\r\nUID:1\r\nX-UUID:2\r\nLAST-MODIFIED:20260305T120000Z\r\n"
                         "AALARM:20260304T080000Z;;;;x\r\nXSUMMARY:x\r\nSUMMARYX:x\r\n");
  EXPECT_EQ(taskText(task), taskText(Task()));
  EXPECT_EQ(task.getUINT32(Task::TASK_FIELD_UID), Task::notStored);
  EXPECT_TRUE(task.getString(Task::TASK_FIELD_UUID).isNull());
  EXPECT_EQ(task.getDateTime(Task::TASK_FIELD_REVISION), Task::noDate());
}

TEST(VtodoReader, PropertyWithoutValueLeavesFieldUnchanged) {
  EXPECT_EQ(taskText(read("SUMMARY:\r\nDESCRIPTION: \r\nDUE:\r\nPRIORITY:\r\nSTATUS:\r\n"
                          "COMPLETED:\r\nDALARM:\r\nCATEGORIES:\r\n")),
            taskText(Task()));
  EXPECT_EQ(read("SUMMARY:\r\nPRIORITY:3\r\n").getPriorityValue(), 3);
  EXPECT_EQ(read("SUMMARY:a\r\nSUMMARY:\r\n").getString(Task::TASK_FIELD_SUMMARY), "a");
}

TEST(VtodoReader, LastOfSeveralPropertiesCounts) {
  EXPECT_EQ(read("SUMMARY:a\r\nSUMMARY:b\r\n").getString(Task::TASK_FIELD_SUMMARY), "b");
}

// Status

struct Code {
  const char* text;
  int code;
};

TEST(VtodoReader, SearchesStatusWordsInOrder) {
  for (const Code& known : std::array<Code, 20>{{
           {"COMPLETED", 0},
           {"NEEDS ACTION", 1},
           {"uncompleted", 1},
           {"completed", 0},
           {"ACCEPTED", 2},
           {"SENT", 3},
           {"TENTATIVE", 4},
           {"CONFIRMED", 5},
           {"DECLINED", 6},
           {"DELEGATED", 7},
           {"", 8},
           {"NEEDS-ACTION", 8},
           {"IN-PROCESS", 8},
           {"Completed", 8},
           {"needs action", 8},
           {"NEEDS ACTION, not COMPLETED", 0},
           {"uncompleted NEEDS ACTION", 1},
           {"SENT and ACCEPTED", 2},
           {"it was SENT", 3},
           {"completed, DELEGATED", 0},
       }})
    EXPECT_EQ(ulo::getStatusValue(known.text), known.code) << known.text;
}

TEST(VtodoReader, ReadsSameStatusFromRepairedText) {
  EXPECT_EQ(read("STATUS:NEEDS ACTION\r\n").getStatusValue(), 1);
  EXPECT_EQ(read("STATUS:NEEDS-ACTION\r\n").getStatusValue(), 8);
  EXPECT_EQ(read("STATUS;X=\"1\":NEEDS-ACTION\r\n").getStatusValue(), 8);
}

TEST(VtodoReader, OrderOfStatusAndCompletedMatters) {
  const std::string end = "COMPLETED:20260306T010203Z\r\n";
  EXPECT_EQ(read("STATUS:NEEDS ACTION\r\n" + end).getStatusValue(), 0);
  EXPECT_EQ(read(end + "STATUS:NEEDS ACTION\r\n").getStatusValue(), 1);
  EXPECT_EQ(read(end).getStatusValue(), -1);
  EXPECT_EQ(read("STATUS:SENT\r\n" + end).getStatusValue(), 3);
  EXPECT_EQ(read("STATUS:unknown\r\n" + end).getStatusValue(), 8);
}

TEST(VtodoReader, PriorityIsNumberOrWord) {
  for (const Code& known : std::array<Code, 16>{{
           {"3", 3},
           {"12", 12},
           {"-3", -3},
           {"0", 0},
           {"+4", 4},
           {"2147483647", 2147483647},
           {"2147483648", 0},
           {"0x10", 0},
           {"3.0", 0},
           {"HIGH", 1},
           {"NORMAL", 2},
           {"LOW", 3},
           {"high", 0},
           {"HIGHER", 0},
           {"A HIGH", 0},
           {"", 0},
       }})
    EXPECT_EQ(ulo::getPriorityValue(known.text), known.code) << known.text;
  EXPECT_EQ(read("PRIORITY:NORMAL\r\n").getPriorityValue(), 2);
  EXPECT_EQ(read("PRIORITY:NORMAL\r\n").getPriority(), 1);
}

TEST(VtodoReader, ConversionsLogNothing) {
  LogCapture log;
  ulo::getStatusValue("SENT");
  ulo::getPriorityValue("1");
  EXPECT_EQ(log.text(), "");
}

// Dates

TEST(VtodoReader, TreatsDueDateOnFirstDayAsNone) {
  for (const char* none :
       {"19700101T000000Z", "19691231T235959Z", "19700101T225959Z", "tomorrow"}) {
    EXPECT_EQ(read(std::string("DUE:") + none + "\r\n").getDateTime(Task::TASK_FIELD_DUE),
              Task::noDate())
        << none;
    EXPECT_THAT(logOf(calendar(todo(std::string("DUE:") + none + "\r\n"))),
                HasSubstr(errorLine("It's local sync, no due")));
  }
  // Midnight of January 2 in Berlin.
  EXPECT_EQ(read("DUE:19700101T230000Z\r\n").getDateTime(Task::TASK_FIELD_DUE),
            utc(1970, 1, 1, 23));
  EXPECT_EQ(logOf(calendar(todo("DUE:19700101T230000Z\r\n"))), "");
}

TEST(VtodoReader, OtherDatesMayBeOnFirstDay) {
  EXPECT_EQ(read("COMPLETED:19700101T000000Z\r\n").getDateTime(Task::TASK_FIELD_END),
            utc(1970, 1, 1));
}

TEST(VtodoReader, AlarmNeedsItsOwnValue) {
  EXPECT_EQ(read("DALARM:20260304T080000Z\r\n").getDateTime(Task::TASK_FIELD_ALARM),
            Task::noDate());
  EXPECT_EQ(read("DALARM:20260304T080000Z;;;x\r\n").getDateTime(Task::TASK_FIELD_ALARM),
            Task::noDate());
  EXPECT_EQ(read("DALARM:20260304T080000Z;a;b;c;d\r\n").getDateTime(Task::TASK_FIELD_ALARM),
            utc(2026, 3, 4, 8));
  EXPECT_EQ(read("DALARM:;a;b;c;d\r\n").getDateTime(Task::TASK_FIELD_ALARM), Task::noDate());
}

// Character sets

struct CharsetCase {
  const char* name;
  const char* bytes;
  const char* text;
  const char* logged;
};

TEST(VtodoReader, DecodesDeclaredCharacterSet) {
  for (const CharsetCase& known : std::array<CharsetCase, 14>{{
           {"GBK", "=B9=BA", "购", "GBK"},
           {"GB2312", "=B9=BA", "购", "GB2312"},
           {"BIG5", "=C1=CA", "購", "BIG5"},
           {"UTF-7", "+jS0-", "购", "UTF-7"},
           {"UTF7", "+jS0-", "购", "UTF-7"},
           {"UTF-8", "=C3=A4", "ä", "UTF-8"},
           {"UTF8", "=C3=A4", "ä", "UTF-8"},
           {"utf-8", "=C3=A4", "ä", "UTF-8"},
           {"Gb2312", "=B9=BA", "购", "GB2312"},
           {"USASCII", "a", "a", "USASCII"},
           {"us-ascii", "a", "a", "USASCII"},
           {"ISO-8859-1", "=E4", "ä", "default unknow"},
           {"KOI8-R", "=C3=A4", "Ã¤", "default unknow"},
           {"UTF-16", "=C3=A4", "Ã¤", "default unknow"},
       }}) {
    const std::string lines = std::string("SUMMARY;CHARSET=") + known.name +
                              ";ENCODING=QUOTED-PRINTABLE:" + known.bytes + "\r\n";
    EXPECT_EQ(read(lines).getString(Task::TASK_FIELD_SUMMARY).toStdString(), known.text)
        << known.name;
    EXPECT_EQ(logOf(calendar(todo(lines))), errorLine(std::string("Charset is ") + known.logged))
        << known.name;
  }
}

TEST(VtodoReader, ReadsTextWithoutCharacterSetAsLatin1) {
  EXPECT_EQ(read("SUMMARY:K\xC3\xA4se\r\n").getString(Task::TASK_FIELD_SUMMARY),
            QString::fromUtf8("KÃ¤se"));
  EXPECT_EQ(logOf(calendar(todo("SUMMARY:a\r\n"))), errorLine("Charset is default unknow"));
}

TEST(VtodoReader, EachTextHasItsOwnCharacterSet) {
  const Task task = read("SUMMARY:\xE4\r\nDESCRIPTION;CHARSET=UTF-8:\xC3\xA4\r\n"
                         "CATEGORIES;CHARSET=GBK:\xB9\xBA\r\n");
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), QString::fromUtf8("ä"));
  EXPECT_EQ(task.getString(Task::TASK_FIELD_NOTE), QString::fromUtf8("ä"));
  EXPECT_EQ(task.getString(Task::TASK_FIELD_CATEGORY), QString::fromUtf8("购"));
}

TEST(VtodoReader, OnlyLastCharsetCounts) {
  EXPECT_EQ(read("SUMMARY;CHARSET=GBK;CHARSET=UTF-8:ä\r\n").getString(Task::TASK_FIELD_SUMMARY),
            QString::fromUtf8("ä"));
  EXPECT_EQ(read("SUMMARY;charset=UTF-8:ä\r\n").getString(Task::TASK_FIELD_SUMMARY),
            QString::fromUtf8("Ã¤"));
  EXPECT_EQ(read("SUMMARY;X=UTF-8:ä\r\n").getString(Task::TASK_FIELD_SUMMARY),
            QString::fromUtf8("Ã¤"));
}

// Whole texts

TEST(VtodoReader, ReadsTodosInOrderWithoutEvents) {
  EXPECT_THAT(
      summariesOf(calendar(todo("SUMMARY:1\r\n") + "BEGIN:VEVENT\r\nSUMMARY:e\r\nEND:VEVENT\r\n" +
                           todo("SUMMARY:2\r\n")) +
                  "BEGIN:VCARD\r\nN:x\r\nEND:VCARD\r\n" + calendar(todo("SUMMARY:3\r\n"))),
      ElementsAre("1", "2", "3"));
}

TEST(VtodoReader, ClearsListFirst) {
  const LogCapture quiet;
  Tasks tasks;
  tasks.append(new Task);
  tasks.append(new Task);
  readText(calendar(todo("SUMMARY:a\r\n")), tasks);
  EXPECT_THAT(summaries(tasks), ElementsAre("a"));
  readText("prose", tasks);
  EXPECT_TRUE(tasks.isEmpty());
  tasks.append(new Task);
  ZVtodoParser().readVtodo(QString("/missing"), tasks);
  EXPECT_TRUE(tasks.isEmpty());
}

TEST(VtodoReader, CallerOwnsRecordsWithoutAutoDelete) {
  const LogCapture quiet;
  QList<Task> tasks;
  readText(calendar(todo("SUMMARY:a\r\n")), tasks);
  ASSERT_EQ(tasks.count(), 1U);
  const std::unique_ptr<Task> task(tasks.first());
  readText(calendar(""), tasks);
  EXPECT_TRUE(tasks.isEmpty());
  EXPECT_EQ(task->getString(Task::TASK_FIELD_SUMMARY), "a");
}

TEST(VtodoReader, LogsTextThatIsNotCalendar) {
  for (const char* text : {"", "prose", "BEGIN:VTODO\r\nSUMMARY:a\r\nEND:VTODO\r\n",
                           "BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nSUMMARY:a\r\n"}) {
    EXPECT_THAT(summariesOf(text), IsEmpty());
    EXPECT_THAT(logOf(text), testing::EndsWith(errorLine("open object failed!!"))) << text;
  }
  LogCapture log;
  Tasks tasks;
  ZVtodoParser parser;
  parser.readVtodo(QString("/missing"), tasks);
  parser.readVtodo(QCString(), tasks);
  EXPECT_THAT(log.withoutLines(), HasSubstr(errorLine("open object failed!!")));
  EXPECT_TRUE(tasks.isEmpty());
}

TEST(VtodoReader, AcceptsCalendarWithoutTodos) {
  EXPECT_EQ(logOf(calendar("")), "");
  EXPECT_EQ(logOf("BEGIN:VCARD\r\nN:x\r\nEND:VCARD\r\n"), "");
}

TEST(VtodoReader, TextEndsAtFirstZeroByte) {
  const std::string whole = calendar(todo("SUMMARY:a\r\n"));
  const std::string both = whole + '\0' + whole;
  const LogCapture quiet;
  Tasks tasks;
  ZVtodoParser parser;
  parser.readVtodo(QCString(QByteArray(both.data(), static_cast<qsizetype>(both.size()))), tasks);
  EXPECT_EQ(tasks.count(), 1U);
}

TEST(VtodoReader, ReadsManyTodosFromFile) {
  const LogCapture quiet;
  const TemporaryDirectory directory;
  const std::string name = directory.path() / "many.vcs";
  {
    std::ofstream file(name, std::ios::binary);
    file << "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n";
    for (int i = 0; i < 10000; ++i)
      file << todo("SUMMARY:" + std::to_string(i) + "\r\nPRIORITY:1\r\n");
    file << "END:VCALENDAR\r\n";
  }
  Tasks tasks;
  ZVtodoParser parser;
  parser.readVtodo(QString::fromStdString(name), tasks);
  ASSERT_EQ(tasks.count(), 10000U);
  for (uint i = 0; i < tasks.count(); ++i)
    ASSERT_EQ(tasks.at(i)->getString(Task::TASK_FIELD_SUMMARY), QString::number(i));
}

TEST(VtodoReader, IsVtodoRequiresCalendarWithTodo) {
  const LogCapture quiet;
  const TemporaryDirectory directory;
  const std::string name = directory.path() / "a.vcs";
  const auto isVtodo = [&](const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
    return ZVtodoParser().isVtodo(QString::fromStdString(name));
  };
  EXPECT_TRUE(isVtodo(calendar(todo(""))));
  EXPECT_TRUE(isVtodo(calendar("") + calendar(todo("SUMMARY:\r\n")) + calendar("")));
  EXPECT_FALSE(isVtodo(calendar("")));
  EXPECT_FALSE(isVtodo(calendar("X:\r\n")));
  EXPECT_FALSE(isVtodo(calendar("BEGIN:VEVENT\r\nSUMMARY:VTODO\r\nEND:VEVENT\r\n")));
  EXPECT_FALSE(isVtodo(todo("SUMMARY:a\r\n")));
  EXPECT_FALSE(isVtodo("prose"));
  EXPECT_FALSE(isVtodo(""));
  EXPECT_FALSE(ZVtodoParser().isVtodo("/missing"));
  EXPECT_FALSE(ZVtodoParser().isVtodo("/dev/zero"));
}

}  // namespace
