// An adaptor on the real database, with what the system and the bus do to it in a test's hand.
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

// What the system and the bus are to do.
struct Platform {
  std::vector<std::string> sent;  // "channel message data"
  bool noTemporaryFile = false;
  bool nothingCanBeRemoved = false;
  bool noMemory = false;
  bool noDescriptor = false;   // for reading
  bool isAnotherUser = false;  // whom the files of this process do not belong to
  // Called once each.
  std::function<void()> asAParserComes;
  std::function<void()> asAFileIsReadAgain;
};
extern Platform* platform;

// The directory of outbound files.
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

  // The adaptor's own messages.
  std::vector<std::string> lines() {
    return messagesOf(log_.withoutLines(), "utility/TASK_ENG_SyncML.cpp");
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
