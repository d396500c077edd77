#include "ical_text.h"

#include "TASK_ENG_Ical.h"
#include "dataset.h"

#include <libical/ical.h>

#include <memory>

namespace bench {
namespace {

const char* const zone = "BEGIN:VTIMEZONE\r\nTZID:Europe/Berlin\r\nBEGIN:DAYLIGHT\r\n"
                         "TZNAME:CEST\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\n"
                         "DTSTART:19700329T020000\r\n"
                         "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\nEND:DAYLIGHT\r\n"
                         "BEGIN:STANDARD\r\nTZNAME:CET\r\nTZOFFSETFROM:+0200\r\n"
                         "TZOFFSETTO:+0100\r\nDTSTART:19701025T030000\r\n"
                         "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\nEND:STANDARD\r\n"
                         "END:VTIMEZONE\r\n";

QByteArray todoText(TaskSource& source) {
  Task task = source.next();
  task.setDateTime(Task::TASK_FIELD_DUE, QDateTime());
  task.setDateTime(Task::TASK_FIELD_ALARM, QDateTime());
  const QByteArray calendar = TASK_ENG_Ical::write(task);
  const QByteArray begin = "BEGIN:VTODO\r\n";
  const QByteArray end = "END:VTODO\r\n";
  const qsizetype from = calendar.indexOf(begin);
  return calendar.mid(from, calendar.indexOf(end) - from) +
         "CREATED:20261101T080000Z\r\nDUE;TZID=Europe/Berlin:20261201T180000\r\n"
         "PERCENT-COMPLETE:0\r\nCLASS:PUBLIC\r\nRELATED-TO;RELTYPE=PARENT:parent-1\r\n"
         "X-EXAMPLE-ORDER:17\r\nBEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:Reminder\r\n"
         "TRIGGER;RELATED=END:-PT15M\r\nEND:VALARM\r\n" +
         end;
}

struct ComponentFree {
  void operator()(icalcomponent* component) const { icalcomponent_free(component); }
};
using Component = std::unique_ptr<icalcomponent, ComponentFree>;

}  // namespace

QByteArray icalText(int todos) {
  TaskSource source;
  QByteArray text =
      QByteArray("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Example//EN\r\n") + zone;
  for (int i = 0; i < todos; ++i)
    text += todoText(source);
  return text + "END:VCALENDAR\r\n";
}

int parsedByLibrary(const QByteArray& text) {
  const Component calendar(icalparser_parse_string(text.constData()));
  return icalcomponent_count_components(calendar.get(), ICAL_VTODO_COMPONENT);
}

QByteArray editedByLibrary(const QByteArray& text, const char* summary) {
  const Component calendar(icalparser_parse_string(text.constData()));
  icalcomponent* last = nullptr;
  for (icalcomponent* todo =
           icalcomponent_get_first_component(calendar.get(), ICAL_VTODO_COMPONENT);
       todo != nullptr;
       todo = icalcomponent_get_next_component(calendar.get(), ICAL_VTODO_COMPONENT))
    last = todo;
  icalcomponent_set_summary(last, summary);
  return QByteArray(icalcomponent_as_ical_string(calendar.get()));
}

QByteArray editedByUs(const QByteArray& text, const char* summary) {
  TASK_ENG_Ical calendar(text);
  const int last = calendar.count() - 1;
  Task task = calendar.task(last);
  task.setString(Task::TASK_FIELD_SUMMARY, summary);
  calendar.replace(last, task);
  return calendar.text();
}

}  // namespace bench
