// The form: actions of the user, and what is stored.

#include "form/form_screen.h"

#include "RES_ICON_Reader.h"
#include "ZMessageDlg.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "dialogs_test.h"
#include "form/category_field.h"
#include "form/date_field.h"
#include "form/form_rows.h"
#include "form/line_field.h"
#include "form/name_dialog.h"
#include "form/note_field.h"
#include "menu_items.h"
#include "tasks_test.h"
#include "ulo/look.h"

using tasks::FormScreen;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr auto list = TASK_UI_View::TASK_LIST_VIEW;
constexpr auto details = TASK_UI_View::TASK_DETAIL_VIEW;

// Refers to every database that is opened while it exists.
class Opened {
public:
  Opened() {
    handles().clear();
    sqlite3_auto_extension(hook());
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  ~Opened() { sqlite3_reset_auto_extension(); }

  // The maximum number of pages of a database; one means that it is full.
  static void setMost(int pages) {
    const std::string limit = "PRAGMA max_page_count = " + std::to_string(pages);
    for (sqlite3* handle : handles())
      EXPECT_EQ(sqlite3_exec(handle, limit.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
  }

private:
  static std::vector<sqlite3*>& handles() {
    static std::vector<sqlite3*> all;
    return all;
  }
  static void (*hook())() {
    return reinterpret_cast<void (*)()>(+[](sqlite3* database, const char**, const void*) {
      handles().push_back(database);
      return SQLITE_OK;
    });
  }
};

class Form : public Opened, public Tasks {
protected:
  // A form of the size of the narrow screen, with its results.
  FormScreen& open(const Task* task = nullptr, TASK_UI_View::TASK_VIEW_TYPE from = list) {
    form_ = std::make_unique<FormScreen>(nullptr);
    signals_.clear();
    QObject::connect(
        form_.get(), &FormScreen::changeView, form_.get(),
        [this](TASK_UI_View::TASK_VIEW_TYPE leaving, TASK_UI_View::TASK_VIEW_TYPE to, Task* shown) {
          signals_.push_back("change " + std::to_string(leaving) + " " + std::to_string(to));
          handed_ = shown == nullptr ? std::nullopt : std::optional(*shown);
        });
    QObject::connect(form_.get(), &FormScreen::disposeView, form_.get(),
                     [this](TASK_UI_View::TASK_VIEW_TYPE type) {
                       signals_.push_back("dispose " + std::to_string(type));
                     });
    form_->setEngine(&store_);
    form_->openTask(task, from);
    form_->resize(240, 320);
    form_->show();
    form_->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(form_.get()));
    return *form_;
  }
  FormScreen& open(unsigned int uid, TASK_UI_View::TASK_VIEW_TYPE from = list) {
    const Task task = stored(uid);
    return open(&task, from);
  }

  tasks::LineField* title() { return form_->findChild<tasks::LineField*>(); }
  tasks::NoteEdit* note() { return form_->findChild<tasks::NoteEdit*>(); }
  tasks::DateField* due() { return form_->findChildren<tasks::DateField*>().at(0); }
  tasks::DateField* alarm() { return form_->findChildren<tasks::DateField*>().at(1); }
  QComboBox* status() { return form_->findChildren<QComboBox*>().at(0); }
  QComboBox* priority() { return form_->findChildren<QComboBox*>().at(1); }
  QComboBox* category() { return form_->findChildren<QComboBox*>().at(2); }
  std::vector<QWidget*> fields() {
    return {title(), due(), alarm(), status(), priority(), category(), note()};
  }

  static void retype(QLineEdit* line, const char* text) {
    line->selectAll();
    QTest::keyClicks(line, QString::fromUtf8(text));
  }
  // The user chooses the entry with this text from the list.
  static void take(QComboBox* field, const char* text) {
    const int index = field->findText(QString::fromUtf8(text));
    ASSERT_GE(index, 0) << text;
    field->setCurrentIndex(index);
    Q_EMIT field->activated(index);
  }
  // Types into the field with the focus.
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    // Without a window manager, nothing activates the window after a dialog.
    form_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(form_.get()));
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
  }
  Task only() {
    const std::vector<unsigned int> uids = allUids();
    EXPECT_EQ(uids.size(), 1U);
    return uids.empty() ? Task() : stored(uids.front());
  }
  void expectLeft(const char* change) { EXPECT_THAT(signals_, ElementsAre(change, "dispose 2")); }
  void expectStays() { EXPECT_THAT(signals_, IsEmpty()); }

  std::unique_ptr<FormScreen> form_;
  std::vector<std::string> signals_;
  std::optional<Task> handed_;  // with the last changeView
};

TEST_F(Form, NewTaskIsStoredAndPassedOn) {
  open();
  EXPECT_EQ(form_->appTitle(), "New Task");
  EXPECT_TRUE(title()->hasFocus());
  const qint64 before = QDateTime::currentSecsSinceEpoch();
  QTest::keyClicks(title(), "Buy milk");
  EXPECT_TRUE(form_->isChanged());
  press(Qt::Key_F2);
  expectLeft("change 2 0");
  const Task task = only();
  EXPECT_EQ(task.getString(Task::TASK_FIELD_SUMMARY), "Buy milk");
  EXPECT_EQ(task.getStatusValue(), 1);
  const qint64 revision = task.getDateTime(Task::TASK_FIELD_REVISION).toSecsSinceEpoch();
  EXPECT_GE(revision, before);
  EXPECT_LE(revision, QDateTime::currentSecsSinceEpoch());
  ASSERT_TRUE(handed_);
  EXPECT_THAT(*handed_, IsSameTask(task));
}

TEST_F(Form, EmptyNewTaskIsNotStored) {
  open();
  press(Qt::Key_F3);
  expectLeft("change 2 0");
  EXPECT_FALSE(handed_);
  EXPECT_THAT(allUids(), IsEmpty());
}

TEST_F(Form, EveryFieldIsShownAndStored) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, "a");
  task.setString(Task::TASK_FIELD_NOTE, "b\nc");
  task.setString(Task::TASK_FIELD_CATEGORY, "meeting");
  task.setDateTime(Task::TASK_FIELD_DUE, QDateTime(QDate(2027, 3, 5), QTime(9, 30)));
  task.setDateTime(Task::TASK_FIELD_ALARM, QDateTime(QDate(2027, 3, 4), QTime(8, 15)));
  task.setStatus(1);
  task.setPriority(9);
  ASSERT_EQ(store_.addTask(task), ok);
  open(&task);
  EXPECT_EQ(form_->appTitle(), "Edit Task");
  EXPECT_EQ(title()->text(), "a");
  EXPECT_EQ(note()->toPlainText(), "b\nc");
  EXPECT_EQ(category()->currentText(), "Meeting");
  EXPECT_EQ(due()->date(), QDate(2027, 3, 5).startOfDay());
  EXPECT_EQ(alarm()->date(), QDateTime(QDate(2027, 3, 4), QTime(8, 15)));
  EXPECT_EQ(status()->currentText(), "Incomplete");
  EXPECT_EQ(priority()->currentText(), "Low");
  EXPECT_FALSE(form_->isChanged());

  retype(title(), "d");
  QTest::keyClicks(note(), "e");
  take(category(), "Party");
  inDialog<tasks::DateDialog>([&] { due()->click(); },
                              [](QDialog& dialog) {
                                pressing(Qt::Key_Right)(dialog);
                                pressing(Qt::Key_Return)(dialog);
                              });
  inDialog<tasks::DateDialog>([&] { alarm()->click(); }, pressing(Qt::Key_Backspace));
  take(status(), "Completed");
  take(priority(), "High");
  press(Qt::Key_S, Qt::ControlModifier);
  expectLeft("change 2 0");
  const Task after = only();
  EXPECT_EQ(after.getString(Task::TASK_FIELD_SUMMARY), "d");
  EXPECT_EQ(after.getString(Task::TASK_FIELD_NOTE), "eb\nc");
  EXPECT_EQ(after.getString(Task::TASK_FIELD_CATEGORY), "party");
  EXPECT_EQ(after.getDateTime(Task::TASK_FIELD_DUE), QDateTime(QDate(2027, 3, 6), QTime(9, 30)));
  EXPECT_EQ(after.getDateTime(Task::TASK_FIELD_ALARM), Task::noDate());
  EXPECT_EQ(after.getStatus(), 0);
  EXPECT_EQ(after.getPriorityValue(), 1);
}

TEST_F(Form, UneditedFieldsStayUnchanged) {
  const QString broken = QStringLiteral("a\r\n\u0007b") + QChar(0xD800);
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, broken);
  task.setString(Task::TASK_FIELD_NOTE, broken.repeated(1000));
  task.setPriority(3);
  task.setStatus(2);
  ASSERT_EQ(store_.addTask(task), ok);
  open(&task);
  EXPECT_EQ(priority()->currentText(), "High");
  take(status(), "Completed");
  take(status(), "Incomplete");
  take(priority(), "Normal");
  take(priority(), "High");
  EXPECT_FALSE(form_->isChanged());
  take(category(), "Party");
  EXPECT_TRUE(form_->save());
  const Task after = only();
  EXPECT_EQ(after.getString(Task::TASK_FIELD_SUMMARY), broken);
  EXPECT_EQ(after.getString(Task::TASK_FIELD_NOTE), broken.repeated(1000));
  EXPECT_EQ(after.getPriorityValue(), 3);
  EXPECT_EQ(after.getStatusValue(), 2);
  EXPECT_EQ(after.getString(Task::TASK_FIELD_CATEGORY), "party");
  expectStays();
}

TEST_F(Form, TextsEndAtTheirLimits) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, QString(Task::summaryLimit - 1, u's'));
  task.setString(Task::TASK_FIELD_NOTE, QString(Task::noteLimit - 1, u'n'));
  ASSERT_EQ(store_.addTask(task), ok);
  open(&task);
  title()->end(false);
  note()->moveCursor(QTextCursor::End);
  QTest::keyClicks(title(), "xy");
  QTest::keyClicks(note(), "xy");
  EXPECT_TRUE(form_->save());
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY),
            QString(Task::summaryLimit - 1, u's') + 'x');
  EXPECT_EQ(only().getString(Task::TASK_FIELD_NOTE), QString(Task::noteLimit - 1, u'n') + 'x');
}

TEST_F(Form, EditingDoesNotTruncateLongTexts) {
  Task task;
  task.setString(Task::TASK_FIELD_SUMMARY, QString(600, u's'));
  task.setString(Task::TASK_FIELD_NOTE, QString(6000, u'n'));
  ASSERT_EQ(store_.addTask(task), ok);
  open(&task);
  title()->home(false);
  note()->moveCursor(QTextCursor::Start);
  for (QWidget* field : {static_cast<QWidget*>(title()), static_cast<QWidget*>(note())}) {
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, "x");
  }
  EXPECT_TRUE(form_->save());
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), 'x' + QString(598, u's'));
  EXPECT_EQ(only().getString(Task::TASK_FIELD_NOTE), 'x' + QString(5998, u'n'));
}

TEST_F(Form, SoftKeysWorkInEveryField) {
  open();
  const auto* menu = form_->findChild<ZOptionsMenu*>();
  for (QWidget* field : fields()) {
    field->setFocus();
    signals_.clear();
    press(Qt::Key_F2);
    expectLeft("change 2 0");
    signals_.clear();
    press(Qt::Key_F3);
    expectLeft("change 2 0");
    signals_.clear();
    press(Qt::Key_S, Qt::ControlModifier);
    expectLeft("change 2 0");
    signals_.clear();
    press(Qt::Key_Escape);
    expectLeft("change 2 0");
    press(Qt::Key_F1);
    EXPECT_TRUE(menu->isVisible());
    const_cast<ZOptionsMenu*>(menu)->hide();
    field->setFocus();
  }
}

TEST_F(Form, BackKeySaves) {
  open(add("a"), details);
  retype(title(), "b");
  form_->cstWidget()->click(ZSoftKey::right);
  expectLeft("change 2 3");
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "b");
  ASSERT_TRUE(handed_);
  EXPECT_EQ(handed_->getString(Task::TASK_FIELD_SUMMARY), "b");
}

TEST_F(Form, OwnerCanSave) {
  open(add("a"));
  EXPECT_TRUE(form_->save());
  retype(title(), "b");
  EXPECT_TRUE(form_->save());
  EXPECT_FALSE(form_->isChanged());
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "b");
  expectStays();
}

TEST_F(Form, CancelingAsksOnlyIfSomethingChanged) {
  const unsigned int uid = add("a");
  open(uid, details);
  retype(title(), "b");
  retype(title(), "a");
  form_->findChild<ZOptionsMenu*>()->item(ulo::formMenu::cancelEdit)->trigger();
  expectLeft("change 2 3");

  open(uid, details);
  retype(title(), "b");
  const auto cancel = [this] {
    form_->findChild<ZOptionsMenu*>()->item(ulo::formMenu::cancelEdit)->trigger();
  };
  inDialog<ZMessageDlg>(cancel, [](ZMessageDlg& question) {
    EXPECT_EQ(question.text(), "Discard the changes?");
    question.keys()->click(ZSoftKey::right);
  });
  expectStays();
  EXPECT_EQ(title()->text(), "b");
  inDialog<ZMessageDlg>([this] { press(Qt::Key_Escape); }, pressing(Qt::Key_F1));
  expectLeft("change 2 3");
  ASSERT_TRUE(handed_);
  EXPECT_THAT(*handed_, IsSameTask(stored(uid)));
  EXPECT_EQ(stored(uid).getString(Task::TASK_FIELD_SUMMARY), "a");
}

TEST_F(Form, MenuItemIsTranslated) {
  open();
  EXPECT_EQ(form_->findChild<ZOptionsMenu*>()->item(ulo::formMenu::cancelEdit)->text(),
            "Cancel Edit");
  const TextsAsIds ids;
  open();
  EXPECT_EQ(form_->findChild<ZOptionsMenu*>()->item(ulo::formMenu::cancelEdit)->text(),
            "[TXT_RID_OPTION_CANCEL_EDIT]");
}

TEST_F(Form, ReturnsToListIfTaskIsGone) {
  const unsigned int uid = add("a");
  open(uid, details);
  ASSERT_EQ(store_.removeTask(uid), ok);
  form_->cancelEdit();
  expectLeft("change 2 0");
  EXPECT_FALSE(handed_);
}

TEST_F(Form, StoresEditsIfTaskIsGone) {
  const unsigned int uid = add("a");
  open(uid, details);
  ASSERT_EQ(store_.removeTask(uid), ok);
  retype(title(), "b");
  form_->finish();
  expectLeft("change 2 3");
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "b");
  ASSERT_TRUE(handed_);
  EXPECT_EQ(handed_->getUINT32(Task::TASK_FIELD_UID), only().getUINT32(Task::TASK_FIELD_UID));
}

TEST_F(Form, OtherProgramsMayChangeOtherFields) {
  const unsigned int uid = add({.summary = "a", .category = "garden"});
  open(uid);
  Task theirs = stored(uid);
  theirs.setString(Task::TASK_FIELD_NOTE, "theirs");
  ASSERT_EQ(store_.updateTask(theirs), ok);
  QString garden = "garden";
  ASSERT_EQ(store_.removeCategory(garden, false), ok);
  retype(title(), "b");
  form_->finish();
  expectLeft("change 2 0");
  EXPECT_EQ(only().getString(Task::TASK_FIELD_SUMMARY), "b");
  EXPECT_EQ(only().getString(Task::TASK_FIELD_NOTE), "theirs");
  EXPECT_TRUE(only().getString(Task::TASK_FIELD_CATEGORY).isNull());
}

TEST_F(Form, NewCategoryIsStoredWithTask) {
  open(add("a"));
  inDialog<tasks::NameDialog>([&] { take(category(), "New Category\xe2\x80\xa6"); },
                              [](QDialog& dialog) {
                                QTest::keyClicks(dialog.focusWidget(), "Holiday");
                                pressing(Qt::Key_Return)(dialog);
                              });
  form_->finish();
  EXPECT_EQ(only().getString(Task::TASK_FIELD_CATEGORY), "Holiday");
}

TEST_F(Form, FullStoreKeepsFormOpen) {
  open();
  QTest::keyClicks(title(), "a");
  note()->insertPlainText(QString(4000, u'n'));
  setMost(1);
  inDialog<ZMessageDlg>([this] { press(Qt::Key_F2); },
                        [](ZMessageDlg& message) {
                          EXPECT_EQ(message.windowTitle(), "Memory Full");
                          EXPECT_TRUE(message.text().startsWith(
                              "Task cannot be created because phone memory is full."));
                          EXPECT_TRUE(isIcon(message.titleIcon(), "alert_pop.gif"));
                          message.keys()->click(ZSoftKey::left);
                        });
  expectStays();
  EXPECT_THAT(allUids(), IsEmpty());
  EXPECT_TRUE(form_->isChanged());
  EXPECT_EQ(title()->text(), "a");
  setMost(100000);
  form_->finish();
  expectLeft("change 2 0");
  EXPECT_EQ(only().getString(Task::TASK_FIELD_NOTE).size(), 4000);
}

TEST_F(Form, FailingStoreKeepsFormOpen) {
  const unsigned int uid = add("a");
  raw_.run("create trigger refusal before update on task_table_task"
           " begin select raise(abort, 'refused by the test'); end");
  open(uid);
  retype(title(), "b");
  inDialog<ZMessageDlg>([this] { EXPECT_FALSE(form_->save()); },
                        [](ZMessageDlg& message) {
                          EXPECT_EQ(message.text(), "The task could not be saved.");
                          message.keys()->click(ZSoftKey::left);
                        });
  expectStays();
  EXPECT_EQ(title()->text(), "b");
  EXPECT_EQ(stored(uid).getString(Task::TASK_FIELD_SUMMARY), "a");
}

TEST_F(Form, MayBeDeletedWhileDialogIsOpen) {
  open(add("a"));
  retype(title(), "b");
  inDialog<ZMessageDlg>([this] { form_->cancelEdit(); }, [this](ZMessageDlg&) { form_.reset(); });
  expectStays();
}

TEST_F(Form, DownKeyVisitsAllFields) {
  open();
  const std::vector<QWidget*> all = fields();
  const auto* rows = form_->findChild<tasks::FormRows*>();
  for (QWidget* field : all) {
    EXPECT_TRUE(field->hasFocus()) << field->accessibleName().toStdString();
    const QRect place(field->mapTo(rows->viewport(), QPoint(0, 0)), field->size());
    EXPECT_TRUE(rows->viewport()->rect().contains(place)) << field->accessibleName().toStdString();
    EXPECT_FALSE(field->accessibleName().isEmpty());
    press(Qt::Key_Down);
  }
  note()->setFocus();
  for (auto field = all.rbegin(); field != all.rend(); ++field) {
    EXPECT_TRUE((*field)->hasFocus()) << (*field)->accessibleName().toStdString();
    press(Qt::Key_Up);
  }
}

TEST_F(Form, TabKeyVisitsAllFields) {
  open();
  for (QWidget* field : fields()) {
    EXPECT_TRUE(field->hasFocus()) << field->accessibleName().toStdString();
    press(Qt::Key_Tab);
  }
  EXPECT_FALSE(note()->hasFocus());
}

class Layouts : public Form, public testing::WithParamInterface<Qt::LayoutDirection> {
protected:
  ~Layouts() override {
    QApplication::setLayoutDirection(Qt::LeftToRight);
    application().setLanguages({"en"});
  }
};

TEST_P(Layouts, NothingIsWiderThanNarrowScreen) {
  for (const char* language : {"en", "de", "zh-CN"}) {
    application().setLanguages({language});
    QApplication::setLayoutDirection(GetParam());
    open(add({.summary = QString(500, u'w'), .category = QString(300, u'w')}));
    const auto* rows = form_->findChild<tasks::FormRows*>();
    EXPECT_LE(form_->minimumSizeHint().width(), 240);
    EXPECT_EQ(form_->width(), 240);
    EXPECT_LE(rows->widget()->minimumSizeHint().width(), rows->viewport()->width());
    for (const QWidget* field : fields()) {
      const QRect place(field->mapTo(form_.get(), QPoint(0, 0)), field->size());
      EXPECT_GE(place.left(), 0);
      EXPECT_LE(place.right(), 239);
      EXPECT_GE(field->height(), 30);
    }
  }
}

TEST_P(Layouts, LabelsAreBesideFieldsIfThereIsRoom) {
  QApplication::setLayoutDirection(GetParam());
  open();
  const int wide = ulo::scaled(form_.get(), 400);
  const int label = ulo::scaled(form_.get(), 96);
  form_->resize(wide - 1, 320);
  QCoreApplication::processEvents();
  EXPECT_GT(title()->width(), wide - label);
  form_->resize(wide, 320);
  QCoreApplication::processEvents();
  EXPECT_LT(title()->width(), wide - label);
  const QPoint place = title()->mapTo(form_.get(), QPoint(0, 0));
  EXPECT_EQ(place.x() > label, GetParam() == Qt::LeftToRight);
}

INSTANTIATE_TEST_SUITE_P(Directions, Layouts, testing::Values(Qt::LeftToRight, Qt::RightToLeft));

}  // namespace
