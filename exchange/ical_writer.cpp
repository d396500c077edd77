#include "ical_writer.h"

#include "calendar_text.h"
#include "content_line.h"
#include "todo_fields.h"

namespace ulo {

IcalWriter::IcalWriter() {
  const CalendarText empty = CalendarText::empty();
  const std::string_view begin = empty.bytes(empty.pieces().front());
  const std::string_view end = empty.bytes(empty.pieces().back());
  begin_ = QByteArray(begin.data(), static_cast<qsizetype>(begin.size()));
  end_ = QByteArray(end.data(), static_cast<qsizetype>(end.size()));
  lineEnd_ = empty.lineEnd();
}

IcalWriter::~IcalWriter() = default;

QByteArray IcalWriter::add(const QByteArray& text, const ZTASK_ENG_Task& task) {
  const CalendarText source(text);
  if (source.todos().empty())
    return newTodo(task, lineEnd_);
  const CalendarText::Parts parts = source.parts(source.todos().front());
  QByteArray result;
  const ZoneNames::Zones zones = zones_.take(parts.zones);
  for (const auto& [id, component] : zones.added)
    result += component;
  for (const QByteArray& component : withZoneNames(parts.todo, zones.renamed))
    result += component;
  return result;
}

}  // namespace ulo
