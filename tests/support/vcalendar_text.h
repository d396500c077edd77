// Texts in vCalendar 1.0.
#pragma once

#include <string>

inline std::string todo(const std::string& lines) {
  return "BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n";
}
inline std::string calendar(const std::string& todos) {
  return "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + todos + "END:VCALENDAR\r\n";
}
