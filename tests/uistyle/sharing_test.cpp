// Sharing a task as an attachment of a message and over Bluetooth.

#include "TASK_ENG_SyncML.h"
#include "ZTASK_ENG_Model.h"
#include "screen_test.h"

#include <QDir>
#include <QFile>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char composer[] = "{220072c6-9008-468e-9968-11f3c50fa95e} SendMMSSMS Files=";

class Sharing : public Screen {
protected:
  Sharing() {
    setEngineNow(QDateTime(QDate(2007, 3, 15), QTime(9, 30, 5)));
    qputenv("ULO_LOCAL_APP_WRITE_PATH", out_.path().c_str());
  }
  ~Sharing() override {
    qunsetenv("ULO_LOCAL_APP_WRITE_PATH");
    setEngineNow(QDateTime());
  }

  // Stores a task and opens it in a view.
  std::unique_ptr<TASK_UI_DetailView> viewOf(const QString& summary) {
    task_.setString(Task::TASK_FIELD_SUMMARY, summary);
    EXPECT_EQ(store_.addTask(task_), 0);
    auto view = std::make_unique<TASK_UI_DetailView>(nullptr, nullptr, 0);
    view->openView(&task_);
    return view;
  }
  [[nodiscard]] QStringList files() const {
    return QDir(QString::fromStdString(out_.path().string())).entryList(QDir::Files);
  }

  TemporaryDirectory out_;
  ZTASK_ENG_Model store_;
  ZTASK_ENG_Task task_;
};

TEST_F(Sharing, MessageHasTaskAttached) {
  viewOf(QStringLiteral("Buy milk"))->sendToMessage();
  EXPECT_THAT(files(), ElementsAre("Buy milk-20070315-093005.vcs"));
  const std::string path = out_.path() / "Buy milk-20070315-093005.vcs";
  EXPECT_THAT(platform_.launched, ElementsAre(composer + path + " AutoDelete=Yes go on"));
  QFile file(QString::fromStdString(path));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_THAT(file.readAll().toStdString(), HasSubstr("Buy milk"));
  EXPECT_THAT(lines(detailViewSource), ElementsAre());
}

TEST_F(Sharing, AttachmentsAreNamedBySummaryAndTime) {
  const std::pair<const char*, const char*> names[] = {
      {"", "20070315-093005.vcs"},
      {"a", "a-20070315-093005.vcs"},
      {"12345678901234567890", "12345678901234567890-20070315-093005.vcs"},
      {"123456789012345678901234567890", "12345678901234567890-20070315-093005.vcs"},
      {"Käse?*", "Käse?*-20070315-093005.vcs"},
  };
  for (const auto& [summary, name] : names) {
    QDir(QString::fromStdString(out_.path().string())).removeRecursively();
    std::filesystem::create_directory(out_.path());
    platform_.launched.clear();
    viewOf(QString::fromUtf8(summary))->sendToMessage();
    EXPECT_THAT(platform_.launched,
                ElementsAre(composer + (out_.path() / name).string() + " AutoDelete=Yes go on"));
    EXPECT_THAT(files(), ElementsAre(QString::fromUtf8(name)));
  }
}

TEST_F(Sharing, DoesNotOpenComposerWithoutFile) {
  viewOf(QStringLiteral("a/b"))->sendToMessage();
  EXPECT_THAT(platform_.launched, ElementsAre());
  EXPECT_THAT(lines(detailViewSource), ElementsAre("attached file " + out_.path().string() +
                                                   "/a/b-20070315-093005.vcs isnot exist"));
}

TEST_F(Sharing, PathStartsAtRootWithoutDirectory) {
  qunsetenv("ULO_LOCAL_APP_WRITE_PATH");
  viewOf(QStringLiteral("no/where"))->sendToMessage();
  EXPECT_THAT(lines(detailViewSource),
              ElementsAre("attached file /no/where-20070315-093005.vcs isnot exist"));
}

TEST_F(Sharing, BluetoothSendsStoredText) {
  const auto view = viewOf(QStringLiteral("Buy milk"));
  // The stored task is sent, not the displayed copy.
  task_.setString(Task::TASK_FIELD_NOTE, QStringLiteral("changed meanwhile"));
  ASSERT_EQ(store_.updateTask(task_), 0);
  view->sendToBluetooth();
  EXPECT_EQ(platform_.sharedName, "Buy milk.vcs");
  EXPECT_EQ(platform_.sharedType, "text/x-vCalendar");
  TASK_ENG_SyncML adaptor;
  std::string text;
  ASSERT_EQ(adaptor.getEvent(text, task_.getUINT32(Task::TASK_FIELD_UID)), 0);
  EXPECT_EQ(platform_.sharedBytes, text);
  EXPECT_THAT(text, HasSubstr("changed meanwhile"));
  EXPECT_THAT(lines(detailViewSource), ElementsAre());
}

TEST_F(Sharing, NameWithoutSummaryIsExtension) {
  viewOf(QString())->sendToBluetooth();
  EXPECT_EQ(platform_.sharedName, ".vcs");
}

TEST_F(Sharing, DoesNotSendRemovedTask) {
  const auto view = viewOf(QStringLiteral("Buy milk"));
  ASSERT_EQ(store_.removeTask(task_.getUINT32(Task::TASK_FIELD_UID)), 0);
  view->sendToBluetooth();
  EXPECT_EQ(platform_.shares, 0);
  EXPECT_THAT(lines(detailViewSource),
              ElementsAre("the task can't be read, ret = 1; nothing is sent"));
}

TEST_F(Sharing, LogsRejectedPush) {
  platform_.shareResult = false;
  viewOf(QStringLiteral("Buy milk"))->sendToBluetooth();
  EXPECT_THAT(lines(detailViewSource), ElementsAre("shareByBT return false!"));
}

}  // namespace
