// What the adaptor makes of the store's tasks for a synchronisation engine, and of its texts.

#include "TASK_ENG_SyncML.h"

#include "QCopChannel.h"
#include "berlin_time.h"
#include "export.h"
#include "log_capture.h"
#include "store_test.h"

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

// What the system and the bus are to do.
struct Platform {
  std::vector<std::string> sent;  // "channel message data"
  bool noTemporaryFile = false;
  bool nothingCanBeRemoved = false;
  bool noMemory = false;
  bool noDescriptor = false;  // for reading
  std::function<void()> asAParserComes;
};
Platform* platform = nullptr;

}  // namespace

extern "C" {
int __real_mkstemp(char* name);
ULO_EXPORT int __wrap_mkstemp(char* name);
int __wrap_mkstemp(char* name) {
  return platform != nullptr && platform->noTemporaryFile ? -1 : __real_mkstemp(name);
}

int __real_unlink(const char* name);
ULO_EXPORT int __wrap_unlink(const char* name);
int __wrap_unlink(const char* name) {
  if (platform == nullptr || !platform->nothingCanBeRemoved)
    return __real_unlink(name);
  errno = EPERM;
  return -1;
}

void* __real_calloc(std::size_t count, std::size_t size);
ULO_EXPORT void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return platform != nullptr && platform->noMemory ? nullptr : __real_calloc(count, size);
}

int __real_open(const char* name, int flags, mode_t mode);
ULO_EXPORT int __wrap_open(const char* name, int flags, ...);
int __wrap_open(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return platform != nullptr && platform->noDescriptor && flags == O_RDONLY
             ? -1
             : __real_open(name, flags, mode);
}

void* __real_dlopen(const char* name, int flags);
ULO_EXPORT void* __wrap_dlopen(const char* name, int flags);
void* __wrap_dlopen(const char* name, int flags) {
  if (platform != nullptr && platform->asAParserComes)
    platform->asAParserComes();
  return __real_dlopen(name, flags);
}

// QCopChannel::send(const QCString&, const QCString&, const QByteArray&)
ULO_EXPORT bool __wrap__ZN11QCopChannel4sendERK8QCStringS2_RK10QByteArray(const QCString& channel,
                                                                          const QCString& message,
                                                                          const QByteArray& data);
bool __wrap__ZN11QCopChannel4sendERK8QCStringS2_RK10QByteArray(const QCString& channel,
                                                               const QCString& message,
                                                               const QByteArray& data) {
  platform->sent.push_back(channel.toStdString() + ' ' + message.toStdString() +
                           (data.isEmpty() ? "" : " with data"));
  return true;
}
}

// The directory of outbound files, and the inbound steps by themselves.
struct SyncAdaptorAccess {
  static QString& directory(TASK_ENG_SyncML& adaptor) { return adaptor.tmpDir; }
};

namespace {

constexpr char milk[] = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\nSUMMARY:Milk\r\n"
                        "STATUS:NEEDS ACTION\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";

std::string todo(const std::string& lines) {
  return "BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n";
}
std::string calendar(const std::string& todos) {
  return "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + todos + "END:VCALENDAR\r\n";
}

std::string contents(const std::string& name) {
  std::ostringstream text;
  text << std::ifstream(name, std::ios::binary).rdbuf();
  return text.str();
}

class SyncAdaptor : public testing::Test {
protected:
  SyncAdaptor() {
    platform = &platform_;
    SyncAdaptorAccess::directory(adaptor_) = QString::fromStdString(temporary_.path().string());
  }
  ~SyncAdaptor() override { platform = nullptr; }

  // Adds a task with this summary; gives its UID.
  unsigned int add(const std::string& summary) {
    ZTASK_ENG_Task task;
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QString::fromStdString(summary));
    EXPECT_EQ(adaptor_.addTask(task), 0);
    return task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  }
  QString summary(unsigned int uid) { return text(uid, ZTASK_ENG_Task::TASK_FIELD_SUMMARY); }
  QString text(unsigned int uid, ZTASK_ENG_Task::TASK_FIELD_T field) {
    ZTASK_ENG_Task task;
    EXPECT_EQ(adaptor_.getTask(uid, task), 0);
    return task.getString(field);
  }
  std::vector<unsigned int> ids() {
    std::vector<unsigned int> all;
    EXPECT_EQ(adaptor_.getAllIDs(all), 0);
    return all;
  }

  // A descriptor of a new file with these bytes, at its beginning.
  int fileWith(const std::string& bytes) {
    const std::string name = scratch_.path() / "item";
    std::ofstream(name, std::ios::binary | std::ios::trunc) << bytes;
    return ::open(name.c_str(), O_RDWR);
  }
  std::string scratch() const { return contents(scratch_.path() / "item"); }

  [[nodiscard]] std::string outbound(unsigned int uid) const {
    return temporary_.path() / (std::to_string(uid) + ".vtodo");
  }
  static bool exists(const std::string& name) {
    struct stat status {};
    return lstat(name.c_str(), &status) == 0;
  }

  // The adaptor's own lines. Each line of the log begins with "(utility/" or "(platform/" and has
  // no end of its own.
  std::vector<std::string> lines() {
    const std::string all = log_.withoutLines();
    const std::string own = "(utility/TASK_ENG_SyncML.cpp)";
    const auto nextLine = [&all](std::size_t from) {
      return std::min({all.find("(utility/", from), all.find("(platform/", from), all.size()});
    };
    std::vector<std::string> found;
    for (std::size_t at = nextLine(0); at < all.size();) {
      const std::size_t end = nextLine(at + 1);
      if (all.compare(at, own.size(), own) == 0)
        found.push_back(all.substr(at + own.size(), end - at - own.size()));
      at = end;
    }
    return found;
  }
  // The last of them, the one before it and so on; empty when there are not so many.
  std::string said(std::size_t fromEnd) {
    const std::vector<std::string> all = lines();
    return fromEnd <= all.size() ? all[all.size() - fromEnd] : std::string();
  }

  DataDirectory directory_;
  TemporaryDirectory temporary_;
  TemporaryDirectory scratch_;
  LogCapture log_;
  Platform platform_;
  TASK_ENG_SyncML adaptor_;
};

// Files may not grow beyond so many bytes while it lives, as on a disk that is full then.
class FullDisk {
public:
  explicit FullDisk(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit{bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

private:
  rlimit before_{};
};

// Out, through a descriptor

TEST_F(SyncAdaptor, WritesATaskToADescriptor) {
  const unsigned int uid = add("Milk");
  const int fd = fileWith("");
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_THAT(scratch(), HasSubstr("BEGIN:VTODO\r\nSTATUS:NEEDS ACTION\r\n"));
  EXPECT_THAT(scratch(), HasSubstr("Milk"));
  EXPECT_EQ(static_cast<std::size_t>(size), scratch().size());
  EXPECT_FALSE(exists(outbound(uid)));
  EXPECT_THAT(lines(),
              ElementsAre("Starting getEvent with fd = " + std::to_string(fd) +
                              ", maxSize = 10000, uid = " + std::to_string(uid),
                          "The tmp file name is " + outbound(uid), "Returned from p.writeVtodo",
                          "Size of vtodo = " + std::to_string(size), "Copying to fd completed.",
                          "Exiting getEvent successfully"));
}

TEST_F(SyncAdaptor, WritesWhereTheDescriptorStands) {
  const unsigned int uid = add("Milk");
  const int fd = fileWith("0123456789");
  lseek(fd, 4, SEEK_SET);
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(scratch().substr(0, 9), "0123BEGIN");
  EXPECT_EQ(scratch().size(), static_cast<std::size_t>(size) + 4);
}

TEST_F(SyncAdaptor, WritesToAPipe) {
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

// Whether all bytes went out is for the owner of the descriptor to see.
TEST_F(SyncAdaptor, DoesNotLookAtWhatBecomesOfTheBytes) {
  const unsigned int uid = add("Milk");
  close(fileWith("kept"));
  const int readOnly = ::open((scratch_.path() / "item").c_str(), O_RDONLY);
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(readOnly, size, 10000, uid), TASK_SYNCML_OK);
  EXPECT_GT(size, 0);
  close(readOnly);
  EXPECT_EQ(scratch(), "kept");
}

TEST_F(SyncAdaptor, ALargeItemStaysInItsFile) {
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
  EXPECT_EQ(said(2), "Size of vTodo file exceeds maxSize");
  EXPECT_EQ(said(1), "Exiting getEvent with TASK_SYNCML_TOOLARGE");

  EXPECT_EQ(adaptor_.getEvent(second, size, whole, uid), TASK_SYNCML_OK);
  close(second);
  EXPECT_EQ(scratch(), item);
  EXPECT_FALSE(exists(outbound(uid)));
}

TEST_F(SyncAdaptor, ATaskThatIsNotThereIsNotFound) {
  int size = 77;
  EXPECT_EQ(adaptor_.getEvent(1, size, 10000, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(size, 77);
  EXPECT_THAT(lines(),
              ElementsAre("Starting getEvent with fd = 1, maxSize = 10000, uid = 4711",
                          "Error Occured when getting a Task!", "Exiting getEvent abnormally"));
  std::string text = "kept";
  EXPECT_EQ(adaptor_.getEvent(text, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(said(1), "Error Occured when getting a Task!");
}

TEST_F(SyncAdaptor, ADirectoryThatTakesNoFilesIsAnError) {
  const unsigned int uid = add("Milk");
  SyncAdaptorAccess::directory(adaptor_) = "/nowhere/at/all";
  int size = 77;
  EXPECT_EQ(adaptor_.getEvent(1, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(said(2), "Tmp file does not exist!");
  EXPECT_EQ(said(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
  std::string text = "kept";
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(said(1), "temp file is not exist!");
}

TEST_F(SyncAdaptor, AFileThatCannotBeReadAgainStays) {
  const unsigned int uid = add("Milk");
  platform_.noDescriptor = true;
  int size = 0;
  EXPECT_EQ(adaptor_.getEvent(1, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  platform_.noDescriptor = false;
  EXPECT_GT(size, 0);
  EXPECT_TRUE(exists(outbound(uid)));
  EXPECT_EQ(said(2), "Could not obtain filedescriptor for temp file");
  EXPECT_EQ(said(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
}

TEST_F(SyncAdaptor, HalfATextIsNotSent) {
  const unsigned int uid = add(std::string(400, 'm'));
  const int fd = fileWith("");
  int size = 77;
  std::string text = "kept";
  {
    const FullDisk full(100);
    EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OTHERERROR);
    EXPECT_EQ(said(2), "the tmp file is not whole!");
    EXPECT_EQ(said(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
    EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
    EXPECT_EQ(said(1), "the tmp file is not whole!");
  }
  close(fd);
  EXPECT_EQ(scratch(), "");
  EXPECT_EQ(size, 77);
  EXPECT_EQ(text, "kept");
  EXPECT_FALSE(exists(outbound(uid)));
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OK);
}

// Names that can be guessed

TEST_F(SyncAdaptor, ASymbolicLinkIsReplacedAndNotFollowed) {
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

TEST_F(SyncAdaptor, AFileThatCannotBeRemovedIsNeitherOverwrittenNorSent) {
  const unsigned int uid = add("Milk");
  std::ofstream(outbound(uid)) << "somebody else's";
  platform_.nothingCanBeRemoved = true;
  const int fd = fileWith("");
  int size = 77;
  std::string text = "kept";
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(said(2), "the tmp file name is taken by another file!");
  EXPECT_EQ(said(1), "Exiting getEvent with TASK_SYNCML_OTHERERROR");
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(said(1), "the tmp file name is taken by another file!");
  platform_.nothingCanBeRemoved = false;
  close(fd);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(scratch(), "");
  EXPECT_EQ(contents(outbound(uid)), "somebody else's");
}

// Where a directory lets others remove files.
TEST_F(SyncAdaptor, AFileThatTookTheNameMeanwhileIsNotSent) {
  const unsigned int uid = add("Milk");
  platform_.asAParserComes = [&] {
    std::filesystem::remove(outbound(uid));
    std::ofstream(outbound(uid)) << milk;
  };
  const int fd = fileWith("");
  int size = 77;
  std::string text = "kept";
  EXPECT_EQ(adaptor_.getEvent(fd, size, 10000, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(said(2), "the tmp file name is taken by another file!");
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(said(1), "the tmp file name is taken by another file!");
  close(fd);
  EXPECT_EQ(size, 77);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(scratch(), "");
}

TEST_F(SyncAdaptor, ADirectoryOfThatNameIsInTheWay) {
  const unsigned int uid = add("Milk");
  ASSERT_EQ(mkdir(outbound(uid).c_str(), 0700), 0);
  std::string text;
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(text, "");
  EXPECT_EQ(said(1), "the tmp file name is taken by another file!");
}

TEST_F(SyncAdaptor, FilesGoOutUnderTmp) {
  const TASK_ENG_SyncML fresh;
  EXPECT_EQ(SyncAdaptorAccess::directory(const_cast<TASK_ENG_SyncML&>(fresh)), QString("/tmp"));
}

// Out, in a string

TEST_F(SyncAdaptor, AppendsATaskToAString) {
  const unsigned int uid = add("Milk");
  std::string text = "front";
  EXPECT_EQ(adaptor_.getEvent(text, uid), TASK_SYNCML_OK);
  EXPECT_EQ(text.substr(0, 20), "frontBEGIN:VCALENDAR");
  EXPECT_THAT(text, testing::EndsWith("END:VCALENDAR\r\n\r\n"));
  EXPECT_FALSE(exists(outbound(uid)));
  EXPECT_THAT(lines(),
              ElementsAre("The tmp file name is " + outbound(uid), "Returned from p.writeVtodo"));
}

TEST_F(SyncAdaptor, WithoutMemoryTheFileStays) {
  const unsigned int uid = add("Milk");
  std::string text = "kept";
  platform_.noMemory = true;
  const int code = adaptor_.getEvent(text, uid);
  platform_.noMemory = false;
  EXPECT_EQ(code, TASK_SYNCML_NOMEMORY);
  EXPECT_EQ(text, "kept");
  EXPECT_TRUE(exists(outbound(uid)));
  EXPECT_EQ(said(1), "Memary is full!!!");
}

// In

TEST_F(SyncAdaptor, AddsWhatADescriptorHolds) {
  const int fd = fileWith(milk);
  lseek(fd, 30, SEEK_SET);
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(fd, 5, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(summary(uid), QString("Milk"));
  const std::string number = std::to_string(fd);
  EXPECT_THAT(lines(), ElementsAre("Starting addEvent with fd = " + number + ", size = 5",
                                   "Starting fileToTask with fd = " + number,
                                   "Exiting fileToTask successfully", "Adding task...",
                                   "Setting uid", "Exiting addEvent successfully"));
}

TEST_F(SyncAdaptor, AddsTheFirstOfSeveral) {
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

TEST_F(SyncAdaptor, CutsTextsToWhatTheStoreTakes) {
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

// More than one chunk of the copy.
TEST_F(SyncAdaptor, AddsALargeItem) {
  const std::string item =
      calendar(todo("SUMMARY:large\r\nX-FILL:" + std::string(30000, 'x') + "\r\nPRIORITY:7\r\n"));
  const int fd = fileWith(item);
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OK);
  close(fd);
  ZTASK_ENG_Task task;
  ASSERT_EQ(adaptor_.getTask(uid, task), 0);
  EXPECT_EQ(task.getPriorityValue(), 7);
}

TEST_F(SyncAdaptor, APipeCannotBeReadFromItsStart) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_GT(write(ends[1], milk, sizeof milk - 1), 0);
  close(ends[1]);
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(ends[0], 0, uid), TASK_SYNCML_OTHERERROR);
  close(ends[0]);
  EXPECT_EQ(uid, 77U);
  EXPECT_EQ(said(3), "Could not lseek to beginning of file!");
  EXPECT_EQ(said(2), "failed to get task from file descriptor!!");
  EXPECT_EQ(said(1), "Exiting addEvent with TASK_SYNCML_OTHERERROR");
  EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(SyncAdaptor, WithoutATemporaryFileNothingIsAdded) {
  const int fd = fileWith(milk);
  platform_.noTemporaryFile = true;
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  close(fd);
  EXPECT_THAT(lines(), Contains("Could not create temporary file"));
  EXPECT_THAT(ids(), IsEmpty());
}

// Half an item would take the place of a whole task.
TEST_F(SyncAdaptor, WhatCannotBeCopiedWholeIsNotStored) {
  const unsigned int uid = add("Milk");
  const int fd = fileWith(calendar(todo("SUMMARY:other\r\nDESCRIPTION:note\r\n")));
  {
    const FullDisk full(100);
    EXPECT_EQ(adaptor_.updateEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  }
  close(fd);
  EXPECT_THAT(lines(), Contains("Could not copy to the temporary file"));
  EXPECT_EQ(summary(uid), QString("Milk"));
}

TEST_F(SyncAdaptor, TextThatIsNoToDoIsRefused) {
  unsigned int uid = 77;
  for (const std::string& wrong :
       {std::string("no calendar"), calendar(""), std::string(milk).substr(0, 40)}) {
    const int fd = fileWith(wrong);
    EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
    close(fd);
    EXPECT_EQ(said(3), "the file is in wrong format or is empty!");
    EXPECT_EQ(said(2), "failed to get task from file descriptor!!");
    EXPECT_EQ(said(1), "Exiting addEvent with TASK_SYNCML_OTHERERROR");
    EXPECT_EQ(adaptor_.addEvent(wrong, uid), TASK_SYNCML_OTHERERROR);
    EXPECT_EQ(said(2), "the vtodo is in wrong format or is empty!");
    EXPECT_EQ(said(1), "failed to get task from string!!");
  }
  EXPECT_EQ(uid, 77U);
  EXPECT_THAT(ids(), IsEmpty());
}

TEST_F(SyncAdaptor, AnEmptyTextIsAWrongParameter) {
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(std::string(), uid), TASK_SYNCML_OTHERERROR);
  EXPECT_THAT(lines(), ElementsAre("the parameter is wrong!", "failed to get task from string!!"));
  const int fd = fileWith("");
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  close(fd);
}

TEST_F(SyncAdaptor, AStringIsReadUpToItsFirstZero) {
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(milk + std::string(1, '\0') + "rest", uid), TASK_SYNCML_OK);
  EXPECT_EQ(summary(uid), QString("Milk"));
  EXPECT_THAT(lines(), IsEmpty());
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

TEST_F(SyncAdaptor, AFullStoreIsOutOfMemory) {
  RawDatabase(directory_.path())
      .run("CREATE TRIGGER full BEFORE INSERT ON task_table_task BEGIN "
           "SELECT RAISE(FAIL, 'no'); END");
  unsigned int uid = 77;
  EXPECT_EQ(adaptor_.addEvent(milk, uid), TASK_SYNCML_OTHERERROR);
  EXPECT_EQ(said(1), "add record to database failed!!");
  const int fd = fileWith(milk);
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OTHERERROR);
  close(fd);
  EXPECT_EQ(said(2), "add record to database failed!!");
  EXPECT_EQ(said(1), "Exiting addEvent abnormally");
  EXPECT_EQ(uid, 77U);
}

// Over a task

TEST_F(SyncAdaptor, StoresATextOverATask) {
  const unsigned int uid = add("Bread");
  const QString uuid = text(uid, ZTASK_ENG_Task::TASK_FIELD_UUID);
  const int fd = fileWith(milk);
  EXPECT_EQ(adaptor_.updateEvent(fd, 9, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(summary(uid), QString("Milk"));
  EXPECT_EQ(text(uid, ZTASK_ENG_Task::TASK_FIELD_UUID), uuid);
  const std::string number = std::to_string(fd);
  EXPECT_THAT(lines(), ElementsAre("Starting updateEvent with fd = " + number +
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

TEST_F(SyncAdaptor, AnUpdateThatFailsLetsTheNextAdditionAdd) {
  EXPECT_EQ(adaptor_.updateEvent(milk, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(said(1), "add record to database failed!!");
  EXPECT_EQ(adaptor_.updateEvent("nothing", 4711), TASK_SYNCML_OTHERERROR);
  const int fd = fileWith(milk);
  EXPECT_EQ(adaptor_.updateEvent(fd, 0, 4711), TASK_SYNCML_NOTFOUND);
  EXPECT_EQ(said(1), "Exiting updateEvent");
  unsigned int uid = 0;
  EXPECT_EQ(adaptor_.addEvent(fd, 0, uid), TASK_SYNCML_OK);
  EXPECT_EQ(adaptor_.addEvent(milk, uid), TASK_SYNCML_OK);
  close(fd);
  EXPECT_EQ(ids().size(), 2U);
}

// Removal and lists

TEST_F(SyncAdaptor, RemovesTasksAndListsThem) {
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

TEST(SyncAdaptorWithoutStore, AnswersWithOneCode) {
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

TEST_F(SyncAdaptor, ARunThatChangedSomethingIsToldOnce) {
  const unsigned int first = add("one");
  const unsigned int second = add("two");
  adaptor_.beginSync(3);
  EXPECT_EQ(adaptor_.removeEvent(first), TASK_SYNCML_OK);
  EXPECT_EQ(adaptor_.removeEvent(second), TASK_SYNCML_OK);
  EXPECT_THAT(platform_.sent, IsEmpty());
  adaptor_.endSync();
  EXPECT_THAT(platform_.sent, ElementsAre("ULO_PIM_TASK_ENG_CHANNEL TASK_ENG_dataChanged"));
  EXPECT_EQ(said(1), "Sending db change msg to HSA!");
  adaptor_.endSync();
  adaptor_.beginSync(0);
  adaptor_.endSync();
  EXPECT_EQ(platform_.sent.size(), 1U);
}

TEST_F(SyncAdaptor, EachKindOfChangeIsTold) {
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

TEST_F(SyncAdaptor, WhatFailedIsNotTold) {
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
  EXPECT_THAT(lines(), Not(Contains("Sending db change msg to HSA!")));
}

TEST_F(SyncAdaptor, ChangesOutsideARunAreToldWithTheNextOne) {
  const unsigned int uid = add("one");
  EXPECT_EQ(adaptor_.removeEvent(uid), TASK_SYNCML_OK);
  adaptor_.endSync();
  EXPECT_THAT(platform_.sent, IsEmpty());
  adaptor_.beginSync(0);
  adaptor_.endSync();
  EXPECT_EQ(platform_.sent.size(), 1U);
}

}  // namespace
