#include "ZTASK_ENG_Task.h"

#include "UTIL_TimeConversion.h"
#include "clock.h"
#include "task_words.h"
#include "utc_zone.h"

#include <utility>

namespace {

unsigned char bitOf(ZTASK_ENG_Task::TASK_FIELD_T field) {
  return static_cast<unsigned char>(1U << (field - ZTASK_ENG_Task::TASK_FIELD_ALARM));
}
constexpr unsigned char allBits = 0x0F;

}  // namespace

QDateTime ZTASK_ENG_Task::noDate() {
  return QDateTime::fromSecsSinceEpoch(noDateSeconds);
}

ZTASK_ENG_Task::ZTASK_ENG_Task()
    : uid_(notStored), priority_(0), status_(codeOf(ulo::Status::none)), inUtc_(allBits),
      alarm_(QDateTime::fromSecsSinceEpoch(noDateSeconds, ulo::utcZone)), due_(alarm_),
      end_(alarm_), revision_(alarm_) {}

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

// Returns null for a field that is not a date-time.
QDateTime ZTASK_ENG_Task::*ZTASK_ENG_Task::dateMember(TASK_FIELD_T field) {
  switch (field) {
  case TASK_FIELD_ALARM:
    return &ZTASK_ENG_Task::alarm_;
  case TASK_FIELD_DUE:
    return &ZTASK_ENG_Task::due_;
  case TASK_FIELD_END:
    return &ZTASK_ENG_Task::end_;
  case TASK_FIELD_REVISION:
    return &ZTASK_ENG_Task::revision_;
  default:
    return nullptr;
  }
}

QDateTime ZTASK_ENG_Task::getInstant(TASK_FIELD_T field) const {
  const auto date = dateMember(field);
  return date != nullptr ? this->*date : engineNow();
}

QDateTime ZTASK_ENG_Task::getDateTime(TASK_FIELD_T field) const {
  const auto date = dateMember(field);
  if (date == nullptr)
    return engineNow();
  if ((inUtc_ & bitOf(field)) == 0)
    return this->*date;
  return UTIL_TimeConversion::fromUTC(static_cast<long>((this->*date).toSecsSinceEpoch()));
}

void ZTASK_ENG_Task::setDateTime(TASK_FIELD_T field, QDateTime dateTime) {
  const auto date = dateMember(field);
  if (date == nullptr)
    return;
  this->*date = std::move(dateTime);
  inUtc_ = static_cast<unsigned char>(inUtc_ & ~bitOf(field));
}

void ZTASK_ENG_Task::setSeconds(TASK_FIELD_T field, int seconds) {
  const auto date = dateMember(field);
  if (date == nullptr)
    return;
  this->*date = QDateTime::fromSecsSinceEpoch(seconds, ulo::utcZone);
  inUtc_ = static_cast<unsigned char>(inUtc_ | bitOf(field));
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
