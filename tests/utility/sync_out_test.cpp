// The adaptor writes tasks as texts for a synchronization engine.

#include "sync_adaptor.h"

#include <sys/wait.h>
#include <thread>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// To a descriptor

TEST_F(SyncAdaptor, WritesTaskToDescriptor) {
  const unsigned int uid = add("Milk");
  const int fd = fileWith("");
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_THAT(scratch(), HasSubstr("BEGIN:VTODO\r\nSTATUS:NEEDS ACTION\r\n"));
  EXPECT_THAT(scratch(), HasSubstr("Milk"));
  EXPECT_EQ(static_cast<std::size_t>(size), scratch().size());
  EXPECT_FALSE(exists(outbound(uid)));
  EXPECT_THAT(messages(),
              ElementsAre("Starting getEvent with fd = " + std::to_string(fd) +
                              ", maxSize = 10000, uid = " + std::to_string(uid),
                          "The tmp file name is " + outbound(uid), "Returned from p.writeVtodo",
                          "Size of vtodo = " + std::to_string(size), "Copying to fd completed.",
                          "Exiting getEvent successfully"));
}

TEST_F(SyncAdaptor, WritesAtPositionOfDescriptor) {
  const unsigned int uid = add("Milk");
  const int fd = fileWith("0123456789");
  lseek(fd, 4, SEEK_SET);
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(scratch().substr(0, 9), "0123BEGIN");
  EXPECT_EQ(scratch().size(), static_cast<std::size_t>(size) + 4);
}

TEST_F(SyncAdaptor, WritesToPipe) {
  const unsigned int uid = add("Milk");
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(ends[1], size, 10000, uid), TASK_SYNCML_OK);
  close(ends[1]);
  std::string got(10000, '\0');
  got.resize(static_cast<std::size_t>(read(ends[0], got.data(), got.size())));
  close(ends[0]);
  EXPECT_EQ(got.size(), static_cast<std::size_t>(size));
  EXPECT_EQ(got.substr(0, 15), "BEGIN:VCALENDAR");
}

// The result is TASK_SYNCML_OK: errors of the descriptor are its owner's business.
TEST_F(SyncAdaptor, LogsDescriptorThatRejectsText) {
  const unsigned int uid = add("Milk");
  close(fileWith("kept"));
  const int readOnly = ::open((scratch_.path() / "item").c_str(), O_RDONLY);
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(readOnly, size, 10000, uid), TASK_SYNCML_OK);
  EXPECT_GT(size, 0);
  EXPECT_EQ(messageFromEnd(3), "the file descriptor does not take the whole vtodo!");
  close(readOnly);
  EXPECT_EQ(scratch(), "kept");
}

TEST_F(SyncAdaptor, WaitsForNonBlockingDescriptor) {
  const unsigned int uid = add("Milk");
  ZTASK_ENG_Task task;
  ASSERT_EQ(adaptor_.getTask(uid, task), TASK_ENG_OK);
  task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, QString(ZTASK_ENG_Task::noteLimit, u'\u00e4'));
  ASSERT_EQ(adaptor_.updateTask(task), TASK_ENG_OK);
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  ASSERT_EQ(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
  const int room = fcntl(ends[1], F_SETPIPE_SZ, 4096);
  std::string got;
  std::thread reader([&] {
    char bytes[1000];
    for (ssize_t count = 0; (count = read(ends[0], bytes, sizeof bytes)) > 0;)
      got.append(bytes, static_cast<std::size_t>(count));
  });
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(ends[1], size, 100'000, uid), TASK_SYNCML_OK);
  close(ends[1]);
  reader.join();
  close(ends[0]);
  EXPECT_GT(size, room);
  std::string text;
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OK);
  EXPECT_EQ(got, text);
}

TEST_F(SyncAdaptor, LargeItemStaysInFile) {
  const unsigned int uid = add("Milk");
  const int fd = fileWith("");
  int whole = 0;
  ASSERT_EQ(adaptor_.getEvent(fd, whole, 10000, uid), TASK_SYNCML_OK);
  const std::string item = scratch();
  close(fd);

  const int second = fileWith("");
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(second, size, whole - 1, uid), TASK_SYNCML_TOOLARGE);
  EXPECT_EQ(size, whole);
  EXPECT_EQ(scratch(), "");
  EXPECT_EQ(contents(outbound(uid)), item);
  EXPECT_EQ(messageFromEnd(2), "Size of vTodo file exceeds maxSize");
  EXPECT_EQ(messageFromEnd(1), "Exiting getEvent with TASK_SYNCML_TOOLARGE");

  EXPECT_EQ(adaptor_.getEvent(second, size, whole, uid), TASK_SYNCML_OK);
  close(second);
  EXPECT_EQ(scratch(), item);
  EXPECT_FALSE(exists(outbound(uid)));
}

TEST_F(SyncAdaptor, FailsIfTaskIsNotFound) {
  int size = 77;
  EXPECT_EQ(adaptor_.getEvent(1, size, 10000, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(size, 77);
  EXPECT_THAT(messages(),
              ElementsAre("Starting getEvent with fd = 1, maxSize = 10000, uid = 4711",
                          "Error Occured when getting a Task!", "Exiting getEvent abnormally"));
  std::string text = "kept";
  EXPECT_EQ(adaptor_.getEvent(text, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(messageFromEnd(1), "Error Occured when getting a Task!");
}

TEST_F(SyncAdaptor, FailsIfDirectoryAcceptsNoFiles) {
  const unsigned int uid = add("Milk");
  SyncAdaptorAccess::directory(adaptor_) = "/nowhere/at/all";
  int size = 77;
  EXPECT_EQ(adaptor_.getEvent(1, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(messageFromEnd(2), "Tmp file does not exist!");
  EXPECT_EQ(messageFromEnd(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
  std::string text = "kept";
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(messageFromEnd(1), "temp file is not exist!");
}

TEST_F(SyncAdaptor, KeepsFileThatCannotBeReopened) {
  const unsigned int uid = add("Milk");
  platform_.openForReadingFails = true;
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(1, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  platform_.openForReadingFails = false;
  EXPECT_GT(size, 0);
  EXPECT_TRUE(exists(outbound(uid)));
  EXPECT_EQ(messageFromEnd(2), "Could not obtain filedescriptor for temp file");
  EXPECT_EQ(messageFromEnd(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
}

TEST_F(SyncAdaptor, DoesNotSendIncompleteText) {
  const unsigned int uid = add(std::string(400, 'm'));
  const int fd = fileWith("");
  int size = 77;
  std::string text = "kept";
  {
    const FullDisk full(100);
    EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OTHERERROR);
    EXPECT_EQ(messageFromEnd(2), "the tmp file is not whole!");
    EXPECT_EQ(messageFromEnd(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
    EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
    EXPECT_EQ(messageFromEnd(1), "the tmp file is not whole!");
  }
  close(fd);
  EXPECT_EQ(scratch(), "");
  EXPECT_EQ(size, 77);
  EXPECT_EQ(text, "kept");
  EXPECT_FALSE(exists(outbound(uid)));
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OK);
}

// Files whose names others can guess

TEST_F(SyncAdaptor, ReplacesSymbolicLinkWithoutFollowingIt) {
  const unsigned int uid = add("Milk");
  const std::string target = scratch_.path() / "precious";
  std::ofstream(target) << "precious";
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(symlink(target.c_str(), outbound(uid).c_str()), 0);
    std::string text;
    const int fd = fileWith("");
    int size = 0;
    EXPECT_EQ(round == 0 ? adaptor_.getEvent(text, uid) : adaptor_.getEvent(fd, size, 10000, uid),
              TASK_SYNCML_OK);
    close(fd);
    EXPECT_THAT(round == 0 ? text : scratch(), HasSubstr("Milk"));
    EXPECT_EQ(contents(target), "precious");
    EXPECT_FALSE(exists(outbound(uid)));
  }
}

TEST_F(SyncAdaptor, NeitherOverwritesNorSendsFileThatCannotBeRemoved) {
  const unsigned int uid = add("Milk");
  std::ofstream(outbound(uid)) << "somebody else's";
  platform_.unlinkFails = true;
  const int fd = fileWith("");
  int size = 77;
  std::string text = "kept";
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(messageFromEnd(2), "the tmp file name is taken by another file!");
  EXPECT_EQ(messageFromEnd(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(messageFromEnd(1), "the tmp file name is taken by another file!");
  platform_.unlinkFails = false;
  close(fd);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(scratch(), "");
  EXPECT_EQ(contents(outbound(uid)), "somebody else's");
}

// Other users may remove files from some directories.
TEST_F(SyncAdaptor, DoesNotSendFileThatReplacedItsOwn) {
  const unsigned int uid = add("Milk");
  const auto replace = [&] {
    std::filesystem::remove(outbound(uid));
    std::ofstream(outbound(uid)) << milk;
  };
  const int fd = fileWith("");
  int size = 77;
  std::string text = "kept";
  platform_.beforeParserIsLoaded = replace;
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(messageFromEnd(2), "the tmp file name is taken by another file!");
  EXPECT_EQ(contents(outbound(uid)), milk);
  platform_.beforeParserIsLoaded = replace;
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(messageFromEnd(1), "the tmp file name is taken by another file!");
  EXPECT_EQ(contents(outbound(uid)), milk);
  close(fd);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(scratch(), "");
}

TEST_F(SyncAdaptor, FailsIfDirectoryHasNameOfFile) {
  const unsigned int uid = add("Milk");
  ASSERT_EQ(mkdir(outbound(uid).c_str(), 0700), 0);
  std::string text;
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(text, "");
  EXPECT_EQ(messageFromEnd(1), "the tmp file name is taken by another file!");
}

// Concurrent requests for one UID, by several stores and processes of the user

// Runs a second request at each point where it could interfere with the first one.
TEST_F(SyncAdaptor, HandlesConcurrentRequestsForOneUid) {
  const unsigned int uid = add("Milk");
  const DataDirectory otherDirectory;
  // Stores in one thread share a database, so the other one needs its own thread.
  const auto inOtherStore = [&](const std::function<void(TASK_ENG_SyncML&)>& use) {
    std::thread([&] {
      TASK_ENG_SyncML other;
      SyncAdaptorAccess::directory(other) = SyncAdaptorAccess::directory(adaptor_);
      use(other);
    }).join();
  };
  inOtherStore([&](TASK_ENG_SyncML& other) {
    ZTASK_ENG_Task bread;
    bread.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QStringLiteral("Bread"));
    EXPECT_EQ(other.addTask(bread), TASK_ENG_OK);
    EXPECT_EQ(bread.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), uid);
  });

  int requests = 0;
  const auto ask = [&] {
    ++requests;
    inOtherStore([&](TASK_ENG_SyncML& other) {
      std::string text;
      EXPECT_EQ(other.getEvent(text, uid), TASK_SYNCML_OK);
      EXPECT_THAT(text, AllOf(HasSubstr("Bread"), testing::EndsWith("END:VCALENDAR\r\n\r\n")));
    });
  };
  for (auto place : {&Platform::beforeParserIsLoaded, &Platform::beforeFileIsReopened}) {
    const int fd = fileWith("");
    int size = 0;
    platform_.*place = ask;
    EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OK);
    close(fd);
    EXPECT_EQ(scratch().size(), static_cast<std::size_t>(size));
    EXPECT_THAT(scratch(), AllOf(HasSubstr("Milk"), testing::EndsWith("END:VCALENDAR\r\n\r\n")));
  }
  platform_.beforeParserIsLoaded = ask;
  std::string text;
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OK);
  EXPECT_THAT(text, HasSubstr("Milk"));
  EXPECT_EQ(requests, 3);
  EXPECT_TRUE(std::filesystem::is_empty(temporary_.path()));
}

// Requests the text of the UID many times, in both ways. Returns how often it was not `whole`.
int failuresOfRacer(const QString& directory, const std::string& file, const std::string& whole) {
  constexpr int rounds = 50;
  TASK_ENG_SyncML adaptor;
  SyncAdaptorAccess::directory(adaptor) = directory;
  int failures = 0;
  for (int round = 0; round < rounds; ++round) {
    const int fd = ::open(file.c_str(), O_RDWR | O_CREAT | O_TRUNC, 0600);
    int size = 0;
    if (adaptor.getEvent(fd, size, 10000, 1) != TASK_SYNCML_OK || contents(file) != whole)
      ++failures;
    close(fd);
    std::string text;
    if (adaptor.getEvent(text, 1) != TASK_SYNCML_OK || text != whole)
      ++failures;
  }
  return failures;
}

TEST(SyncAdaptorRaces, EveryProcessGetsWholeText) {
  const DataDirectory directory;
  const TemporaryDirectory temporary;
  const TemporaryDirectory scratch;
  const LogCapture log;
  Platform nothingSpecial;
  platform = &nothingSpecial;
  const QString outbound = QString::fromStdString(temporary.path().string());
  const std::string expected = scratch.path() / "expected";
  int start[2];
  ASSERT_EQ(pipe(start), 0);
  // Forks before a store is open: a child must not use its parent's.
  std::vector<pid_t> racers;
  for (int i = 0; i < 4; ++i) {
    const pid_t racer = fork();
    ASSERT_GE(racer, 0);
    if (racer == 0) {
      close(start[1]);
      char ignored = 0;
      static_cast<void>(!read(start[0], &ignored, 1));  // until the parent closes it
      const std::string own = scratch.path() / std::to_string(i);
      _exit(std::min(failuresOfRacer(outbound, own, contents(expected)), 100));
    }
    racers.push_back(racer);
  }
  TASK_ENG_SyncML adaptor;
  SyncAdaptorAccess::directory(adaptor) = outbound;
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QStringLiteral("Milk"));
  EXPECT_EQ(adaptor.addTask(task), TASK_ENG_OK);
  EXPECT_EQ(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), 1);
  std::string whole;
  EXPECT_EQ(adaptor.getEvent(whole, 1), TASK_SYNCML_OK);
  std::ofstream(expected) << whole;
  close(start[0]);
  close(start[1]);
  for (const pid_t racer : racers) {
    int status = -1;
    EXPECT_EQ(waitpid(racer, &status, 0), racer);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
  }
  EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
  platform = nullptr;
}

TEST_F(SyncAdaptor, KeepsFileOfAnotherUser) {
  const unsigned int uid = add("Milk");
  std::ofstream(outbound(uid)) << milk;
  platform_.filesAreOfAnotherUser = true;
  std::string text;
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OK);
  EXPECT_THAT(text, HasSubstr("Milk"));
  const int fd = fileWith("");
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OK);
  EXPECT_EQ(scratch(), text);
  // The name under which the text would be kept is taken.
  EXPECT_EQ(adaptor_.getEvent(fd, size, size - 1, uid), TASK_SYNCML_TOOLARGE);
  close(fd);
  EXPECT_EQ(contents(outbound(uid)), milk);
  std::filesystem::remove(outbound(uid));
  EXPECT_TRUE(std::filesystem::is_empty(temporary_.path()));
}

TEST_F(SyncAdaptor, WritesFilesUnderTmp) {
  const TASK_ENG_SyncML fresh;
  EXPECT_EQ(SyncAdaptorAccess::directory(const_cast<TASK_ENG_SyncML&>(fresh)), QString("/tmp"));
}

// To a string

TEST_F(SyncAdaptor, AppendsTaskToString) {
  const unsigned int uid = add("Milk");
  std::string text = "front";
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OK);
  EXPECT_EQ(text.substr(0, 20), "frontBEGIN:VCALENDAR");
  EXPECT_THAT(text, testing::EndsWith("END:VCALENDAR\r\n\r\n"));
  EXPECT_FALSE(exists(outbound(uid)));
  EXPECT_THAT(messages(),
              ElementsAre("The tmp file name is " + outbound(uid), "Returned from p.writeVtodo"));
}

TEST_F(SyncAdaptor, KeepsFileIfMemoryIsShort) {
  const unsigned int uid = add("Milk");
  std::string text = "kept";
  platform_.callocFails = true;
  const int code = adaptor_.getEvent(text, uid);
  platform_.callocFails = false;
  EXPECT_EQ(code, TASK_SYNCML_NOMEMORY);
  EXPECT_EQ(text, "kept");
  EXPECT_TRUE(exists(outbound(uid)));
  EXPECT_EQ(messageFromEnd(1), "Memary is full!!!");
}

}  // namespace
