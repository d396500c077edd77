// To-dos with KDE's calendar library: the work of ulotask's verbs on one iCalendar file. Built and
// run by bench/peers.
//   peer_kcalcore import FILE.vcs | list FILE | export FILE | search FILE TEXT | add FILE
// Times the work on a text in memory and prints the median in seconds, for bench/report:
//   peer_kcalcore time-read FILE | time-edit FILE

#include <KCalendarCore/ICalFormat>
#include <KCalendarCore/MemoryCalendar>
#include <KCalendarCore/VCalFormat>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimeZone>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

using namespace KCalendarCore;

// Reads the text; if `edits`, also replaces the last summary and writes the text anew. Returns
// false if that fails.
bool work(const QString& text, bool edits) {
  const MemoryCalendar::Ptr calendar(new MemoryCalendar(QTimeZone::systemTimeZone()));
  ICalFormat format;
  if (!format.fromString(calendar, text) || calendar->rawTodos().isEmpty())
    return false;
  if (!edits)
    return true;
  calendar->rawTodos().last()->setSummary(QStringLiteral("Edited"));
  return format.toString(calendar).contains(QLatin1String("Edited"));
}

int timeWork(const QString& name, bool edits) {
  QFile file(name);
  if (!file.open(QIODevice::ReadOnly))
    return 1;
  const QString text = QString::fromUtf8(file.readAll());
  std::vector<double> times;
  for (int repetition = 0; repetition < 9; ++repetition) {
    constexpr qint64 enough = 30'000'000;  // nanoseconds
    int calls = 0;
    QElapsedTimer timer;
    timer.start();
    do {
      if (!work(text, edits))
        return 1;
      ++calls;
    } while (timer.nsecsElapsed() < enough);
    times.push_back(timer.nsecsElapsed() / 1e9 / calls);
  }
  std::sort(times.begin(), times.end());
  std::printf("%.9f\n", times[times.size() / 2]);
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  if (count < 3)
    return 2;
  const char* verb = arguments[1];
  const QString file = QString::fromLocal8Bit(arguments[2]);
  if (std::strcmp(verb, "time-read") == 0 || std::strcmp(verb, "time-edit") == 0)
    return timeWork(file, std::strcmp(verb, "time-edit") == 0);
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
