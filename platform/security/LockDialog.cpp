#include "LockDialog.h"

#include "RES_ICON_Reader.h"
#include "ZSoftKey.h"
#include "ZWrappedText.h"
#include "screen_reader.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QLineEdit>
#include <QVBoxLayout>

using std::chrono::milliseconds;

namespace {

constexpr milliseconds second{1000};

QString enterCode() {
  return ulo::text("TXT_RID_INSTRUCTIONALTXT_ENTER_LOCK_CODE", "Enter the lock code:");
}

// Returns minutes and seconds, rounded up to a full second.
QString shown(milliseconds wait) {
  const auto seconds = (wait + second - milliseconds(1)) / second;
  return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

}  // namespace

LockDialog::LockDialog(ulo::AppLock& lock, QWidget* parent)
    : ZPopup(ulo::text("TXT_RID_HEADER_APPLICATION_LOCK", "Application Lock"), parent), lock_(lock),
      message_(new ZWrappedText(enterCode())), code_(new QLineEdit) {
  setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("lock_pop.gif"), true));
  setKeys(ulo::text("TXT_RID_SOFTKEY_OK", "OK"), ulo::text("TXT_RID_SOFTKEY_CANCEL", "Cancel"));

  code_->setEchoMode(QLineEdit::Password);
  code_->setInputMethodHints(Qt::ImhHiddenText | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
                             Qt::ImhNoAutoUppercase);
  code_->setMaxLength(ulo::LockCode::most);
  code_->setContextMenuPolicy(Qt::NoContextMenu);
  code_->setMinimumHeight(ulo::touchHeight(code_));
  code_->setAccessibleName(enterCode());
  // The dialog keeps its size whatever the message.
  constexpr int lines = 2;
  message_->setMinimumHeight(lines * message_->fontMetrics().lineSpacing());

  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(ulo::gap(this));
  column->addWidget(message_);
  column->addWidget(code_);
  setContent(content);
  code_->setFocus();

  second_.setSingleShot(true);
  connect(&second_, &QTimer::timeout, this, &LockDialog::countDown);
  if (lock_.wait().count() > 0)
    countDown();
}

QString LockDialog::message() const {
  return message_->text();
}

void LockDialog::accept() {
  QString text = code_->text();
  if (text.isEmpty() || lock_.wait().count() > 0) {
    ulo::wipe(text);
    return;
  }
  code_->clear();
  const ulo::LockCode code(text);
  const ulo::AppLock::Result result = lock_.check(code);
  switch (result.answer) {
  case ulo::AppLock::Answer::right:
    ZPopup::accept();
    break;
  case ulo::AppLock::Answer::failed:
    say(ulo::text("TXT_RID_INSTRUCTIONALTXT_LOCK_CODE_CANNOT_BE_CHECKED",
                  "The code cannot be checked."),
        milliseconds(0));
    ulo::announce(message_, message());
    break;
  case ulo::AppLock::Answer::wrong:
  case ulo::AppLock::Answer::tooEarly:
    if (result.wait.count() > 0)
      countDown();
    else
      say(ulo::text("TXT_RID_INSTRUCTIONALTXT_WRONG_LOCK_CODE", "Wrong code. Please try again."),
          milliseconds(0));
    ulo::announce(message_, message());
    break;
  }
}

void LockDialog::say(const QString& text, milliseconds wait) {
  message_->setText(text);
  // Screen readers speak changes of the field that has the focus.
  code_->setAccessibleDescription(text == enterCode() ? QString() : text);
  keys()->setKeyEnabled(ZSoftKey::left, wait.count() == 0);
}

void LockDialog::countDown() {
  const milliseconds wait = lock_.wait();
  if (wait.count() == 0) {
    say(enterCode(), wait);
    ulo::announce(message_, message());
    return;
  }
  say(ulo::text("FMT_RID_INSTRUCTIONALTXT_TOO_MANY_WRONG_LOCK_CODES_1",
                "Too many wrong codes. Next try in %1.")
          .arg(shown(wait)),
      wait);
  // Update when the next second begins.
  second_.start((wait - milliseconds(1)) % second + milliseconds(1));
}
