// To-dos with KDE's calendar library: the work of ulotask's verbs on one iCalendar file. Built and
// run by bench/peers.
//   peer_kcalcore import FILE.vcs | list FILE | export FILE | search FILE TEXT | add FILE

#include <KCalendarCore/ICalFormat>
#include <KCalendarCore/MemoryCalendar>
#include <KCalendarCore/VCalFormat>

#include <QCoreApplication>
#include <QTimeZone>

#include <cstdio>
#include <cstring>

int main(int count, char** arguments) {
  using namespace KCalendarCore;
  const QCoreApplication application(count, arguments);
  if (count < 3)
    return 2;
  const char* verb = arguments[1];
  const QString file = QString::fromLocal8Bit(arguments[2]);
  const MemoryCalendar::Ptr calendar(new MemoryCalendar(QTimeZone::systemTimeZone()));
  VCalFormat old;
  ICalFormat format;
  const bool imports = std::strcmp(verb, "import") == 0;
  if (!(imports ? old.load(calendar, file) : format.load(calendar, file)))
    return 1;
  if (imports)
    return calendar->rawTodos().isEmpty() ? 1 : 0;
  if (std::strcmp(verb, "list") == 0) {
    for (const Todo::Ptr& todo : calendar->todos(TodoSortDueDate))
      std::puts(todo->summary().toUtf8().constData());
  } else if (std::strcmp(verb, "export") == 0) {
    std::puts(format.toString(calendar).toUtf8().constData());
  } else if (std::strcmp(verb, "search") == 0 && count > 3) {
    const QString text = QString::fromLocal8Bit(arguments[3]);
    for (const Todo::Ptr& todo : calendar->rawTodos()) {
      if (todo->summary().contains(text) || todo->description().contains(text))
        std::puts(todo->summary().toUtf8().constData());
    }
  } else if (std::strcmp(verb, "add") == 0) {
    const Todo::Ptr todo(new Todo);
    todo->setSummary(QStringLiteral("Buy milk"));
    calendar->addTodo(todo);
    return format.save(calendar, file) ? 0 : 1;
  } else {
    return 2;
  }
  return 0;
}
