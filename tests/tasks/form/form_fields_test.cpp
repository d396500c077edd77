// The fields of the form, one by one.

#include "choice_field.h"
#include "dialogs_test.h"
#include "form/category_field.h"
#include "form/date_field.h"
#include "form/line_field.h"
#include "form/name_dialog.h"
#include "form/note_field.h"
#include "tasks_test.h"

#include "ZSoftKey.h"

#include <QAbstractItemView>
#include <QClipboard>
#include <QLabel>
#include <QSignalSpy>
#include <QVBoxLayout>

using tasks::CategoryField;
using tasks::LineField;
using tasks::NameDialog;
using tasks::NoteField;
using testing::ElementsAre;

namespace {

const QString bicycle = QString::fromUcs4(U"\U0001F6B2");
const QString broken = QStringLiteral("a") + QChar(0xDC00) + QStringLiteral("\r\nb\u00A0c\u2029");

QString times(qsizetype count, char16_t unit = u'x') {
  return QString(count, unit);
}

TEST(LineFields, AcceptUpToTheirLimit) {
  LineField line(10);
  line.setStored(times(8));
  line.end(false);
  QTest::keyClicks(&line, "abc");
  EXPECT_EQ(line.value(), times(8) + "ab");
  line.home(false);
  QTest::keyClicks(&line, "c");
  EXPECT_EQ(line.value(), times(8) + "ab");
  QTest::keyClick(&line, Qt::Key_Delete);
  QTest::keyClicks(&line, "c");
  EXPECT_EQ(line.value(), 'c' + times(7) + "ab");
}

TEST(LineFields, KeepWholeLettersOfPastedText) {
  LineField line(10);
  line.setStored(times(9));
  line.end(false);
  line.insert(bicycle);
  EXPECT_EQ(line.value(), times(9));
  line.backspace();
  line.insert(bicycle);
  EXPECT_EQ(line.value(), times(8) + bicycle);
  line.setCursorPosition(2);
  line.setSelection(2, 4);
  QGuiApplication::clipboard()->setText("abc" + bicycle + "de");
  line.paste();
  EXPECT_EQ(line.value(), "xxabcxx" + bicycle);
  EXPECT_EQ(line.cursorPosition(), 5);
}

TEST(LineFields, ReturnStoredTextUnitByUnit) {
  LineField line(10);
  for (const QString& text : {broken, times(11), times(9) + bicycle}) {
    line.setStored(text);
    EXPECT_EQ(line.value(), text);
    EXPECT_LE(line.text().size(), 10);
    line.end(false);
    QTest::keyClick(&line, Qt::Key_Backspace);
    EXPECT_NE(line.value(), text);
    line.undo();
    EXPECT_EQ(line.value(), text);
  }
}

TEST(LineFields, KeepInvisibleText) {
  LineField line(10);
  line.setStored(times(9) + bicycle + "rest");
  QTest::keyClick(&line, Qt::Key_Delete);
  EXPECT_EQ(line.value(), times(9).sliced(1) + bicycle + "rest");
  QTest::keyClicks(&line, "xy");
  EXPECT_EQ(line.value(), 'x' + times(9).sliced(1) + bicycle + "rest");
  line.setStored("short");
  line.end(false);
  QTest::keyClicks(&line, "123456");
  EXPECT_EQ(line.value(), "short12345");
}

class NoteFields : public testing::Test {
protected:
  NoteFields() {
    field_.show();
    spy_.clear();
  }
  void paste(const QString& text) {
    QGuiApplication::clipboard()->setText(text);
    field_.edit()->paste();
  }
  QLabel* left() { return field_.findChild<QLabel*>(); }

  NoteField field_{1000};
  QSignalSpy spy_{&field_, &NoteField::edited};
};

TEST_F(NoteFields, AcceptUpToTheirLimit) {
  field_.setStored(times(998));
  field_.edit()->moveCursor(QTextCursor::End);
  QTest::keyClicks(field_.edit(), "a");
  EXPECT_EQ(field_.value(), times(998) + 'a');
  QTest::keyClicks(field_.edit(), "bc");
  EXPECT_EQ(field_.value(), times(998) + "ab");
  field_.edit()->moveCursor(QTextCursor::Start);
  QTest::keyClick(field_.edit(), Qt::Key_Return);
  EXPECT_EQ(field_.value(), times(998) + "ab");
}

TEST_F(NoteFields, TruncatePastedTextAtWholeLetter) {
  field_.setStored("begin end");
  QTextCursor cursor = field_.edit()->textCursor();
  cursor.setPosition(6);
  field_.edit()->setTextCursor(cursor);
  paste(times(990) + bicycle);
  EXPECT_EQ(field_.value(), "begin " + times(990) + "end");
  EXPECT_EQ(field_.edit()->textCursor().position(), 996);
  field_.edit()->undo();
  EXPECT_EQ(field_.value(), "begin end");
  field_.edit()->redo();
  EXPECT_EQ(field_.value(), "begin " + times(990) + "end");
  QTest::keyClick(field_.edit(), Qt::Key_Backspace);
  paste(bicycle);
  EXPECT_EQ(field_.value(), "begin " + times(989) + bicycle + "end");
}

TEST_F(NoteFields, ReturnStoredTextUnitByUnit) {
  for (const QString& text : {broken, times(1001), times(999) + bicycle}) {
    field_.setStored(text);
    EXPECT_EQ(field_.value(), text);
    EXPECT_EQ(spy_.count(), 0);
    QTest::keyClicks(field_.edit(), " ");
    QTest::keyClick(field_.edit(), Qt::Key_Backspace);
    EXPECT_EQ(field_.value(), text);
    spy_.clear();
  }
}

// Other programs may store longer texts than the form accepts.
TEST_F(NoteFields, KeepInvisibleText) {
  const QString text = times(999) + bicycle + times(5000);
  field_.setStored(text);
  field_.edit()->moveCursor(QTextCursor::Start);
  QTest::keyClick(field_.edit(), Qt::Key_Delete);
  EXPECT_EQ(field_.value(), text.sliced(1));
  QTest::keyClicks(field_.edit(), "xy");
  EXPECT_EQ(field_.value(), 'x' + text.sliced(1));
  field_.edit()->selectAll();
  paste("new");
  EXPECT_EQ(field_.value(), "new" + text.sliced(999));
  paste(times(2000));
  EXPECT_EQ(field_.value(), "new" + times(996) + text.sliced(999));
  field_.setStored("short");
  field_.edit()->moveCursor(QTextCursor::End);
  paste(times(995));
  EXPECT_EQ(field_.value(), "short" + times(995));
}

TEST_F(NoteFields, KeepRestOfEditedText) {
  field_.setStored(QStringLiteral("a\u00A0b\u2028c\nd") + QChar(0xD800));
  field_.edit()->moveCursor(QTextCursor::Start);
  QTest::keyClicks(field_.edit(), "e");
  EXPECT_EQ(field_.value(), QStringLiteral("ea\u00A0b\u2028c\nd") + QChar(0xD800));
  QTest::keyClick(field_.edit(), Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_TRUE(field_.value().startsWith("e\na"));
}

TEST_F(NoteFields, ShowRemainingCharactersNearLimit) {
  field_.setStored(times(800));
  EXPECT_FALSE(left()->isVisible());
  field_.edit()->moveCursor(QTextCursor::End);
  QTest::keyClicks(field_.edit(), "x");
  EXPECT_TRUE(left()->isVisible());
  EXPECT_EQ(left()->text(), "Characters left: 199");
  QTest::keyClick(field_.edit(), Qt::Key_Backspace);
  EXPECT_FALSE(left()->isVisible());
  field_.setStored(times(1000));
  EXPECT_EQ(left()->text(), "Characters left: 0");
}

class CategoryFields : public Tasks {
protected:
  CategoryFields() {
    QString name = "garden";
    unsigned int uid = 0;
    EXPECT_EQ(store_.addCategory(name, uid), ok);
    field_.show();
  }
  std::vector<std::string> shown() {
    std::vector<std::string> texts;
    for (int i = 0; i < field_.count(); ++i)
      texts.push_back(field_.itemText(i).toStdString());
    return texts;
  }
  // The user chooses this entry.
  void take(int index) {
    field_.setCurrentIndex(index);
    Q_EMIT field_.activated(index);
  }
  // The user requests a new category and then does this in the dialog.
  template <typename Work> void askForNew(Work work) {
    inDialog<NameDialog>([&] { take(field_.count() - 1); }, work);
  }
  static auto naming(const char* name) {
    return [name](NameDialog& dialog) {
      QTest::keyClicks(dialog.findChild<QLineEdit*>(), QString::fromUtf8(name));
      QTest::keyClick(dialog.findChild<QLineEdit*>(), Qt::Key_Return);
    };
  }

  CategoryField field_;
};

TEST_F(CategoryFields, OfferEveryCategoryOnce) {
  field_.setStored(store_, {});
  EXPECT_THAT(shown(), ElementsAre("No Category", "Appointment", "garden", "Meeting", "Party",
                                   "Vacation", "New Category\xe2\x80\xa6"));
  for (const char* none : {"", "none", "None"}) {
    field_.setStored(store_, none);
    EXPECT_EQ(field_.currentText(), "No Category");
    EXPECT_TRUE(field_.category().isNull());
  }
  field_.setStored(store_, "garden");
  EXPECT_EQ(field_.count(), 7);
  EXPECT_EQ(field_.currentText(), "garden");
  field_.setStored(store_, "gone\nmeanwhile");
  EXPECT_EQ(field_.count(), 8);
  EXPECT_EQ(field_.currentText(), "gone meanwhile");
  EXPECT_EQ(field_.category(), "gone\nmeanwhile");
}

TEST_F(CategoryFields, AcceptNewNameWithoutStoringIt) {
  field_.setStored(store_, "meeting");
  QSignalSpy chosen(&field_, &CategoryField::chosen);
  askForNew(naming("  Holiday plans "));
  EXPECT_EQ(field_.category(), "Holiday plans");
  EXPECT_EQ(field_.currentText(), "Holiday plans");
  EXPECT_EQ(field_.itemText(field_.count() - 1), "New Category…");
  EXPECT_EQ(chosen.count(), 1);
  EXPECT_THAT(raw_.run("select count(*) from task_table_category where name like 'Holi%'"),
              ElementsAre("0"));
}

TEST_F(CategoryFields, StayUnchangedIfNewNameIsCanceled) {
  field_.setStored(store_, "meeting");
  QSignalSpy chosen(&field_, &CategoryField::chosen);
  askForNew([](NameDialog& dialog) { dialog.keys()->click(ZSoftKey::right); });
  EXPECT_EQ(field_.currentText(), "Meeting");
  EXPECT_EQ(field_.category(), "meeting");
  EXPECT_EQ(chosen.count(), 0);
}

// Keys may follow before the dialog returns.
TEST_F(CategoryFields, TakeNewNameWhenItIsAccepted) {
  field_.setStored(store_, "meeting");
  QSignalSpy chosen(&field_, &CategoryField::chosen);
  askForNew([&](NameDialog& dialog) {
    naming("Boat")(dialog);
    EXPECT_EQ(field_.category(), "Boat");
    EXPECT_EQ(chosen.count(), 1);
  });
  EXPECT_EQ(field_.category(), "Boat");
  EXPECT_EQ(chosen.count(), 1);
}

TEST(DateFields, TakeDateWhenItIsAccepted) {
  tasks::DateField field(tasks::DateDialog::Kind::day, {"Due Date", "No Due Date"});
  field.show();
  QSignalSpy chosen(&field, &tasks::DateField::chosen);
  inDialog<tasks::DateDialog>([&] { field.click(); },
                              [&](tasks::DateDialog& dialog) {
                                dialog.accept();
                                EXPECT_TRUE(field.date().has_value());
                                EXPECT_EQ(chosen.count(), 1);
                              });
  EXPECT_TRUE(field.date().has_value());
  EXPECT_EQ(chosen.count(), 1);
}

TEST_F(CategoryFields, MayBeDeletedWhileDialogIsOpen) {
  auto* field = new CategoryField;
  field->setStored(store_, "meeting");
  QSignalSpy chosen(field, &CategoryField::chosen);
  inDialog<NameDialog>([&] { Q_EMIT field->activated(field->count() - 1); },
                       [&](NameDialog&) { delete field; });
  EXPECT_EQ(chosen.count(), 0);
}

TEST_F(CategoryFields, RecognizeExistingNames) {
  field_.setStored(store_, {});
  askForNew(naming("garden"));
  EXPECT_EQ(field_.category(), "garden");
  askForNew(naming("Meeting"));
  EXPECT_EQ(field_.category(), "meeting");
  askForNew(naming("No Category"));
  EXPECT_TRUE(field_.category().isNull());
  EXPECT_EQ(field_.currentText(), "No Category");
  EXPECT_EQ(field_.count(), 7);
}

TEST_F(CategoryFields, RejectEmptyName) {
  QWidget behind;
  NameDialog dialog(&behind);
  auto* line = dialog.findChild<QLineEdit*>();
  const auto okWorks = [&] { return dialog.keys()->findChild<QWidget*>("softkey0")->isEnabled(); };
  EXPECT_FALSE(okWorks());
  line->setText("  ");
  EXPECT_FALSE(okWorks());
  dialog.accept();
  EXPECT_NE(dialog.result(), QDialog::Accepted);
  line->setText(" a ");
  EXPECT_TRUE(okWorks());
  dialog.accept();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.name(), "a");
}

TEST(ChoiceFields, EachChoiceHasItsIcon) {
  QWidget window;
  const auto icons = [](const QComboBox& field) {
    std::vector<std::pair<int, std::string>> result;
    for (int i = 0; i < field.count(); ++i) {
      std::string found = "none";
      for (const char* name : {"complete", "incomplete", "hi_pri", "normal_pri", "lo_pri"}) {
        const std::string file = std::string("todo_task_") + name + "_small.gif";
        const QIcon icon = field.itemIcon(i);
        if (!icon.isNull() && isIcon(icon.pixmap(icon.availableSizes().at(0)), file.c_str()))
          found = name;
      }
      result.emplace_back(field.itemData(i).toInt(), found);
    }
    return result;
  };
  using testing::Pair;
  EXPECT_THAT(icons(*tasks::newStatusField(&window)),
              ElementsAre(Pair(1, "incomplete"), Pair(0, "complete")));
  EXPECT_THAT(icons(*tasks::newPriorityField(&window)),
              ElementsAre(Pair(1, "hi_pri"), Pair(5, "normal_pri"), Pair(9, "lo_pri")));
}

TEST(ChoiceFields, ArrowsMoveFocusAndEnterOpensList) {
  QWidget window;
  auto* column = new QVBoxLayout(&window);
  auto* status = tasks::newStatusField(&window);
  auto* priority = tasks::newPriorityField(&window);
  column->addWidget(status);
  column->addWidget(priority);
  window.show();
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  status->setFocus();
  QTest::keyClick(status, Qt::Key_Down);
  EXPECT_TRUE(priority->hasFocus());
  EXPECT_EQ(status->currentIndex(), 0);
  QTest::keyClick(priority, Qt::Key_Up);
  EXPECT_TRUE(status->hasFocus());
  QTest::keyClick(status, Qt::Key_Return);
  EXPECT_TRUE(status->view()->isVisible());
  QTest::keyClick(status->view(), Qt::Key_Down);
  QTest::keyClick(status->view(), Qt::Key_Return);
  EXPECT_EQ(status->currentData(), 0);
  EXPECT_EQ(status->currentText(), "Completed");
}

// Keys that arrive at the field's window while the list is open.
TEST(ChoiceFields, EnterThatClosesListDoesNotOpenItAgain) {
  QWidget window;
  auto* column = new QVBoxLayout(&window);
  auto* status = tasks::newStatusField(&window);
  column->addWidget(status);
  window.show();
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  status->setFocus();
  const auto press = [&window](Qt::Key key) { QTest::keyClick(window.windowHandle(), key); };
  for (const auto& [key, shown] :
       {std::pair(Qt::Key_Down, "Completed"), {Qt::Key_Up, "Incomplete"}}) {
    press(Qt::Key_Return);
    ASSERT_TRUE(status->view()->isVisible());
    press(key);
    press(Qt::Key_Return);
    EXPECT_FALSE(status->view()->isVisible());
    EXPECT_EQ(status->currentText(), shown);
  }
}

}  // namespace
