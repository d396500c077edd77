// The adaptor takes texts from a synchronization engine, and broadcasts a run's changes.

#include "failing_allocation.h"
#include "sync_adaptor.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

// Adding

TEST_F(SyncAdaptor, AddsTaskFromDescriptor) {
  const int fd = fileWith(milk);
  lseek(fd, 30, SEEK_SET);
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(fd, 5, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(summary(uid), QString("Milk"));
  const std::string number = std::to_string(fd);
  EXPECT_THAT(messages(), ElementsAre("Starting addEvent with fd = " + number + ", size = 5",
                                      "Starting fileToTask with fd = " + number,
                                      "Exiting fileToTask successfully", "Adding task...",
                                      "Setting uid", "Exiting addEvent successfully"));
}

TEST_F(SyncAdaptor, AddsFirstOfSeveralTodos) {
  const std::string two = calendar(todo("SUMMARY:one\r\n") + todo("SUMMARY:two\r\n"));
  const int fd = fileWith(two);
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(summary(uid), QString("one"));
  EXPECT_EQ(adaptor_.addEvent(two, uid), TASK_SYNCML_OK);
  EXPECT_EQ(summary(uid), QString("one"));
  EXPECT_EQ(ids().size(), 2U);
}

TEST_F(SyncAdaptor, TruncatesTextsToLimitsOfStore) {
  for (int extra : {-1, 0, 1, 88}) {
    const QString summary(512 + extra, 's');
    const QString note(4002 + extra, 'n');
    const std::string item = calendar(todo("SUMMARY:" + summary.toStdString() +
                                           "\r\nDESCRIPTION:" + note.toStdString() + "\r\n"));
    unsigned int uid = 0;
    ASSERT_EQ(adaptor_.addEvent(item, uid), TASK_SYNCML_OK);
    EXPECT_EQ(text(uid, ZTASK_ENG_Task::TASK_FIELD_SUMMARY), summary.left(512));
    EXPECT_EQ(text(uid, ZTASK_ENG_Task::TASK_FIELD_NOTE), note.left(4002));
    const int fd = fileWith(item);
    ASSERT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OK);
    close(fd);
    EXPECT_EQ(text(uid, ZTASK_ENG_Task::TASK_FIELD_SUMMARY), summary.left(512));
    EXPECT_EQ(text(uid, ZTASK_ENG_Task::TASK_FIELD_NOTE), note.left(4002));
  }
}

TEST_F(SyncAdaptor, StoresStatusAsItIsRead) {
  constexpr std::pair<const char*, int> cases[] = {
      {"", -1}, {"STATUS:NEEDS-ACTION\r\n", 8}, {"STATUS:NEEDS ACTION\r\n", 1}};
  for (const auto& [line, status] : cases) {
    unsigned int uid = 0;
    ASSERT_EQ(adaptor_.addEvent(calendar(todo(line)), uid), TASK_SYNCML_OK);
    ZTASK_ENG_Task task;
    ASSERT_EQ(adaptor_.getTask(uid, task), TASK_ENG_OK);
    EXPECT_EQ(task.getStatusValue(), status) << line;
  }
}

// The item is copied in several chunks.
TEST_F(SyncAdaptor, AddsLargeItem) {
  const std::string item =
      calendar(todo("SUMMARY:large\r\nX-FILL:" + std::string(30000, 'x') + "\r\nPRIORITY:7\r\n"));
  const int fd = fileWith(item);
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OK);
  close(fd);
  ZTASK_ENG_Task task;
  ASSERT_EQ(adaptor_.getTask(uid, task), TASK_ENG_OK);
  EXPECT_EQ(task.getPriorityValue(), 7);
}

TEST_F(SyncAdaptor, RejectsPipe) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_GT(write(ends[1], milk, sizeof milk - 1), 0);
  close(ends[1]);
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(ends[0], 0, uid), TASK_SYNCML_OTHERERROR);
  close(ends[0]);
  EXPECT_EQ(uid, 77U);
  EXPECT_EQ(messageFromEnd(3), "Could not lseek to beginning of file!");
  EXPECT_EQ(messageFromEnd(2), "failed to get task from file descriptor!!");
  EXPECT_EQ(messageFromEnd(1), "Exiting addEvent with TASK_SYNCML_OTHERERROR");
  EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(SyncAdaptor, AddsNothingWithoutTemporaryFile) {
  const int fd = fileWith(milk);
  platform_.mkstempFails = true;
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  close(fd);
  EXPECT_THAT(messages(), Contains("Could not create temporary file"));
  EXPECT_THAT(ids(), IsEmpty());
}

// An incomplete item must not replace a complete task.
TEST_F(SyncAdaptor, StoresNothingIfCopyIsIncomplete) {
  const unsigned int uid = add("Milk");
  const int fd = fileWith(calendar(todo("SUMMARY:other\r\nDESCRIPTION:note\r\n")));
  {
    const FullDisk full(100);
    EXPECT_EQ(adaptor_.updateEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  }
  close(fd);
  EXPECT_THAT(messages(), Contains("Could not copy to the temporary file"));
  EXPECT_EQ(summary(uid), QString("Milk"));
}

TEST_F(SyncAdaptor, RejectsTextWithoutTodo) {
  unsigned int uid = 77;
  for (const std::string& wrong :
       {std::string("no calendar"), calendar(""), std::string(milk).substr(0, 40)}) {
    const int fd = fileWith(wrong);
    EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
    close(fd);
    EXPECT_EQ(messageFromEnd(3), "the file is in wrong format or is empty!");
    EXPECT_EQ(messageFromEnd(2), "failed to get task from file descriptor!!");
    EXPECT_EQ(messageFromEnd(1), "Exiting addEvent with TASK_SYNCML_OTHERERROR");
    EXPECT_EQ(adaptor_.addEvent(wrong, uid), TASK_SYNCML_OTHERERROR);
    EXPECT_EQ(messageFromEnd(2), "the vtodo is in wrong format or is empty!");
    EXPECT_EQ(messageFromEnd(1), "failed to get task from string!!");
  }
  EXPECT_EQ(uid, 77U);
  EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(SyncAdaptor, RejectsEmptyText) {
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(std::string(), uid), TASK_SYNCML_OTHERERROR);
  EXPECT_THAT(messages(),
              ElementsAre("the parameter is wrong!", "failed to get task from string!!"));
  const int fd = fileWith("");
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  close(fd);
}

TEST_F(SyncAdaptor, ReadsStringUpToFirstZero) {
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(milk + std::string(1, '\0') + "rest", uid), TASK_SYNCML_OK);
  EXPECT_EQ(summary(uid), QString("Milk"));
  EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(SyncAdaptor, LeavesNoInboundFile) {
  const auto inbound = [] {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
      count += entry.path().filename().string().starts_with("vtodo") &&
                       entry.path().filename().string().size() == 11
                   ? 1
                   : 0;
    return count;
  };
  const int before = inbound();
  for (const std::string& item : {std::string(milk), std::string("nothing")}) {
    const int fd = fileWith(item);
    unsigned int uid = 0;
    adaptor_.addEvent(fd, 0, uid);
    close(fd);
  }
  EXPECT_EQ(inbound(), before);
}

TEST_F(SyncAdaptor, FailsIfStoreRejectsTask) {
  RawDatabase(directory_.path())
      .run("CREATE TRIGGER full BEFORE INSERT ON task_table_task BEGIN "
           "SELECT RAISE(FAIL, 'no'); END");
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(milk, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(messageFromEnd(1), "add record to database failed!!");
  const int fd = fileWith(milk);
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  close(fd);
  EXPECT_EQ(messageFromEnd(2), "add record to database failed!!");
  EXPECT_EQ(messageFromEnd(1), "Exiting addEvent abnormally");
  EXPECT_EQ(uid, 77U);
}

// Updating

TEST_F(SyncAdaptor, UpdatesTaskFromText) {
  const unsigned int uid = add("Bread");
  const QString uuid = text(uid, ZTASK_ENG_Task::TASK_FIELD_UUID);
  const int fd = fileWith(milk);
  EXPECT_EQ(adaptor_.updateEvent(fd, 9, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(summary(uid), QString("Milk"));
  EXPECT_EQ(text(uid, ZTASK_ENG_Task::TASK_FIELD_UUID), uuid);
  const std::string number = std::to_string(fd);
  EXPECT_THAT(messages(), ElementsAre("Starting updateEvent with fd = " + number +
                                          ", size = 9, uid = " + std::to_string(uid),
                                      "Starting addEvent with fd = " + number + ", size = 9",
                                      "Starting fileToTask with fd = " + number,
                                      "Exiting fileToTask successfully", "Updating task...",
                                      "Exiting addEvent successfully",
                                      "Status returned by addEvent = 0", "Exiting updateEvent"));
  EXPECT_EQ(adaptor_.updateEvent(calendar(todo("SUMMARY:Eggs\r\n")), uid), TASK_SYNCML_OK);
  EXPECT_EQ(summary(uid), QString("Eggs"));
  EXPECT_EQ(ids().size(), 1U);
}

TEST_F(SyncAdaptor, AddsTaskAfterFailedUpdate) {
  EXPECT_EQ(adaptor_.updateEvent(milk, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(messageFromEnd(1), "add record to database failed!!");
  EXPECT_EQ(adaptor_.updateEvent("nothing", 4711), TASK_SYNCML_OTHERERROR);
  const int fd = fileWith(milk);
  EXPECT_EQ(adaptor_.updateEvent(fd, 0, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(messageFromEnd(1), "Exiting updateEvent");
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OK);
  EXPECT_EQ(adaptor_.addEvent(milk, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(ids().size(), 2U);
}

// Removing and listing

TEST_F(SyncAdaptor, RemovesAndListsTasks) {
  const unsigned int first = add("one");
  const unsigned int second = add("two");
  std::vector<unsigned int> list = {99};
  EXPECT_EQ(adaptor_.getAllIDs(list), TASK_SYNCML_OK);
  EXPECT_THAT(list, ElementsAre(99, first, second));
  EXPECT_EQ(adaptor_.removeEvent(first), TASK_SYNCML_OK);
  EXPECT_EQ(adaptor_.removeEvent(first), TASK_SYNCML_NOTFOUND);
  EXPECT_THAT(ids(), ElementsAre(second));
  EXPECT_EQ(adaptor_.removeAll(), TASK_SYNCML_OK);
  EXPECT_THAT(ids(), IsEmpty());
}

TEST(SyncAdaptorWithoutStore, ReturnsOtherError) {
  setenv("ULO_DATA_DIR", "/proc/nowhere", 1);
  LogCapture log;
  TASK_ENG_SyncML adaptor;
  unsigned int uid = 77;
  std::string text;
  std::vector<unsigned int> list = {99};
  int size = 0;
  EXPECT_EQ(adaptor.getEvent(text, 1), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(adaptor.getEvent(1, size, 10, 1), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(adaptor.addEvent(milk, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(adaptor.updateEvent(milk, 1), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(adaptor.removeEvent(1), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(adaptor.removeAll(), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(adaptor.getAllIDs(list), TASK_SYNCML_OTHERERROR);
  EXPECT_THAT(list, ElementsAre(99));
  unsetenv("ULO_DATA_DIR");
}

// Runs

TEST_F(SyncAdaptor, BroadcastsOncePerRunWithChanges) {
  const unsigned int first = add("one");
  const unsigned int second = add("two");
  adaptor_.beginSync(3);
  EXPECT_EQ(adaptor_.removeEvent(first), TASK_SYNCML_OK);
  EXPECT_EQ(adaptor_.removeEvent(second), TASK_SYNCML_OK);
  EXPECT_THAT(platform_.sent, IsEmpty());
  adaptor_.endSync();
  EXPECT_THAT(platform_.sent, ElementsAre("ULO_PIM_TASK_ENG_CHANNEL TASK_ENG_dataChanged"));
  EXPECT_EQ(messageFromEnd(1), "Sending db change msg to HSA!");
  adaptor_.endSync();
  adaptor_.beginSync(0);
  adaptor_.endSync();
  EXPECT_EQ(platform_.sent.size(), 1U);
}

TEST_F(SyncAdaptor, BroadcastsEachKindOfChange) {
  const unsigned int uid = add("one");
  unsigned int added = 0;
  const int fd = fileWith(milk);
  const std::vector<std::function<int()>> changes = {
      [&] { return adaptor_.addEvent(milk, added); },
      [&] { return adaptor_.addEvent(fd, 0, added); },
      [&] { return adaptor_.updateEvent(milk, uid); },
      [&] { return adaptor_.updateEvent(fd, 0, uid); },
      [&] { return adaptor_.removeEvent(uid); },
      [&] { return adaptor_.removeAll(); },
  };
  std::size_t told = 0;
  for (const auto& change : changes) {
    adaptor_.beginSync(0);
    EXPECT_EQ(change(), TASK_SYNCML_OK);
    adaptor_.endSync();
    EXPECT_EQ(platform_.sent.size(), ++told);
  }
  close(fd);
}

TEST_F(SyncAdaptor, DoesNotBroadcastFailures) {
  add("one");
  unsigned int uid = 0;
  std::string text;
  adaptor_.beginSync(0);
  EXPECT_NE(adaptor_.removeEvent(4711), TASK_SYNCML_OK);
  EXPECT_NE(adaptor_.addEvent("nothing", uid), TASK_SYNCML_OK);
  EXPECT_NE(adaptor_.updateEvent(milk, 4711), TASK_SYNCML_OK);
  EXPECT_EQ(adaptor_.getEvent(text, ids().front()), TASK_SYNCML_OK);
  adaptor_.endSync();
  EXPECT_THAT(platform_.sent, IsEmpty());
  EXPECT_THAT(messages(), Not(Contains("Sending db change msg to HSA!")));
}

TEST_F(SyncAdaptor, BroadcastsChangesOutsideRunWithNextRun) {
  const unsigned int uid = add("one");
  EXPECT_EQ(adaptor_.removeEvent(uid), TASK_SYNCML_OK);
  adaptor_.endSync();
  EXPECT_THAT(platform_.sent, IsEmpty());
  adaptor_.beginSync(0);
  adaptor_.endSync();
  EXPECT_EQ(platform_.sent.size(), 1U);
}

TEST_F(SyncAdaptor, BroadcastsChangesOfRunWithoutMemoryWithNextRun) {
  const unsigned int uid = add("one");
  adaptor_.beginSync(0);
  EXPECT_EQ(adaptor_.removeEvent(uid), TASK_SYNCML_OK);
  platform_.busLacksMemory = true;
  adaptor_.endSync();
  EXPECT_EQ(messageFromEnd(1), "Memary is full!!!");
  platform_.busLacksMemory = false;
  adaptor_.endSync();
  EXPECT_THAT(platform_.sent, IsEmpty());
  adaptor_.beginSync(0);
  adaptor_.endSync();
  EXPECT_EQ(platform_.sent.size(), 1U);
}

// Without memory

// Repeats an operation, with a different allocation failing each time. Returns the result codes.
template <typename Operation> std::vector<int> codesWithoutMemory(Operation operation) {
#ifdef __SANITIZE_ADDRESS__
  // Without memory for a record, the reader leaves the tree of the vObject library: a contract.
  const __lsan::ScopedDisabler leaksAreKnown;
#endif
  std::vector<int> codes;
  int code = TASK_SYNCML_OK;
  while (withoutMemory(static_cast<int>(codes.size()), false, [&] { code = operation(); }))
    codes.push_back(code);
  EXPECT_EQ(code, TASK_SYNCML_OK);
  return codes;
}

TEST_F(SyncAdaptor, ReadsWholeItemOrNothingWithoutMemory) {
  const unsigned int uid = add(std::string(100, 'a'));
  std::string whole;
  ASSERT_EQ(adaptor_.getEvent(whole, uid), TASK_SYNCML_OK);
  std::string text;
  const std::vector<int> codes = codesWithoutMemory([&] {
    text.clear();
    const int code = adaptor_.getEvent(text, uid);
    const bool isRight = code == TASK_SYNCML_OK ? text == whole : text.empty();
    return isRight ? code : -1;
  });
  EXPECT_THAT(codes, Contains(TASK_SYNCML_NOMEMORY));
  EXPECT_THAT(codes, Not(Contains(-1)));
}

TEST_F(SyncAdaptor, AddsItemOrNothingWithoutMemory) {
  const std::string item = milk;
  std::vector<unsigned int> added;
  const std::vector<int> codes = codesWithoutMemory([&] {
    unsigned int uid = 0;
    const int code = adaptor_.addEvent(item, uid);
    if (code == TASK_SYNCML_OK)
      added.push_back(uid);
    return uid == 0 || code == TASK_SYNCML_OK ? code : -1;
  });
  EXPECT_THAT(codes, Contains(TASK_SYNCML_NOMEMORY));
  EXPECT_THAT(codes, Not(Contains(-1)));
  EXPECT_EQ(ids(), added);
}

TEST_F(SyncAdaptor, UpdatesTaskOrNothingWithoutMemory) {
  const unsigned int uid = add("before");
  const std::string item = milk;
  const std::vector<int> codes =
      codesWithoutMemory([&] { return adaptor_.updateEvent(item, uid); });
  EXPECT_THAT(codes, Contains(TASK_SYNCML_NOMEMORY));
  EXPECT_THAT(ids(), ElementsAre(uid));
  // The mode of updateEvent ended with it.
  unsigned int added = 0;
  EXPECT_EQ(adaptor_.addEvent(item, added), TASK_SYNCML_OK);
  EXPECT_THAT(ids(), ElementsAre(uid, added));
}

}  // namespace
