#include "ZTASK_ENG_Task.h"

#include "clock.h"
#include "task_words.h"

#include <utility>

QDateTime ZTASK_ENG_Task::noDate() {
  return QDateTime::fromSecsSinceEpoch(noDateSeconds);
}

ZTASK_ENG_Task::ZTASK_ENG_Task()
    : uid_(notStored), priority_(0), status_(codeOf(ulo::Status::none)), alarm_(noDate()),
      due_(alarm_), end_(alarm_), revision_(alarm_) {}

ZTASK_ENG_Task::ZTASK_ENG_Task(const ZTASK_ENG_Task& other) = default;
ZTASK_ENG_Task& ZTASK_ENG_Task::operator=(const ZTASK_ENG_Task& other) = default;
ZTASK_ENG_Task::ZTASK_ENG_Task(ZTASK_ENG_Task&& other) noexcept = default;
ZTASK_ENG_Task& ZTASK_ENG_Task::operator=(ZTASK_ENG_Task&& other) noexcept = default;
ZTASK_ENG_Task::~ZTASK_ENG_Task() = default;

QString ZTASK_ENG_Task::getString(TASK_FIELD_T field) const {
  switch (field) {
  case TASK_FIELD_CATEGORY:
    return category_;
  case TASK_FIELD_NOTE:
    return note_;
  case TASK_FIELD_SUMMARY:
    return summary_;
  case TASK_FIELD_UUID:
    return uuid_;
  default:
    return QString(QLatin1String(""));
  }
}

void ZTASK_ENG_Task::setString(TASK_FIELD_T field, QString text) {
  switch (field) {
  case TASK_FIELD_CATEGORY:
    category_ = std::move(text);
    break;
  case TASK_FIELD_NOTE:
    note_ = std::move(text);
    break;
  case TASK_FIELD_SUMMARY:
    summary_ = std::move(text);
    break;
  case TASK_FIELD_UUID:
    uuid_ = std::move(text);
    break;
  default:
    break;
  }
}

unsigned int ZTASK_ENG_Task::getUINT32(TASK_FIELD_T field) const {
  return field == TASK_FIELD_UID ? uid_ : 0;
}

void ZTASK_ENG_Task::setUINT32(TASK_FIELD_T field, unsigned int value) {
  if (field == TASK_FIELD_UID)
    uid_ = value;
}

QDateTime ZTASK_ENG_Task::getDateTime(TASK_FIELD_T field) const {
  switch (field) {
  case TASK_FIELD_ALARM:
    return alarm_;
  case TASK_FIELD_DUE:
    return due_;
  case TASK_FIELD_END:
    return end_;
  case TASK_FIELD_REVISION:
    return revision_;
  default:
    return engineNow();
  }
}

void ZTASK_ENG_Task::setDateTime(TASK_FIELD_T field, QDateTime dateTime) {
  switch (field) {
  case TASK_FIELD_ALARM:
    alarm_ = std::move(dateTime);
    break;
  case TASK_FIELD_DUE:
    due_ = std::move(dateTime);
    break;
  case TASK_FIELD_END:
    end_ = std::move(dateTime);
    break;
  case TASK_FIELD_REVISION:
    revision_ = std::move(dateTime);
    break;
  default:
    break;
  }
}

int ZTASK_ENG_Task::getPriorityValue() const {
  return priority_;
}

void ZTASK_ENG_Task::setPriority(int priority) {
  priority_ = priority;
}

int ZTASK_ENG_Task::getPriority() const {
  constexpr int normal = codeOf(ulo::Priority::normal);
  if (priority_ == 0 || priority_ == normal)
    return normal;
  return codeOf(priority_ > 0 && priority_ < normal ? ulo::Priority::high : ulo::Priority::low);
}

int ZTASK_ENG_Task::getStatusValue() const {
  return status_;
}

void ZTASK_ENG_Task::setStatus(int status) {
  status_ = status;
}

int ZTASK_ENG_Task::getStatus() const {
  constexpr int completed = codeOf(ulo::Status::completed);
  return status_ == completed ? completed : codeOf(ulo::Status::needsAction);
}
