#include "alarms/alarm_messages.h"

#include "RES_ICON_Reader.h"
#include "ZSoftKey.h"
#include "ZWrappedText.h"
#include "task_texts.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>
#include <utility>

namespace tasks {

namespace {

auto hasUid(unsigned int uid) {
  return [uid](const ZTASK_ENG_Task& task) {
    return task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID) == uid;
  };
}

}  // namespace

AlarmMessage::AlarmMessage(const ZTASK_ENG_Task& task, QWidget* window)
    : ZPopup(ulo::text("TXT_RID_HEADER_ALARM", "Alarm"), window) {
  setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("alert_pop.gif"), true));
  setKeys(ulo::text("TXT_RID_SOFTKEY_OK", "OK"), ulo::text("TXT_RID_STANDARD_OPEN", "Open"));
  keys()->setClickedSlot(ZSoftKey::right, this, SLOT(openTask()));
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(ulo::gap(this));
  column->addWidget(new ZWrappedText(titleText(task)));
  if (const QString due = dueText(task, QDate::currentDate()); !due.isEmpty())
    column->addWidget(new ZWrappedText(due));
  setContent(content);
  constexpr std::chrono::milliseconds deafness{700};
  QTimer::singleShot(deafness, this, [this] { takesKeys_ = true; });
}

void AlarmMessage::keyPressEvent(QKeyEvent* event) {
  if (takesKeys_)
    ZPopup::keyPressEvent(event);
}

void AlarmMessage::openTask() {
  accept();
  Q_EMIT opened();
}

AlarmMessages::AlarmMessages(QWidget* window) : QObject(window), window_(window) {}

void AlarmMessages::show(const ZTASK_ENG_Task& task) {
  withdraw(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID));
  waiting_.push_back(task);
  showNext();
}

void AlarmMessages::withdraw(unsigned int uid) {
  if (message_ != nullptr && hasUid(uid)(waiting_.front()))
    message_->reject();
  else
    std::erase_if(waiting_, hasUid(uid));
}

void AlarmMessages::showNext() {
  // A closing window has closed its message and is hidden.
  if (message_ != nullptr || waiting_.empty() || !window_->isVisible())
    return;
  message_ = new AlarmMessage(waiting_.front(), window_);
  const unsigned int uid = waiting_.front().getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  connect(message_, &AlarmMessage::opened, this, [this, uid] { Q_EMIT opened(uid); });
  // A message that is closed twice finishes twice.
  const auto next = [this] {
    std::exchange(message_, nullptr)->deleteLater();
    waiting_.pop_front();
    QMetaObject::invokeMethod(this, &AlarmMessages::showNext, Qt::QueuedConnection);
  };
  connect(message_, &QDialog::finished, this, next,
          static_cast<Qt::ConnectionType>(Qt::AutoConnection | Qt::SingleShotConnection));
  message_->open();
  QApplication::beep();
  QApplication::alert(message_);
}

}  // namespace tasks
