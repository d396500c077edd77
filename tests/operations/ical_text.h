// iCalendar texts for tests.
#pragma once

#include <QByteArray>

#include <string>

inline QByteArray icalTodo(const std::string& lines) {
  return QByteArray::fromStdString("BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n");
}

inline QByteArray icalendar(const QByteArray& content) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//elsewhere//EN\r\n" + content +
         "END:VCALENDAR\r\n";
}
