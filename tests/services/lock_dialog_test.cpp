// Tests for the dialog that asks for the code, with keys and touch.

#include "lock_test.h"

#include "LockDialog.h"
#include "SETUP_SECURITY_Util.h"
#include "ZApplication.h"
#include "ZSoftKey.h"
#include "gui_test.h"
#include "log_capture.h"
#include "screen_reader_probe.h"

#include <QLineEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gmock/gmock.h>

#include <thread>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;

QLineEdit* codeOf(const QWidget& dialog) {
  return dialog.findChild<QLineEdit*>();
}

QToolButton* keyOf(const QWidget& dialog, int position) {
  return dialog.findChild<QToolButton*>(QStringLiteral("softkey%1").arg(position));
}

class LockDialogTest : public LockTest {
protected:
  void SetUp() override { set("1234"); }

  // Shows a dialog for lock_.
  LockDialog& dialog() {
    dialog_ = std::make_unique<LockDialog>(lock_);
    dialog_->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(dialog_.get()));
    return *dialog_;
  }
  // Types a code and presses `key`.
  static void enter(QWidget& dialog, const QString& code, Qt::Key key = Qt::Key_F1) {
    QTest::keyClicks(codeOf(dialog), code);
    QTest::keyClick(codeOf(dialog), key);
  }

private:
  std::unique_ptr<LockDialog> dialog_;
};

TEST_F(LockDialogTest, AsksWithoutShowingTheCode) {
  const LockDialog& asking = dialog();
  EXPECT_EQ(asking.windowTitle(), "Application Lock");
  EXPECT_EQ(asking.message(), "Enter the lock code:");
  EXPECT_TRUE(isIcon(asking.titleIcon(), "lock_pop.gif"));
  EXPECT_EQ(asking.keys()->text(ZSoftKey::left), "OK");
  EXPECT_EQ(asking.keys()->text(ZSoftKey::right), "Cancel");
  EXPECT_TRUE(asking.isModal());
  EXPECT_TRUE(codeOf(asking)->hasFocus());
  EXPECT_EQ(codeOf(asking)->echoMode(), QLineEdit::Password);
  EXPECT_TRUE(codeOf(asking)->inputMethodHints().testFlag(Qt::ImhSensitiveData));
}

TEST_F(LockDialogTest, AcceptsCorrectCodeWithEachKey) {
  for (const Qt::Key key : {Qt::Key_F1, Qt::Key_Return, Qt::Key_Enter}) {
    LockDialog& asking = dialog();
    enter(asking, "1234", key);
    EXPECT_EQ(asking.result(), QDialog::Accepted) << key;
    EXPECT_FALSE(asking.isVisible());
  }
}

TEST_F(LockDialogTest, AcceptsCorrectCodeByTouch) {
  LockDialog& asking = dialog();
  QTest::keyClicks(codeOf(asking), "1234");
  QTest::mouseClick(keyOf(asking, ZSoftKey::left), Qt::LeftButton);
  EXPECT_EQ(asking.result(), QDialog::Accepted);
}

TEST_F(LockDialogTest, EveryWayToCancelRejects) {
  for (const Qt::Key key : {Qt::Key_F3, Qt::Key_Escape}) {
    LockDialog& asking = dialog();
    enter(asking, "1234", key);
    EXPECT_EQ(asking.result(), QDialog::Rejected) << key;
    EXPECT_FALSE(asking.isVisible());
  }
  LockDialog& asking = dialog();
  QTest::mouseClick(keyOf(asking, ZSoftKey::right), Qt::LeftButton);
  EXPECT_FALSE(asking.isVisible());
  EXPECT_EQ(asking.result(), QDialog::Rejected);
}

TEST_F(LockDialogTest, ReportsAndClearsWrongCode) {
  LockDialog& asking = dialog();
  enter(asking, "1235");
  EXPECT_TRUE(asking.isVisible());
  EXPECT_EQ(asking.message(), "Wrong code. Please try again.");
  EXPECT_EQ(codeOf(asking)->text(), "");
  EXPECT_TRUE(codeOf(asking)->hasFocus());
  enter(asking, "1234");
  EXPECT_EQ(asking.result(), QDialog::Accepted);
}

TEST_F(LockDialogTest, EmptyInputIsNotAnAttempt) {
  LockDialog& asking = dialog();
  for (int i = 0; i < 10; ++i)
    enter(asking, "");
  EXPECT_TRUE(asking.isVisible());
  EXPECT_EQ(asking.message(), "Enter the lock code:");
  EXPECT_EQ(lock_.wait(), milliseconds(0));
}

TEST_F(LockDialogTest, DisablesKeyDuringCountdown) {
  LockDialog& asking = dialog();
  for (int i = 0; i < 4; ++i)
    enter(asking, "wrong");
  EXPECT_EQ(asking.message(), "Too many wrong codes. Next try in 0:02.");
  EXPECT_FALSE(keyOf(asking, ZSoftKey::left)->isEnabled());
  EXPECT_TRUE(keyOf(asking, ZSoftKey::right)->isEnabled());

  const std::string before = bytes();
  for (const Qt::Key key : {Qt::Key_F1, Qt::Key_Return}) {
    enter(asking, "1234", key);
    EXPECT_TRUE(asking.isVisible()) << key;
  }
  asking.accept();
  EXPECT_TRUE(asking.isVisible());
  EXPECT_EQ(bytes(), before);

  codeOf(asking)->clear();
  now_.sinceBoot += milliseconds(1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return asking.message().endsWith("0:02."); }));
  now_.sinceBoot += milliseconds(999);
  EXPECT_TRUE(QTest::qWaitFor([&] { return asking.message().endsWith("0:01."); }));
  EXPECT_FALSE(keyOf(asking, ZSoftKey::left)->isEnabled());
  now_.sinceBoot += seconds(1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return keyOf(asking, ZSoftKey::left)->isEnabled(); }));
  EXPECT_EQ(asking.message(), "Enter the lock code:");
  enter(asking, "1234");
  EXPECT_EQ(asking.result(), QDialog::Accepted);
}

TEST_F(LockDialogTest, NewDialogContinuesCountdown) {
  fail(12);
  now_.sinceBoot += seconds(41);
  const LockDialog& asking = dialog();
  EXPECT_EQ(asking.message(), "Too many wrong codes. Next try in 7:51.");
  EXPECT_FALSE(keyOf(asking, ZSoftKey::left)->isEnabled());
}

TEST_F(LockDialogTest, ShowsLongestWaitInMinutes) {
  fail(20);
  EXPECT_EQ(dialog().message(), "Too many wrong codes. Next try in 15:00.");
}

TEST_F(LockDialogTest, ReportsCodeThatCannotBeChecked) {
  LockDialog& asking = dialog();
  write("damaged");
  LogCapture log;
  enter(asking, "1234");
  EXPECT_TRUE(asking.isVisible());
  EXPECT_EQ(asking.message(), "The code cannot be checked.");
}

TEST_F(LockDialogTest, AnnouncesWrongCodesAndWaitToScreenReaders) {
  const ScreenReader reader;
  LockDialog& asking = dialog();
  const auto alert = [&] { return reader.last(QAccessible::Alert).name; };
  // Returns the accessible description of the focused field.
  const auto description = [&] {
    return QAccessible::queryAccessibleInterface(codeOf(asking))->text(QAccessible::Description);
  };
  EXPECT_EQ(alert(), "");
  enter(asking, "1235");
  EXPECT_EQ(alert(), "Wrong code. Please try again.");
  EXPECT_EQ(description(), "Wrong code. Please try again.");
  for (int i = 0; i < 3; ++i)
    enter(asking, "wrong");
  EXPECT_EQ(alert(), "Too many wrong codes. Next try in 0:02.");
  now_.sinceBoot += seconds(1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return description().endsWith("0:01."); }));
  EXPECT_FALSE(reader.names(QAccessible::DescriptionChanged).empty());
  now_.sinceBoot += seconds(1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return alert() == "Enter the lock code:"; }));
  EXPECT_EQ(description(), "");
  write("damaged");
  LogCapture log;
  enter(asking, "1234");
  EXPECT_EQ(alert(), "The code cannot be checked.");
}

TEST_F(LockDialogTest, UsesLanguageOfApplication) {
  application().setLanguages({"de"});
  EXPECT_EQ(dialog().message(), QString::fromUtf8("Geben Sie den Sperrcode ein:"));
  application().setLanguages({"zh-CN"});
  EXPECT_EQ(dialog().windowTitle(), QString::fromUtf8("应用程序锁"));
  application().setLanguages({"en"});
}

// The check that applications make, with a simulated user.
class LockCheckTest : public LockDialogTest {
protected:
  // Returns the result of the check if the user types a code and presses a key.
  static int answerTo(const QString& code, Qt::Key key) {
    bool asked = false;
    QTimer::singleShot(0, &application(), [&] {
      QWidget* asking = QApplication::activeModalWidget();
      ASSERT_NE(asking, nullptr);
      asked = true;
      enter(*asking, code, key);
      if (asking->isVisible())
        QTest::keyClick(asking, Qt::Key_F3);
    });
    const int answer = SETUP_SECURITY_Util_appLockCheck_modelUI("{}", 1);
    EXPECT_TRUE(asked);
    return answer;
  }
};

TEST_F(LockCheckTest, GrantsAccessForCorrectCode) {
  EXPECT_NE(answerTo("1234", Qt::Key_Return), 0);
}

TEST_F(LockCheckTest, DeniesAccessForWrongCode) {
  LogCapture log;
  EXPECT_EQ(answerTo("1235", Qt::Key_Return), 0);
  EXPECT_THAT(log.text(), HasSubstr("The lock of {} was not opened"));
}

TEST_F(LockCheckTest, DeniesAccessOnCancel) {
  LogCapture log;
  EXPECT_EQ(answerTo("1234", Qt::Key_F3), 0);
}

TEST_F(LockCheckTest, KeepsFailuresForNextCheck) {
  LogCapture log;
  EXPECT_EQ(answerTo("1235", Qt::Key_Return), 0);
  std::string text = bytes();
  const std::string one = "\"failures\": 1";
  ASSERT_NE(text.find(one), std::string::npos) << text;
  write(text.replace(text.find(one), one.size(), "\"failures\": 30"));
  EXPECT_EQ(answerTo("1234", Qt::Key_Return), 0);
}

TEST_F(LockCheckTest, SurvivesDeletionOfWindowBelow) {
  LogCapture log;
  auto* window = new QWidget;
  window->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window));
  QPointer<QWidget> asking;
  QTimer::singleShot(0, &application(), [&] {
    asking = QApplication::activeModalWidget();
    ASSERT_FALSE(asking.isNull());
    EXPECT_EQ(asking->parentWidget(), window);
    delete window;
  });
  EXPECT_EQ(SETUP_SECURITY_Util_appLockCheck_modelUI("{}", 1), 0);
  EXPECT_TRUE(asking.isNull());
  EXPECT_THAT(log.text(), HasSubstr("The lock of {} was not opened"));
}

TEST_F(LockCheckTest, DeniesAccessFromAnotherThread) {
  LogCapture log;
  int answer = -1;
  std::thread([&] { answer = SETUP_SECURITY_Util_appLockCheck_modelUI("{}", 1); }).join();
  EXPECT_EQ(answer, 0);
  EXPECT_THAT(log.text(), HasSubstr("there is no application to ask in"));
}

TEST_F(LockCheckTest, ShowsNoDialogForDamagedLock) {
  write("{");
  LogCapture log;
  bool shown = false;
  QTimer::singleShot(0, &application(), [&] { shown = true; });
  EXPECT_EQ(SETUP_SECURITY_Util_appLockCheck_modelUI("{}", 1), 0);
  EXPECT_FALSE(shown);  // no event loop ran
  QCoreApplication::processEvents();
}

}  // namespace
