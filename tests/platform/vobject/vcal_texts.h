// Builds texts for the guard, and reads them through the guard and the library.
#pragma once

#include "vcal_guard.h"

#include "bare_library.h"
#include "log_capture.h"

#include <string>
#include <vector>

constexpr char byteOrderMark[] = "\xEF\xBB\xBF";

inline std::string calendar(const std::string& items, const std::string& version = "1.0") {
  return "BEGIN:VCALENDAR\r\nVERSION:" + version + "\r\n" + items + "END:VCALENDAR\r\n";
}

inline std::string todo(const std::string& lines) {
  return "BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n";
}

inline std::string repeat(const std::string& text, std::size_t times) {
  std::string result;
  for (std::size_t i = 0; i < times; ++i)
    result += text;
  return result;
}

inline bool isClean(const std::string& text) {
  return ulo::GuardedText::fromMemory(text, guardedNames()).isClean();
}

// Returns the properties that the library reads from a text with one to-do.
inline TodoProperties propertiesOf(const std::string& text) {
  const LogCapture quiet;
  const auto todos = parseGuarded(text);
  if (!todos || todos->size() != 1)
    return {"(" + (todos ? std::to_string(todos->size()) : std::string("no")) + " to-dos)"};
  return onlyGuarded(*todos)[0];
}

inline std::vector<std::string> piecesOf(const std::string& text) {
  ulo::GuardedText guarded = ulo::GuardedText::fromMemory(text, guardedNames());
  std::vector<std::string> pieces;
  std::string piece;
  while (guarded.nextPiece(piece))
    pieces.push_back(piece);
  return pieces;
}

inline std::string logOf(const std::string& text) {
  LogCapture log;
  piecesOf(text);
  return log.withoutLines();
}

inline std::string nested(std::size_t depth) {
  return calendar(todo("SUMMARY:a\r\n" + repeat("BEGIN:X\r\n", depth - 2) +
                       repeat("END:X\r\n", depth - 2) + "DUE:D\r\n"));
}

inline const std::string oneTodo = todo("SUMMARY:a\r\n");
