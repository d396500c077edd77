// Calendar texts for tests.
#pragma once

#include "TASK_ENG_Ical.h"

#include "task_text.h"

#include <QByteArray>
#include <QStringList>

#include <initializer_list>
#include <string>

// Joins lines with CR LF.
inline QByteArray linesOf(std::initializer_list<QByteArray> lines) {
  QByteArray text;
  for (const QByteArray& line : lines)
    text += line + "\r\n";
  return text;
}

inline QByteArray calendarOf(const QByteArray& components) {
  return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//test//test//EN\r\n" + components +
         "END:VCALENDAR\r\n";
}

// A calendar with one to-do that has these lines.
inline QByteArray todoOf(std::initializer_list<QByteArray> lines) {
  return calendarOf("BEGIN:VTODO\r\n" + linesOf(lines) + "END:VTODO\r\n");
}

inline ZTASK_ENG_Task taskOf(std::initializer_list<QByteArray> lines) {
  return TASK_ENG_Ical(todoOf(lines)).task(0);
}

// The lines that only one of two texts has, in order: "-" for the first, "+" for the second. Long
// lines are shown as they are folded.
inline std::string differenceOf(const QByteArray& before, const QByteArray& after) {
  const QList<QByteArray> one = before.split('\n');
  const QList<QByteArray> other = after.split('\n');
  std::string result;
  qsizetype i = 0;
  qsizetype j = 0;
  const auto show = [&](char sign, const QByteArray& line) {
    result += sign + line.trimmed().toStdString() + "\n";
  };
  while (i < one.size() || j < other.size()) {
    if (i < one.size() && j < other.size() && one[i] == other[j]) {
      ++i;
      ++j;
    } else if (i < one.size() && !other.mid(j).contains(one[i])) {
      show('-', one[i++]);
    } else if (j < other.size() && !one.mid(i).contains(other[j])) {
      show('+', other[j++]);
    } else if (i < one.size()) {
      show('-', one[i++]);
    } else {
      show('+', other[j++]);
    }
  }
  return result;
}

// The problems of a text: "line: text", one to a line.
inline std::string problemsOf(const QByteArray& text) {
  const TASK_ENG_Ical calendar(text);
  std::string result;
  for (const TASK_ENG_Ical::Problem& problem : calendar.report().problems)
    result += std::to_string(problem.line) + ": " + problem.text.toStdString() + "\n";
  return result;
}
