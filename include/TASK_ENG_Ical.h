// Reads and edits to-dos as iCalendar 2.0 text (RFC 5545).
#pragma once

#include "ZTASK_ENG_Task.h"
#include "ulo/export.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <cstddef>
#include <memory>
#include <vector>

// A calendar text that keeps every line as it came: folding, line ends, letter case, order,
// parameters, unknown properties and components. Only the lines of fields that are replaced change.
// text() of a document in which nothing was replaced returns the bytes that it was made of.
//
// Needs no library that is opened at run time, and writes no file. May be used in any thread; an
// object must not be used by two threads at once, not even to read. What libical computes needs
// none of its state for the process. The time it takes and the memory it needs grow with the size
// of the text, whatever the text contains. docs/icalendar.md lists fields and limits.
class ULO_EXPORT TASK_ENG_Ical {
public:
  // Why a text cannot be read.
  enum Failure : int {
    none,
    notCalendar,  // the text is not an iCalendar 2.0 calendar
    truncated,    // a component or the text does not end
    tooLarge,     // a limit of the format is exceeded; `problems` says which
    noTodo,       // the calendar contains no to-do
  };

  // A line that was understood only in part. The line itself is kept.
  struct Problem {
    std::size_t line = 0;  // number of the line in the text, from 1
    QString text;          // what was not understood and what is used instead
  };

  struct Report {
    Failure failure = none;
    int todos = 0;                  // to-dos, each with all its overrides (RECURRENCE-ID)
    int otherComponents = 0;        // events, journals and others, which are only kept
    std::vector<Problem> problems;  // the first 100
    std::size_t problemCount = 0;
  };

  // Returns true if the text begins, after a byte order mark and blank lines, with a calendar whose
  // VERSION is 2.0. Does not read further than that property.
  static bool isIcalendar(const QByteArray& text);

  // A calendar without to-dos.
  TASK_ENG_Ical();
  explicit TASK_ENG_Ical(const QByteArray& text);
  TASK_ENG_Ical(TASK_ENG_Ical&& other) noexcept;
  TASK_ENG_Ical& operator=(TASK_ENG_Ical&& other) noexcept;
  ~TASK_ENG_Ical();

  // Describes the text that the object was made of. Reads the fields of all to-dos.
  const Report& report() const;

  // To-dos are numbered from 0 in the order of the text. `todo` must be less than count().
  int count() const;

  // Returns the to-do as a record with uid notStored. Summaries and notes are not truncated.
  ZTASK_ENG_Task task(int todo) const;
  // Returns a calendar with this to-do alone, its overrides and the time zones that it uses, each
  // line as it came. A calendar that contains nothing else is returned whole.
  QByteArray text(int todo) const;
  // Returns true if the to-do has a recurrence rule or recurrence dates.
  bool repeats(int todo) const;

  // Replaces the lines of the fields in which `task` differs from task(todo); then also DTSTAMP,
  // LAST-MODIFIED and SEQUENCE. Returns true if a line was replaced. A summary or note that is the
  // beginning of the present one, truncated at the limits of ZTASK_ENG_Task, does not differ, and
  // neither does a value that iCalendar cannot tell from the present one (for example a status
  // other than completed, accepted and declined from "needs action"). UID is never replaced.
  bool replace(int todo, const ZTASK_ENG_Task& task);
  // Appends a to-do with the fields of `task`, and with a new UID if it has no uuid. If there is no
  // calendar that can be read, begins one at the end of the text.
  void append(const ZTASK_ENG_Task& task);
  // Appends the to-do of a text as returned by text(int), its overrides, and its time zones unless
  // the calendar has them. A time zone gets a new name, also in the lines that use it, if a
  // different one of the calendar has its name.
  void append(const TASK_ENG_Ical& other, int todo);

  enum NextDate : int {
    moved,       // the to-do has been moved to its next date
    lastDate,    // the present date is the last one
    noRule,      // the to-do does not repeat
    notComputed  // the rule cannot be computed
  };
  // Moves a repeating to-do to the date that follows its present one: DTSTART and DUE with it, and
  // a COUNT in the rule is reduced. Alarms with a relative trigger follow; others are moved by the
  // same time. The moved to-do needs action and is not partly done. Leaves the text unchanged
  // unless it returns `moved`.
  NextDate moveToNextDate(int todo);

  // Returns the whole calendar. Lines that were replaced are folded at 75 bytes and end as the
  // other lines of the text do.
  QByteArray text() const;

  // What a task of the store needs, in one call: the to-dos of a text with the text of each. Fails
  // with tooLarge if the texts have more than textsLimit bytes together, since each repeats the
  // lines of the calendar and its time zones.
  static constexpr std::size_t textsLimit = std::size_t{128} << 20;
  struct Todo {
    ZTASK_ENG_Task task;
    QByteArray text;
    bool repeats = false;
  };
  static std::vector<Todo> read(const QByteArray& text, Report* report = nullptr);
  // Returns the text of a task: `previousText` with the fields of `task`, or a new calendar if that
  // is empty or cannot be read.
  static QByteArray write(const ZTASK_ENG_Task& task, const QByteArray& previousText = {});

private:
  struct Document;
  std::unique_ptr<Document> document_;
};
