// Import of calendar files.

#include "window/import.h"

#include "stored_text.h"
#include "tasks_test.h"
#include "ulo/descriptor.h"

#include <QSignalSpy>

#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using tasks::ImportResult;
using testing::ElementsAre;

namespace {

sqlite3* opened = nullptr;
int keepHandle(sqlite3* database, const char**, const void*) {
  opened = database;
  return SQLITE_OK;
}

// A store with room for a few tasks. It is created in another thread and therefore has its own
// connection.
struct SmallStore {
  SmallStore() {
    sqlite3_reset_auto_extension();
    EXPECT_EQ(sqlite3_exec(opened, "PRAGMA max_page_count = 60", nullptr, nullptr, nullptr),
              SQLITE_OK);
  }

  int watched = sqlite3_auto_extension(reinterpret_cast<void (*)()>(keepHandle));
  ZTASK_ENG_Model store;
};

// The result of importing the files without interruption.
ImportResult importFiles(ZTASK_ENG_Model& store, const QStringList& paths) {
  tasks::Import import(store);
  ImportResult result;
  int ends = 0;
  QObject::connect(&import, &tasks::Import::ended, [&](const ImportResult& given) {
    result = given;
    ++ends;
  });
  import.add(paths);
  import.finish();
  EXPECT_EQ(ends, 1);
  return result;
}

class Import : public Tasks {
protected:
  QString file(const char* name, const std::string& bytes) {
    const std::string path = files_.path() / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return QString::fromStdString(path);
  }
  static std::string calendar(const std::string& todos) {
    return "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + todos + "END:VCALENDAR\r\n";
  }
  static std::string todo(const std::string& summary, const std::string& more = {}) {
    return "BEGIN:VTODO\r\nSUMMARY;CHARSET=UTF-8:" + summary + "\r\n" + more + "END:VTODO\r\n";
  }
  // In iCalendar 2.0.
  static std::string icalendar(const std::string& todos) {
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//EN\r\n" + todos +
           "END:VCALENDAR\r\n";
  }
  static std::string icalTodo(const std::string& uid, const std::string& lines) {
    return "BEGIN:VTODO\r\nUID:" + uid + "\r\nDTSTAMP:20260101T000000Z\r\n" + lines +
           "END:VTODO\r\n";
  }
  static std::string text(unsigned int uid) {
    QByteArray text;
    EXPECT_EQ(ulo::readText(uid, text), ok);
    return text.toStdString();
  }
  std::vector<std::string> summaries() {
    std::vector<std::string> result;
    for (const unsigned int uid : allUids())
      result.push_back(stored(uid).getString(Task::TASK_FIELD_SUMMARY).toStdString());
    return result;
  }

  TemporaryDirectory files_;
};

TEST_F(Import, StoresEveryTodoOfEveryFile) {
  const ImportResult result =
      importFiles(store_, {file("one.vcs", calendar(todo("a") + todo("b"))),
                           file("two.vcs", calendar(todo("c")) + calendar(todo("d")))});
  EXPECT_EQ(result.imported, 4U);
  EXPECT_TRUE(result.unread.isEmpty());
  EXPECT_FALSE(result.storeFull || result.failed);
  EXPECT_THAT(summaries(), ElementsAre("a", "b", "c", "d"));
  EXPECT_EQ(result.lastUid, allUids().back());
}

TEST_F(Import, TextEndsAtFirstZeroByte) {
  EXPECT_EQ(
      importFiles(store_, {file("a", calendar(todo("a")) + '\0' + calendar(todo("b")))}).imported,
      1U);
}

TEST_F(Import, RecognizesIcalendarByItsText) {
  const std::string one = icalTodo("1", "SUMMARY:K\xc3\xa4se\\, Brot\r\nX-COLOR:red\r\n");
  const ImportResult result = importFiles(
      store_, {file("a.vcs", icalendar(one + icalTodo("2", "SUMMARY:b\r\nSTATUS:COMPLETED\r\n"))),
               file("b.ics", calendar(todo("c")))});
  EXPECT_EQ(result.imported, 3U);
  EXPECT_TRUE(result.unread.isEmpty());
  EXPECT_THAT(summaries(), ElementsAre("K\xc3\xa4se, Brot", "b", "c"));
  const Task first = stored(allUids()[0]);
  EXPECT_EQ(first.getString(Task::TASK_FIELD_UUID), "1");
  EXPECT_EQ(first.getStatusValue(), 1);
  EXPECT_EQ(text(allUids()[0]), icalendar(one));
  EXPECT_EQ(text(allUids()[2]), "");
}

TEST_F(Import, ReadsCalendarsOfBothVersions) {
  const std::string modern = icalendar(icalTodo("1", "SUMMARY:a\r\n"));
  const std::string old = calendar(todo("b"));
  for (const std::string& both : {modern + old, old + modern})
    EXPECT_EQ(importFiles(store_, {file("both.ics", both)}).unread.size(), 0);
  EXPECT_EQ(summaries(), (std::vector<std::string>{"a", "b", "b"}));
}

TEST_F(Import, KnownUidUpdatesItsTask) {
  const auto later = [](const std::string& lines) {
    return icalendar(icalTodo("1", lines) + icalTodo("2", "SUMMARY:b\r\n"));
  };
  const QString path = file("a.ics", later("SUMMARY:a\r\nPRIORITY:3\r\n"));
  EXPECT_EQ(importFiles(store_, {path}).imported, 2U);
  const ImportResult same = importFiles(store_, {path});
  EXPECT_EQ(same.imported + same.updated, 0U);
  EXPECT_EQ(same.present, 2U);
  const ImportResult result =
      importFiles(store_, {file("a.ics", later("SUMMARY:new\r\nPRIORITY:3\r\n"))});
  EXPECT_EQ(result.imported, 0U);
  EXPECT_EQ(result.updated, 1U);
  EXPECT_EQ(result.present, 1U);
  EXPECT_EQ(result.lastUid, allUids().back());
  EXPECT_THAT(summaries(), ElementsAre("new", "b"));
}

TEST_F(Import, NamesFilesWithoutTodos) {
  const QString directory = QString::fromStdString(files_.path().string());
  const QString pipe = directory + "/pipe";
  ASSERT_EQ(mkfifo(qPrintable(pipe), 0600), 0);
  // It contains a complete text.
  const ulo::Descriptor reader(open(qPrintable(pipe), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  const std::string text = calendar(todo("b"));
  ASSERT_EQ(write(ulo::Descriptor(open(qPrintable(pipe), O_WRONLY | O_CLOEXEC)).get(), text.data(),
                  text.size()),
            static_cast<ssize_t>(text.size()));
  const QStringList unread = {directory + "/missing",
                              directory,
                              pipe,
                              "/dev/zero",
                              QString(),
                              file("empty", ""),
                              file("text", "no calendar"),
                              file("event", calendar("")),
                              "file://" + file("url", "x")};
  const ImportResult result =
      importFiles(store_, QStringList{unread} << file("a.vcs", calendar(todo("a"))));
  EXPECT_EQ(result.unread, unread);
  EXPECT_EQ(result.imported, 1U);
  EXPECT_THAT(summaries(), ElementsAre("a"));
}

TEST_F(Import, LargerFilesAreNotRead) {
  const QString path = file("a.vcs", calendar(todo("a")));
  for (const qint64 size : {tasks::largestImport, tasks::largestImport + 1}) {
    std::filesystem::resize_file(path.toStdString(), static_cast<std::uintmax_t>(size));
    EXPECT_EQ(importFiles(store_, {path}).imported, size > tasks::largestImport ? 0U : 1U);
  }
}

TEST_F(Import, TruncatesTextsAtWholeLetters) {
  const std::string bicycle = "\xf0\x9f\x9a\xb2";
  const std::string note(Task::noteLimit - 1, 'n');
  const std::string summary(Task::summaryLimit - 1, 's');
  const QString path = file(
      "a.vcs",
      calendar(todo(summary + bicycle, "DESCRIPTION;CHARSET=UTF-8:" + note + bicycle + "\r\n") +
               todo(summary + "t")));
  EXPECT_EQ(importFiles(store_, {path}).imported, 2U);
  ASSERT_EQ(allUids().size(), 2U);
  const Task cut = stored(allUids()[0]);
  EXPECT_EQ(cut.getString(Task::TASK_FIELD_SUMMARY).toStdString(), summary);
  EXPECT_EQ(cut.getString(Task::TASK_FIELD_NOTE).toStdString(), note);
  EXPECT_EQ(stored(allUids()[1]).getString(Task::TASK_FIELD_SUMMARY).toStdString(), summary + "t");
}

TEST_F(Import, TodoWithoutStatusNeedsAction) {
  const QString path = file("a.vcs", calendar(todo("a") + todo("b", "STATUS:COMPLETED\r\n") +
                                              todo("c", "STATUS:DELEGATED\r\n")));
  EXPECT_EQ(importFiles(store_, {path}).imported, 3U);
  std::vector<int> statuses;
  for (const unsigned int uid : allUids())
    statuses.push_back(stored(uid).getStatusValue());
  EXPECT_THAT(statuses, ElementsAre(1, 0, 7));
}

TEST_F(Import, StopsIfStoreIsFull) {
  const QString many =
      file("a.vcs", calendar(todo("a", "DESCRIPTION:" + std::string(4000, 'n') + "\r\n")));
  ImportResult result;
  std::thread([&] {
    SmallStore store;
    result = importFiles(store.store, QStringList(100, many));
  }).join();
  EXPECT_TRUE(result.storeFull);
  EXPECT_FALSE(result.failed);
  EXPECT_GT(result.imported, 0U);
  EXPECT_EQ(result.imported, allUids().size());
  EXPECT_EQ(result.lastUid, allUids().back());
}

TEST_F(Import, StopsIfStoreFails) {
  raw_.run("create trigger refusal before insert on task_table_task when (select count(*) from"
           " task_table_task) = 2 begin select raise(abort, 'refused'); end");
  const ImportResult result =
      importFiles(store_, {file("a.vcs", calendar(todo("a") + todo("b") + todo("c"))),
                           file("b.vcs", calendar(todo("d")))});
  EXPECT_TRUE(result.failed);
  EXPECT_FALSE(result.storeFull);
  EXPECT_EQ(result.imported, 2U);
  EXPECT_THAT(summaries(), ElementsAre("a", "b"));
}

TEST_F(Import, TodosBeforeOneThatFailsKeepTheirTexts) {
  raw_.run("create trigger refusal before insert on task_table_task when new.priority = 9 begin"
           " select raise(abort, 'refused'); end");
  const ImportResult result =
      importFiles(store_, {file("a.ics", icalendar(icalTodo("1", "SUMMARY:a\r\n") +
                                                   icalTodo("2", "SUMMARY:b\r\nPRIORITY:9\r\n") +
                                                   icalTodo("3", "SUMMARY:c\r\n")))});
  EXPECT_TRUE(result.failed);
  EXPECT_EQ(result.imported, 1U);
  EXPECT_THAT(summaries(), ElementsAre("a"));
  EXPECT_EQ(text(allUids()[0]), icalendar(icalTodo("1", "SUMMARY:a\r\n")));
  EXPECT_THAT(raw_.run("select count(*) from ulo_texts"), ElementsAre("1"));
}

TEST_F(Import, ResultOfNothingIsEmpty) {
  const ImportResult result = importFiles(store_, {});
  EXPECT_EQ(result.imported, 0U);
  EXPECT_EQ(result.lastUid, Task::notStored);
}

TEST_F(Import, StoresManyBetweenOtherEvents) {
  std::string todos;
  for (int i = 0; i < 2000; ++i)
    todos += todo("x");
  tasks::Import import(store_);
  const QSignalSpy progress(&import, &tasks::Import::progressed);
  QSignalSpy ends(&import, &tasks::Import::ended);
  import.add({file("a.vcs", calendar(todos))});
  EXPECT_TRUE(allUids().empty());
  // Files that are added in the meantime are imported, too.
  ASSERT_TRUE(waitFor([&] { return progress.count() > 0; }));
  EXPECT_GT(progress[0][0].toUInt(), 0U);
  EXPECT_EQ(progress[0][1].toUInt(), 2000U);
  import.add({file("b.vcs", calendar(todo("y"))), "missing"});
  ASSERT_TRUE(waitFor([&] { return ends.count() > 0; }));
  EXPECT_GT(progress.count(), 2);
  const auto result = ends[0][0].value<ImportResult>();
  EXPECT_EQ(result.imported, 2001U);
  EXPECT_EQ(result.unread, QStringList{"missing"});
  EXPECT_EQ(allUids().size(), 2001U);
  import.finish();
  EXPECT_EQ(ends.count(), 1);
}

}  // namespace
