#include "take_in_ical.h"

#include "change_task.h"
#include "stored_text.h"
#include "task_dates.h"
#include "task_uuids.h"
#include "task_words.h"
#include "todo_text.h"

#include <QByteArrayView>
#include <QCryptographicHash>

#include <algorithm>
#include <cstring>

namespace ulo {
namespace {

using Field = ZTASK_ENG_Task::TASK_FIELD_T;

constexpr Field texts[] = {ZTASK_ENG_Task::TASK_FIELD_SUMMARY, ZTASK_ENG_Task::TASK_FIELD_NOTE,
                           ZTASK_ENG_Task::TASK_FIELD_CATEGORY};
constexpr Field dates[] = {ZTASK_ENG_Task::TASK_FIELD_DUE, ZTASK_ENG_Task::TASK_FIELD_ALARM,
                           ZTASK_ENG_Task::TASK_FIELD_END};

bool sameDate(const ZTASK_ENG_Task& a, const ZTASK_ENG_Task& b, Field field) {
  return hasDate(a, field) == hasDate(b, field) &&
         (!hasDate(a, field) || a.getDateTime(field) == b.getDateTime(field));
}

// Sets the fields of `task` in which `changed` differs from `base`.
void applyChanges(const ZTASK_ENG_Task& base, const ZTASK_ENG_Task& changed, ZTASK_ENG_Task& task) {
  for (const Field field : texts) {
    if (changed.getString(field) != base.getString(field))
      task.setString(field, changed.getString(field));
  }
  for (const Field field : dates) {
    if (!sameDate(changed, base, field))
      task.setDateTime(field, changed.getDateTime(field));
  }
  if (changed.getPriorityValue() != base.getPriorityValue())
    task.setPriority(changed.getPriorityValue());
  if (changed.getStatusValue() != base.getStatusValue())
    task.setStatus(changed.getStatusValue());
}

// A to-do that repeats, moved to the date of the stored text if that is one of its next dates: the
// file does not know yet that earlier dates were completed here. Otherwise as it came.
TASK_ENG_Ical::Todo caughtUp(const TASK_ENG_Ical::Todo& todo, const TASK_ENG_Ical& base) {
  constexpr int mostDates = 1000;
  constexpr Field dueField = ZTASK_ENG_Task::TASK_FIELD_DUE;
  const ZTASK_ENG_Task stored = base.task(0);
  if (!todo.repeats || !base.repeats(0) || !hasDate(todo.task, dueField) ||
      !hasDate(stored, dueField))
    return todo;
  const QDateTime target = stored.getDateTime(dueField);
  TASK_ENG_Ical moved(todo.text);
  QDateTime due = todo.task.getDateTime(dueField);
  for (int i = 0; i < mostDates && due < target; ++i) {
    if (moved.moveToNextDate(0) != TASK_ENG_Ical::moved)
      return todo;
    due = moved.task(0).getDateTime(dueField);
  }
  if (due != target || due == todo.task.getDateTime(dueField))
    return todo;
  return {moved.task(0), moved.text(), true};
}

}  // namespace

IcalIntake::Digest IcalIntake::digestOf(QStringView uuid) {
  const QByteArrayView bytes(reinterpret_cast<const char*>(uuid.utf16()),
                             uuid.size() * static_cast<qsizetype>(sizeof(char16_t)));
  const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Blake2s_128);
  Digest digest{};
  std::memcpy(digest.data(), hash.constData(), sizeof digest);
  return digest;
}

IcalIntake::Announced* IcalIntake::announced(QStringView uuid) {
  const Digest digest = digestOf(uuid);
  const auto found =
      std::lower_bound(announced_.begin(), announced_.end(), digest,
                       [](const Announced& one, const Digest& other) { return one.uuid < other; });
  return found != announced_.end() && found->uuid == digest ? &*found : nullptr;
}

void IcalIntake::expect(const QString& uuid) {
  if (!uuid.isEmpty())
    announced_.push_back({digestOf(uuid), 0, 1});
}

int IcalIntake::find() {
  std::sort(announced_.begin(), announced_.end(),
            [](const Announced& one, const Announced& other) { return one.uuid < other.uuid; });
  std::size_t last = 0;
  for (std::size_t i = 1; i < announced_.size(); ++i) {
    if (announced_[i].uuid == announced_[last].uuid)
      ++announced_[last].todos;
    else
      announced_[++last] = announced_[i];
  }
  announced_.resize(std::min(announced_.size(), last + 1));
  if (announced_.empty())
    return TASK_ENG_OK;
  return forEachUuid([this](QStringView uuid, unsigned int uid) {
    if (Announced* const known = announced(uuid); known != nullptr && known->uid == 0)
      known->uid = uid;
  });
}

int IcalIntake::find(const std::vector<QString>& uuids) {
  for (const QString& uuid : uuids)
    expect(uuid);
  return find();
}

int IcalIntake::take(const TASK_ENG_Ical::Todo& todo, TakenIn& taken) {
  const QString uuid = todo.task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID);
  if (uuid.isEmpty() || known_ == Known::addAgain)
    return add(todo, taken);
  Announced* const known = announced(uuid);
  if (known == nullptr)
    return add(todo, taken);
  if (known->todos > 1) {
    --known->todos;
    taken = {Taken::repeated, 0, {}};
    return TASK_ENG_OK;
  }
  return known->uid == 0 ? add(todo, taken) : update(known->uid, todo, taken);
}

int IcalIntake::add(const TASK_ENG_Ical::Todo& todo, TakenIn& taken) {
  constexpr Field uuidField = ZTASK_ENG_Task::TASK_FIELD_UUID;
  ZTASK_ENG_Task task = todo.task;
  const QString own = task.getString(uuidField);
  Announced* const known = own.isEmpty() ? nullptr : announced(own);
  if (own.isEmpty() || (known != nullptr && known->uid != 0))
    task.setString(uuidField, QString());  // the store makes a new one
  taken = {Taken::added, 0, shortenTexts(task)};
  if (!hasDate(task, ZTASK_ENG_Task::TASK_FIELD_REVISION))
    setChangedNow(task);
  if (const int code = addTask(store_, task); code != TASK_ENG_OK)
    return code;
  taken.uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  const QString uuid = task.getString(uuidField);
  if (known != nullptr && known->uid == 0)
    known->uid = taken.uid;
  return storeText(taken.uid, uuid == own ? todo.text : withUid(todo.text, uuid));
}

int IcalIntake::update(unsigned int uid, const TASK_ENG_Ical::Todo& todo, TakenIn& taken) {
  taken = {Taken::unchanged, uid, {}};
  QByteArray stored;
  if (const int code = readText(uid, stored); code != TASK_ENG_OK)
    return code;
  if (!stored.isEmpty() && hasSameTodos(stored, todo.text))
    return TASK_ENG_OK;
  ChangeReport report;
  if (const int code = readTask(store_, uid, report.task); code != TASK_ENG_OK)
    return code;
  const QByteArray current = TASK_ENG_Ical::write(report.task, stored);
  if (hasSameTodos(current, todo.text))
    return TASK_ENG_OK;
  // Without a stored text, the to-do was made from the task.
  const QByteArray& baseText = stored.isEmpty() ? current : stored;
  const TASK_ENG_Ical base(baseText);
  QByteArray text = todo.text;
  if (base.count() > 0) {
    if (isOlder(todo.text, baseText)) {
      taken.how = Taken::older;
      return TASK_ENG_OK;
    }
    const TASK_ENG_Ical::Todo latest = caughtUp(todo, base);
    applyChanges(base.task(0), latest.task, report.task);
    text = latest.text;
  }
  taken.how = Taken::updated;
  taken.shortened = shortenTexts(report.task);
  if (const int code = storeTask(store_, report); code != TASK_ENG_OK)
    return code;
  return storeText(uid, text);
}

}  // namespace ulo
