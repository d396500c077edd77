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
  for (const auto& [id, component] : parts.zones)
    if (zones_.insert(id).second)
      result += component;
  for (const QByteArray& component : parts.todo)
    result += component;
  return result;
}

}  // namespace ulo
