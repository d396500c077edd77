// Command line for KDE's calendar library: converts calendars to and from JSON.
//
//   kde_peer version
//   kde_peer read FORMAT FILE    prints a JSON array of the to-dos
//   kde_peer write FORMAT FILE   standard input: a to-do
//
// FORMAT is vcal (VCalFormat, vCalendar 1.0) or ical (ICalFormat, iCalendar 2.0). A to-do is an
// object of texts. Dates are in UTC; fields that are not set are omitted.

#include <KCalendarCore/ICalFormat>
#include <KCalendarCore/MemoryCalendar>
#include <KCalendarCore/Todo>
#include <KCalendarCore/VCalFormat>

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <cstdio>
#include <memory>

using namespace KCalendarCore;

namespace {

struct StatusName {
  Incidence::Status status;
  const char* name;
};
constexpr StatusName statusNames[] = {
    {Incidence::StatusNone, "none"},
    {Incidence::StatusTentative, "tentative"},
    {Incidence::StatusConfirmed, "confirmed"},
    {Incidence::StatusCompleted, "completed"},
    {Incidence::StatusNeedsAction, "needs action"},
    {Incidence::StatusCanceled, "canceled"},
    {Incidence::StatusInProcess, "in process"},
    {Incidence::StatusDraft, "draft"},
    {Incidence::StatusFinal, "final"},
    {Incidence::StatusX, "custom"},
};

std::unique_ptr<CalFormat> formatNamed(const QString& name) {
  if (name == "vcal")
    return std::make_unique<VCalFormat>();
  return std::make_unique<ICalFormat>();
}

void setDate(QJsonObject& object, const char* name, const QDateTime& date) {
  if (date.isValid())
    object[name] = date.toUTC().toString(Qt::ISODate);
}

QJsonObject toJson(const Todo::Ptr& todo) {
  QJsonObject object;
  object["summary"] = todo->summary();
  object["note"] = todo->description();
  object["categories"] = QJsonArray::fromStringList(todo->categories());
  object["priority"] = todo->priority();
  for (const StatusName& entry : statusNames)
    if (entry.status == todo->status())
      object["status"] = entry.name;
  object["isCompleted"] = todo->isCompleted();
  setDate(object, "due", todo->dtDue());
  setDate(object, "end", todo->completed());
  setDate(object, "revision", todo->lastModified());
  if (!todo->alarms().isEmpty())
    setDate(object, "alarm", todo->alarms().constFirst()->time());
  return object;
}

Todo::Ptr fromJson(const QJsonObject& object) {
  const auto date = [&](const char* name) {
    return QDateTime::fromString(object[name].toString(), Qt::ISODate)
        .toTimeZone(QTimeZone::systemTimeZone());
  };
  Todo::Ptr todo(new Todo);
  todo->setSummary(object["summary"].toString());
  todo->setDescription(object["note"].toString());
  if (object.contains("category"))
    todo->setCategories(QStringList{object["category"].toString()});
  todo->setPriority(object["priority"].toInt());
  if (object.contains("due"))
    todo->setDtDue(date("due"));
  for (const StatusName& entry : statusNames)
    if (object["status"].toString() == entry.name)
      todo->setStatus(entry.status);
  if (object.contains("end"))
    todo->setCompleted(date("end"));
  if (object.contains("alarm")) {
    const Alarm::Ptr alarm = todo->newAlarm();
    alarm->setDisplayAlarm(todo->summary());
    alarm->setTime(date("alarm"));
    alarm->setEnabled(true);
  }
  todo->setLastModified(date("revision"));
  return todo;
}

MemoryCalendar::Ptr emptyCalendar() {
  return MemoryCalendar::Ptr(new MemoryCalendar(QTimeZone::systemTimeZone()));
}

int read(const QString& format, const QString& file) {
  const MemoryCalendar::Ptr calendar = emptyCalendar();
  formatNamed(format)->load(calendar, file);
  QJsonArray todos;
  for (const Todo::Ptr& todo : calendar->rawTodos())
    todos.append(toJson(todo));
  return std::puts(QJsonDocument(todos).toJson().constData()) < 0 ? 1 : 0;
}

int write(const QString& format, const QString& file) {
  QFile input;
  if (!input.open(stdin, QIODevice::ReadOnly))
    return 1;
  const MemoryCalendar::Ptr calendar = emptyCalendar();
  calendar->addTodo(fromJson(QJsonDocument::fromJson(input.readAll()).object()));
  return formatNamed(format)->save(calendar, file) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication app(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  const QString verb = arguments.value(1);
  if (verb == "version")
    return std::puts(KDE_VERSION) < 0 ? 1 : 0;
  if (verb == "read" && arguments.size() == 4)
    return read(arguments.at(2), arguments.at(3));
  if (verb == "write" && arguments.size() == 4)
    return write(arguments.at(2), arguments.at(3));
  std::fputs("usage: kde_peer version | read vcal|ical FILE | write vcal|ical FILE\n", stderr);
  return 2;
}
