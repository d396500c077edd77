// Sharing a task through the real launcher.

#include "TASK_UI_DetailView.h"
#include "ZTASK_ENG_Model.h"
#include "gui_test.h"
#include "log_capture.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <filesystem>
#include <fstream>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

class Outbound : public testing::Test {
protected:
  Outbound() {
    std::filesystem::create_directories(directory_.path() / "config/ulo");
    std::filesystem::create_directories(directory_.path() / "out");
    qputenv("XDG_CONFIG_HOME", (directory_.path() / "config").c_str());
    qputenv("XDG_STATE_HOME", (directory_.path() / "state").c_str());
    qputenv("ULO_LOCAL_APP_WRITE_PATH", (directory_.path() / "out").c_str());
  }
  ~Outbound() override {
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "ULO_LOCAL_APP_WRITE_PATH"})
      qunsetenv(name);
  }

  // Makes the message composer a script that records its argument and the file.
  void makeComposer(const char* wait) {
    const std::string program = directory_.path() / "composer";
    const std::string kept = directory_.path() / "kept";
    std::ofstream(program) << "#!/bin/sh\nprintf '%s\\n' \"$1\" > " << kept
                           << ".name\ncat \"$1\" > " << kept << ".part\nmv " << kept << ".part "
                           << kept << "\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    std::ofstream(directory_.path() / "config/ulo/applications.conf")
        << "[{220072c6-9008-468e-9968-11f3c50fa95e}]\nExec=" << program << " %f\nWait=" << wait
        << "\n";
  }
  std::string kept(const char* ending = "") {
    const std::string name = (directory_.path() / "kept").string();
    EXPECT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(name); }, 30'000));
    QFile file(QString::fromStdString(name + ending));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
  }
  [[nodiscard]] bool isOutEmpty() const {
    return std::filesystem::is_empty(directory_.path() / "out");
  }
  void send() {
    ZTASK_ENG_Task task;
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, QStringLiteral("Buy milk; 100 % \"fresh\""));
    ASSERT_EQ(store_.addTask(task), 0);
    TASK_UI_DetailView view(nullptr, nullptr, 0);
    view.openView(&task);
    view.sendToMessage();
  }

  DataDirectory directory_;
  LogCapture log_;
  ZTASK_ENG_Model store_;
};

TEST_F(Outbound, FileIsDeletedWhenComposerExits) {
  makeComposer("true");
  send();
  EXPECT_THAT(kept(), HasSubstr("Buy milk=3B 100 % \"fres"));
  EXPECT_THAT(kept(".name"),
              StartsWith((directory_.path() / "out/Buy milk; 100 % \"fre-").string()));
  EXPECT_TRUE(QTest::qWaitFor([this] { return isOutEmpty(); }, 30'000));
}

TEST_F(Outbound, FileIsKeptIfComposerIsNotWaitedFor) {
  makeComposer("false");
  send();
  EXPECT_THAT(kept(), HasSubstr("Buy milk"));
  finishEvents();
  EXPECT_FALSE(isOutEmpty());
}

}  // namespace
