// An adaptor on the real database, with a system and a bus that tests can make fail.
#pragma once

#include "TASK_ENG_SyncML.h"
#include "log_capture.h"
#include "log_messages.h"
#include "store_test.h"
#include "vcalendar_text.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

// What the system and the bus do, and what they were sent.
struct Platform {
  std::vector<std::string> sent;  // "channel message data"
  bool mkstempFails = false;
  bool unlinkFails = false;
  bool callocFails = false;
  bool busLacksMemory = false;
  bool openForReadingFails = false;
  bool filesAreOfAnotherUser = false;
  // Each is called once.
  std::function<void()> beforeParserIsLoaded;
  std::function<void()> beforeFileIsReopened;
};
extern Platform* platform;

// Sets the directory of outbound files.
struct SyncAdaptorAccess {
  static QString& directory(TASK_ENG_SyncML& adaptor) { return adaptor.tmpDir; }
};

inline constexpr char milk[] = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\nSUMMARY:Milk\r\n"
                               "STATUS:NEEDS ACTION\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";

inline std::string contents(const std::string& name) {
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

  // Adds a task with this summary. Returns its UID.
  unsigned int add(const std::string& summary) {
    ZTASK_ENG_Task task;
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QString::fromStdString(summary));
    EXPECT_EQ(adaptor_.addTask(task), TASK_ENG_OK);
    return task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  }
  QString summary(unsigned int uid) { return text(uid, ZTASK_ENG_Task::TASK_FIELD_SUMMARY); }
  QString text(unsigned int uid, ZTASK_ENG_Task::TASK_FIELD_T field) {
    ZTASK_ENG_Task task;
    EXPECT_EQ(adaptor_.getTask(uid, task), TASK_ENG_OK);
    return task.getString(field);
  }
  std::vector<unsigned int> ids() {
    std::vector<unsigned int> all;
    EXPECT_EQ(adaptor_.getAllIDs(all), TASK_SYNCML_OK);
    return all;
  }

  // Opens a new file with these bytes, positioned at its beginning.
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

  // The adaptor's own messages.
  std::vector<std::string> messages() {
    return messagesOf(log_.withoutLines(), "utility/TASK_ENG_SyncML.cpp");
  }
  // The last message if `place` is 1, the one before it if 2, and so on; empty if there are fewer.
  std::string messageFromEnd(std::size_t place) {
    const std::vector<std::string> all = messages();
    return place <= all.size() ? all[all.size() - place] : std::string();
  }

  DataDirectory directory_;
  TemporaryDirectory temporary_;
  TemporaryDirectory scratch_;
  LogCapture log_;
  Platform platform_;
  TASK_ENG_SyncML adaptor_;
};

// While it lives, files cannot grow beyond this many bytes, as on a disk that becomes full.
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
