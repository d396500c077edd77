// The plug-in of an action framework.

#include "TASK_UI_SDAction.h"

#include "TASK_ENG_SyncML.h"
#include "entry_test.h"
#include "save_messages.h"

#include <QFile>

#include <sqlite3.h>

using testing::ElementsAre;
using testing::IsSupersetOf;

// An interface that a framework passes to the plug-in.
struct SDActionAccess {
  static QUnknownInterface*& held(TASK_UI_SDAction& plugin) { return plugin.held_; }
};

namespace {

constexpr char pluginSource[] = "uistyle/prism/TASK_UI_SDAction.cpp";
constexpr char actionUuid[] = "{efc3a030-dd82-45b8-8e1e-42383951a4a7}";
constexpr char unknownUuid[] = "{1d8518cd-e8f5-4366-99e8-879fd7e482de}";

class ActionPlugin : public EntryPoint {
protected:
  ActionPlugin() {
    QUnknownInterface* action = nullptr;
    first_ = ucm_instantiate();
    EXPECT_EQ(first_->queryInterface(QUuid(QLatin1String(actionUuid)), &action), QS_OK);
    plugin_ = static_cast<ActionInterface*>(action);
    closeDialogs();
  }
  ~ActionPlugin() override {
    plugin_->release();
    first_->release();
  }

  bool invoke(const char* action, const std::string& bytes) {
    QFile file(path());
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromStdString(bytes));
    file.close();
    return invoke(action);
  }
  bool invoke(const char* action) {
    SDData data;
    data.fileName = path();
    return plugin_->invokeAction(QString::fromLatin1(action), data);
  }
  QString path() { return QString::fromStdString((directory_.path() / "item.vcs").string()); }

  // Returns the log messages of the plug-in since it was invoked.
  std::vector<std::string> said() {
    std::vector<std::string> all = lines(pluginSource);
    all.erase(all.begin(), std::find(all.begin(), all.end(), "Entering invokeAction"));
    return all;
  }

  QUnknownInterface* first_ = nullptr;
  ActionInterface* plugin_ = nullptr;
};

TEST(ActionPluginLife, CountsReferences) {
  const LogCapture quiet;
  auto* plugin = new TASK_UI_SDAction;
  EXPECT_EQ(plugin->addRef(), 0U);
  EXPECT_EQ(plugin->addRef(), 1U);
  EXPECT_EQ(plugin->release(), 1U);
  bool deleted = false;
  QObject::connect(plugin, &QObject::destroyed, [&deleted] { deleted = true; });
  EXPECT_EQ(plugin->release(), 0U);
  EXPECT_TRUE(deleted);
}

TEST(ActionPluginLife, StartsWithOneReference) {
  const LogCapture quiet;
  QUnknownInterface* plugin = ucm_instantiate();
  ASSERT_NE(plugin, nullptr);
  EXPECT_EQ(plugin->addRef(), 1U);
  plugin->release();
  EXPECT_EQ(plugin->release(), 0U);
}

TEST(ActionPluginLife, KnowsTwoInterfaces) {
  LogCapture log;
  auto* plugin = new TASK_UI_SDAction;
  ActionInterface* expected = plugin;
  for (const char* uuid : {unknownUuid, actionUuid}) {
    QUnknownInterface* answer = nullptr;
    EXPECT_EQ(plugin->queryInterface(QUuid(QLatin1String(uuid)), &answer), 0U);
    EXPECT_EQ(answer, expected);
  }
  EXPECT_EQ(log.withoutLines(), "(uistyle/prism/TASK_UI_SDAction.cpp)Enter queryInterface"
                                "(uistyle/prism/TASK_UI_SDAction.cpp)Enter queryInterface");
  QUnknownInterface* answer = expected;
  EXPECT_EQ(plugin->queryInterface(QUuid::createUuid(), &answer), 0x80000004UL);
  EXPECT_EQ(answer, nullptr);
  EXPECT_EQ(plugin->release(), 1U) << "a rejected query must not change the count";
  plugin->release();
}

// An interface that counts its releases.
class HeldInterface : public QUnknownInterface {
public:
  unsigned long queryInterface(const QUuid&, QUnknownInterface**) override {
    return QE_NOINTERFACE;
  }
  unsigned long addRef() override { return 0; }
  unsigned long release() override { return ++released; }

  unsigned long released = 0;
};

TEST_F(ActionPlugin, ReleasesHeldInterfaceAfterEveryAction) {
  const auto releasedBy = [this](const char* action, const char* bytes) {
    HeldInterface held;
    SDActionAccess::held(*static_cast<TASK_UI_SDAction*>(plugin_)) = &held;
    bytes != nullptr ? invoke(action, bytes) : invoke(action);
    return held.released;
  };
  EXPECT_EQ(releasedBy("TASK_SAVE", nullptr), 1U) << "no file";
  EXPECT_EQ(releasedBy("TASK_SAVE", milk.c_str()), 1U);
  EXPECT_EQ(releasedBy("TASK_SAVE", "no calendar"), 1U);
  EXPECT_EQ(releasedBy("TASK_VIEW", milk.c_str()), 1U);
  EXPECT_EQ(releasedBy("TASK_VIEW", "no calendar"), 1U);
  EXPECT_EQ(releasedBy("TASK_PRINT", milk.c_str()), 1U);
  platform_.lockResult = 0;
  EXPECT_EQ(releasedBy("TASK_SAVE", milk.c_str()), 1U);
  // No interface is held now.
  EXPECT_EQ(SDActionAccess::held(*static_cast<TASK_UI_SDAction*>(plugin_)), nullptr);
}

TEST_F(ActionPlugin, ReportsItsUuid) {
  EXPECT_EQ(plugin_->getUuid().toString(), actionUuid);
  EXPECT_TRUE(plugin_->describe().isNull());
}

TEST_F(ActionPlugin, SavesTaskAndReportsIt) {
  EXPECT_TRUE(invoke("TASK_SAVE", milk));
  EXPECT_THAT(stored(), ElementsAre("Buy milk"));
  ASSERT_EQ(dialogs_.size(), 1U);
  EXPECT_EQ(dialogs_[0].title, "Saved to Task List");
  EXPECT_EQ(dialogs_[0].text, "Buy milk saved to Task List");
  EXPECT_TRUE(isIcon(dialogs_[0].icon, "save_pop.gif"));
  EXPECT_THAT(shown(), ElementsAre());
  EXPECT_THAT(said(), ElementsAre("Entering invokeAction", "String passed to parser: \n" + milk,
                                  "Save a vTodo", "after add to db the vtodo is " + milk,
                                  "Leaving invoke Action"));
}

TEST_F(ActionPlugin, DialogTextsHaveIds) {
  const TextsAsIds ids;
  EXPECT_TRUE(invoke("TASK_SAVE", milk));
  ASSERT_EQ(dialogs_.size(), 1U);
  EXPECT_EQ(dialogs_[0].title, "[TXT_RID_HEADER_SAVED_TO_TASK_LIST]");
  EXPECT_EQ(dialogs_[0].text, "[FMT_RID_INSTRUCTIONALTXT_1_SAVED_TO_TASK_LIST]");
}

TEST_F(ActionPlugin, SummaryIsShownUnchanged) {
  EXPECT_TRUE(invoke("TASK_SAVE", calendar(todo("SUMMARY:%1 <b>%2</b> & %L1\r\n"))));
  ASSERT_EQ(dialogs_.size(), 1U);
  EXPECT_EQ(dialogs_[0].text, "%1 <b>%2</b> & %L1 saved to Task List");
}

TEST_F(ActionPlugin, SavesFirstOfSeveralTodos) {
  EXPECT_TRUE(invoke("TASK_SAVE", calendar(todo("SUMMARY:one\r\n") + todo("SUMMARY:two\r\n"))));
  EXPECT_THAT(stored(), ElementsAre("one"));
}

TEST_F(ActionPlugin, PassesBytesUnchanged) {
  EXPECT_TRUE(invoke("TASK_SAVE", calendar(todo("SUMMARY;CHARSET=UTF-8:K\xC3\xA4se\r\n"))));
  EXPECT_TRUE(invoke("TASK_SAVE", calendar(todo("SUMMARY:K\xE4se\r\n"))));
  EXPECT_THAT(stored(), ElementsAre("Käse", "Käse"));
}

TEST_F(ActionPlugin, DoesNotSaveTextWithoutTodo) {
  EXPECT_FALSE(invoke("TASK_SAVE", "no calendar"));
  EXPECT_FALSE(invoke("TASK_SAVE", ""));
  EXPECT_THAT(stored(), ElementsAre());
  EXPECT_TRUE(dialogs_.empty());
  EXPECT_THAT(said(), IsSupersetOf({"add VTodo failed! the ret is 5"}));
  EXPECT_THAT(said(), testing::Not(testing::Contains("Leaving invoke Action")));
}

TEST_F(ActionPlugin, ShowsWithoutSaving) {
  EXPECT_TRUE(invoke("TASK_VIEW", milk));
  EXPECT_THAT(shown(), ElementsAre("Buy milk"));
  EXPECT_THAT(stored(), ElementsAre());
  EXPECT_TRUE(dialogs_.empty());
  EXPECT_THAT(said(), ElementsAre("Entering invokeAction", "String passed to parser: \n" + milk,
                                  "View a vTodo", "Leaving invoke Action"));
}

TEST_F(ActionPlugin, DoesNotShowTextWithoutTodo) {
  EXPECT_FALSE(invoke("TASK_VIEW", "no calendar"));
  EXPECT_THAT(shown(), ElementsAre());
  EXPECT_THAT(said(), ElementsAre("Entering invokeAction", "String passed to parser: \nno calendar",
                                  "View a vTodo", "show VTodo failed! the ret is 0"));
}

TEST_F(ActionPlugin, UnknownActionSucceedsWithoutEffect) {
  for (const char* action : {"task_save", "TASK_SAVE ", "", "TASK_PRINT"})
    EXPECT_TRUE(invoke(action, milk)) << action;
  EXPECT_THAT(stored(), ElementsAre());
  EXPECT_THAT(shown(), ElementsAre());
  EXPECT_TRUE(dialogs_.empty());
}

TEST_F(ActionPlugin, ChecksLock) {
  platform_.lockResult = 0;
  EXPECT_FALSE(invoke("TASK_SAVE", milk));
  EXPECT_FALSE(invoke("TASK_VIEW", milk));
  EXPECT_THAT(said(), ElementsAre("Entering invokeAction", "for applock", "Entering invokeAction",
                                  "for applock"));
  EXPECT_THAT(stored(), ElementsAre());
  EXPECT_THAT(shown(), ElementsAre());
}

TEST_F(ActionPlugin, LogsFileThatCannotBeRead) {
  EXPECT_FALSE(invoke("TASK_SAVE"));
  EXPECT_THAT(said(), ElementsAre("Entering invokeAction",
                                  "Can not open vtodo file: " + path().toStdString() + "\n"));
}

// While an object exists, files of stores that are opened cannot grow.
class FullStore {
public:
  FullStore() {
    { const ZTASK_ENG_Model creates; }
    sqlite3_auto_extension(
        reinterpret_cast<void (*)()>(+[](sqlite3* database, const char**, const void*) {
          return sqlite3_exec(database, "PRAGMA max_page_count = 1", nullptr, nullptr, nullptr);
        }));
  }
  FullStore(const FullStore&) = delete;
  FullStore& operator=(const FullStore&) = delete;
  ~FullStore() { sqlite3_reset_auto_extension(); }
};

TEST_F(ActionPlugin, ReportsFullStore) {
  const std::string large = calendar(todo("DESCRIPTION:" + std::string(4002, 'n') + "\r\n"));
  const FullStore full;
  EXPECT_FALSE(invoke("TASK_SAVE", large));
  ASSERT_EQ(dialogs_.size(), 1U);
  EXPECT_EQ(dialogs_[0].title, "Memory Full");
  EXPECT_EQ(dialogs_[0].text, "Task cannot be created because phone memory is full. Please delete "
                              "some files to create space in memory.");
  EXPECT_TRUE(isIcon(dialogs_[0].icon, "alert_pop.gif"));
  EXPECT_THAT(said(), IsSupersetOf({"add VTodo failed! the ret is 2"}));
  const TextsAsIds ids;
  EXPECT_FALSE(invoke("TASK_SAVE", large));
  ASSERT_EQ(dialogs_.size(), 2U);
  EXPECT_EQ(dialogs_[1].title, "[TXT_RID_HEADER_MEMORY_FULL]");
  EXPECT_EQ(dialogs_[1].text,
            "[TXT_RID_INSTRUCTIONALTXT_TASK_CANNOT_BE_CREATED_PHONE_MEMORY_IS_FULL_PLEASE_DELETE_"
            "SOME_FILES_TO_CREATE_SPACE_IN_MEMORY]");
}

// The current store fails with only one of these codes.
TEST_F(ActionPlugin, ShowsNoDialogForOtherFailures) {
  for (const int code :
       {TASK_SYNCML_NOTFOUND, TASK_SYNCML_TOOLARGE, TASK_SYNCML_BADPARAM, TASK_SYNCML_OTHERERROR}) {
    reportSaveFailure(code);
    EXPECT_EQ(lines(pluginSource).back(), "add VTodo failed! the ret is " + std::to_string(code));
  }
  EXPECT_TRUE(dialogs_.empty());
}

TEST_F(ActionPlugin, DoesNotReportTaskThatIsGone) {
  addTrigger("removal AFTER INSERT ON task_table_task "
             "BEGIN DELETE FROM task_table_task WHERE UID = NEW.UID; END");
  EXPECT_TRUE(invoke("TASK_SAVE", milk));
  EXPECT_TRUE(dialogs_.empty());
  EXPECT_THAT(said(), IsSupersetOf({"for model error", "Leaving invoke Action"}));
}

TEST_F(ActionPlugin, FailingStoreShowsNothing) {
  closeStore();
  EXPECT_FALSE(invoke("TASK_SAVE", milk));
  EXPECT_TRUE(dialogs_.empty());
  EXPECT_THAT(said(), IsSupersetOf({"add VTodo failed! the ret is 5"}));
}

}  // namespace
