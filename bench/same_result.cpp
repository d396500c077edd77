#include "same_result.h"

#include <QDateTime>

namespace bench {
namespace {

std::string differs(const std::string& what, const std::string& given,
                    const std::string& expected) {
  return what + " '" + given + "' for '" + expected + "'";
}

template <typename List, typename At>
std::string differenceOfLists(const List& given, const List& expected, At at) {
  if (given.count() != expected.count())
    return differs("count", std::to_string(given.count()), std::to_string(expected.count()));
  for (uint i = 0; i < given.count(); ++i)
    if (const std::string difference = differenceOf(at(given, i), at(expected, i));
        !difference.empty())
      return "item " + std::to_string(i) + ": " + difference;
  return {};
}

std::string shown(const QString& text) {
  return text.isNull() ? "(null)" : text.toStdString();
}

}  // namespace

std::string differenceOf(int given, int expected) {
  return given == expected ? "" : differs("", std::to_string(given), std::to_string(expected));
}

std::string differenceOf(const std::string& given, const std::string& expected) {
  return given == expected ? "" : differs("", given, expected);
}

std::string differenceOf(const Uids& given, const Uids& expected) {
  return differenceOfLists(given, expected,
                           [](const Uids& uids, uint i) { return static_cast<int>(uids.at(i)); });
}

std::string differenceOf(const Task& given, const Task& expected) {
  if (given.getUINT32(Task::TASK_FIELD_UID) != expected.getUINT32(Task::TASK_FIELD_UID))
    return differs("UID", std::to_string(given.getUINT32(Task::TASK_FIELD_UID)),
                   std::to_string(expected.getUINT32(Task::TASK_FIELD_UID)));
  if (given.getPriorityValue() != expected.getPriorityValue())
    return differs("priority", std::to_string(given.getPriorityValue()),
                   std::to_string(expected.getPriorityValue()));
  if (given.getStatusValue() != expected.getStatusValue())
    return differs("status", std::to_string(given.getStatusValue()),
                   std::to_string(expected.getStatusValue()));
  for (const Field field : {Task::TASK_FIELD_CATEGORY, Task::TASK_FIELD_NOTE,
                            Task::TASK_FIELD_SUMMARY, Task::TASK_FIELD_UUID}) {
    const QString text = given.getString(field);
    const QString wanted = expected.getString(field);
    if (text != wanted || text.isNull() != wanted.isNull())
      return differs("field " + std::to_string(field), shown(text), shown(wanted));
  }
  for (const Field field : {Task::TASK_FIELD_ALARM, Task::TASK_FIELD_DUE, Task::TASK_FIELD_END,
                            Task::TASK_FIELD_REVISION}) {
    const QDateTime date = given.getDateTime(field);
    const QDateTime wanted = expected.getDateTime(field);
    if (date != wanted || date.timeSpec() != wanted.timeSpec())
      return differs("field " + std::to_string(field), date.toString().toStdString(),
                     wanted.toString().toStdString());
  }
  return {};
}

std::string differenceOf(const Tasks& given, const Tasks& expected) {
  return differenceOfLists(given, expected,
                           [](const Tasks& tasks, uint i) -> const Task& { return tasks.at(i); });
}

std::string differenceOf(const QList<Task>& given, const QList<Task>& expected) {
  return differenceOfLists(given, expected, [](const QList<Task>& tasks, uint i) -> const Task& {
    return *tasks.at(i);
  });
}

}  // namespace bench
