#include "arguments.h"
#include "calendar_file.h"
#include "database.h"
#include "exit_codes.h"
#include "listing.h"
#include "progress.h"
#include "session.h"
#include "stored_text.h"
#include "take_in.h"
#include "take_in_ical.h"
#include "task_format.h"
#include "task_json.h"
#include "text.h"
#include "verbs.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ulotask {
namespace {

struct ImportOptions {
  std::vector<std::string> files;
  bool addAgain = false;
  bool json = false;
};

// The stored UIDs, abbreviated if there are many.
std::string shownUids(const std::vector<unsigned int>& uids) {
  constexpr std::size_t shownAtBothEnds = 5;
  std::string text;
  for (std::size_t i = 0; i < uids.size(); ++i) {
    if (uids.size() > 2 * shownAtBothEnds && i == shownAtBothEnds) {
      text += ", ...";
      i = uids.size() - shownAtBothEnds;
    }
    text += (i == 0 ? "" : ", ") + std::to_string(uids[i]);
  }
  return text;
}

// The operation that failed if an import stores nothing.
constexpr const char* nothingStored = "nothing was stored: the import";

// Reports of an import. They are printed only after everything has been committed.
struct Stored {
  std::vector<std::string> notices;
  std::vector<std::string> lines;
  TaskArray array;
  std::string json;
};

struct TakenEntry {
  ulo::Taken how;
  const char* word;      // in reports
  const char* jsonWord;  // value of the field "import"
  bool showsUids;
};
constexpr TakenEntry takenEntries[] = {
    {ulo::Taken::added, "added", "added", true},
    {ulo::Taken::updated, "updated", "updated", true},
    {ulo::Taken::unchanged, "unchanged", "unchanged", false},
    {ulo::Taken::older, "older than the stored task and left out", "older", true},
    {ulo::Taken::repeated, "left out because another with the same UID follows", "repeated", false},
};

// The import of one calendar: stores its to-dos, or fails.
class CalendarImport {
public:
  CalendarImport(Session& session, const std::string& file, const Calendar& calendar, bool json,
                 Stored& stored)
      : session_(session), name_(shownName(file)), calendar_(calendar), json_(json),
        stored_(stored) {}

  void store(ulo::IcalIntake& intake, Progress& progress) {
    for (const std::unique_ptr<ZTASK_ENG_Task>& task : calendar_.tasks) {
      ulo::TakenIn taken;
      require(ulo::takeIn(session_.store(), *task, &taken.shortened), nothingStored);
      taken.uid = task->getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
      note(taken, false);
      progress.advance();
    }
    for (const TASK_ENG_Ical::Todo& todo : calendar_.todos) {
      ulo::TakenIn taken;
      require(intake.take(todo, taken), nothingStored);
      note(taken, todo.repeats);
      progress.advance();
    }
    if (!json_)
      stored_.lines.push_back(line());
  }

private:
  void note(const ulo::TakenIn& taken, bool repeats) {
    uids_[taken.how].push_back(taken.uid);
    for (const ulo::ShortenedText& text : taken.shortened)
      stored_.notices.push_back(name_ + ", task " + std::to_string(taken.uid) + ": " +
                                sentence(text));
    if (!json_ || taken.how == ulo::Taken::repeated)
      return;
    stored_.json +=
        stored_.array.add(session_.task(taken.uid), {repeats, entryOf(taken.how).jsonWord});
  }

  static const TakenEntry& entryOf(ulo::Taken how) {
    return *std::find_if(std::begin(takenEntries), std::end(takenEntries),
                         [=](const TakenEntry& entry) { return entry.how == how; });
  }

  [[nodiscard]] std::string line() const {
    const std::string source =
        oneLine(std::string_view(name_)) + " (" + nameOf(calendar_.version) + "): ";
    if (calendar_.version == CalendarVersion::vcalendar)
      return counted(calendar_.tasks.size(), "task") + " imported from " + source + "UID " +
             shownUids(uids_.at(ulo::Taken::added));
    std::string parts;
    for (const TakenEntry& entry : takenEntries) {
      const auto found = uids_.find(entry.how);
      if (found == uids_.end())
        continue;
      parts +=
          (parts.empty() ? "" : ", ") + std::to_string(found->second.size()) + " " + entry.word;
      if (entry.showsUids)
        parts += " (UID " + shownUids(found->second) + ")";
    }
    return counted(calendar_.todos.size(), "task") + " imported from " + source + parts;
  }

  Session& session_;
  std::string name_;
  const Calendar& calendar_;
  bool json_;
  Stored& stored_;
  std::map<ulo::Taken, std::vector<unsigned int>> uids_;
};

std::vector<QString> uuidsOf(const std::vector<CalendarFile>& files) {
  std::vector<QString> uuids;
  for (const CalendarFile& file : files)
    for (const Calendar& calendar : file.calendars)
      for (const TASK_ENG_Ical::Todo& todo : calendar.todos)
        uuids.push_back(todo.task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID));
  return uuids;
}

void import(Session& session, const ImportOptions& options) {
  // The store is locked only after everything has been read.
  std::vector<CalendarFile> files;
  Stored stored;
  std::size_t total = 0;
  for (const std::string& name : options.files) {
    CalendarFile& file = files.emplace_back(readCalendar(name));
    std::move(file.notices.begin(), file.notices.end(), std::back_inserter(stored.notices));
    for (const Calendar& calendar : file.calendars)
      total += calendar.tasks.size() + calendar.todos.size();
  }

  session.store();
  {
    Progress progress("importing", total);
    session.inTransaction(nothingStored, [&] {
      using Known = ulo::IcalIntake::Known;
      ulo::IcalIntake intake(session.store(), options.addAgain ? Known::addAgain : Known::update);
      require(intake.find(uuidsOf(files)), nothingStored);
      for (const CalendarFile& file : files)
        for (const Calendar& calendar : file.calendars)
          CalendarImport(session, file.name, calendar, options.json, stored)
              .store(intake, progress);
    });
  }
  for (const std::string& notice : stored.notices)
    session.output.notice(notice);
  for (const std::string& line : stored.lines)
    session.output.line(line);
  if (options.json)
    session.output.write(stored.json + stored.array.end());
}

struct ExportOptions {
  std::vector<std::string> uids;
  std::string file = "-";
  std::string format = "vcalendar";
};

std::vector<ZTASK_ENG_Task> exportedTasks(Session& session, const ExportOptions& options) {
  std::vector<ZTASK_ENG_Task> tasks;
  if (options.uids.empty()) {
    const QValueList<ZTASK_ENG_Task> all = tasksOf(session, {});
    tasks.assign(all.begin(), all.end());
    std::sort(tasks.begin(), tasks.end(), [](const ZTASK_ENG_Task& a, const ZTASK_ENG_Task& b) {
      return a.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID) <
             b.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
    });
  } else {
    for (const unsigned int uid : argumentUids(options.uids))
      tasks.push_back(session.task(uid));
  }
  return tasks;
}

std::string vcalendarText(const std::vector<ZTASK_ENG_Task>& tasks) {
  QList<ZTASK_ENG_Task> list;
  list.setAutoDelete(true);
  for (const ZTASK_ENG_Task& task : tasks)
    list.append(new ZTASK_ENG_Task(task));
  return calendarText(list);
}

QByteArray currentText(const ZTASK_ENG_Task& task) {
  QByteArray text;
  require(ulo::currentText(task, text),
          "reading the calendar text of task " +
              std::to_string(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)));
  return text;
}

// A single task keeps the lines of the calendar that it came in.
std::string icalendarText(const std::vector<ZTASK_ENG_Task>& tasks) {
  if (tasks.size() == 1)
    return currentText(tasks.front()).toStdString();
  TASK_ENG_Ical calendar;
  for (const ZTASK_ENG_Task& task : tasks) {
    const TASK_ENG_Ical single(currentText(task));
    if (single.count() > 0)
      calendar.append(single, 0);
    else
      calendar.append(task);
  }
  return calendar.text().toStdString();
}

void exportTasks(Session& session, const ExportOptions& options) {
  session.store();
  std::vector<ZTASK_ENG_Task> tasks;
  std::string text;
  {
    // Tasks and their texts are read in the same state of the store.
    const ReadSnapshot snapshot;
    tasks = exportedTasks(session, options);
    text = options.format == "icalendar" ? icalendarText(tasks) : vcalendarText(tasks);
  }
  if (options.file == "-") {
    session.output.write(text);
    return;
  }
  writeFile(options.file, text);
  session.output.line(counted(tasks.size(), "task") + " exported to " +
                      oneLine(std::string_view(options.file)));
}

}  // namespace

void addExchangeVerbs(Verb& program, Session& session) {
  Verb verb = program.addVerb("import", "Store the to-dos of calendar files");
  auto importOptions = std::make_shared<ImportOptions>();
  verb.option("FILE", importOptions->files,
              "A vCalendar 1.0 or iCalendar 2.0 file, or - for standard input")
      .required();
  verb.flag("--new", importOptions->addAgain,
            "Add to-dos that are stored already once more, with a new UUID");
  verb.flag("--json", importOptions->json, "Print the stored tasks as a JSON array");
  verb.footer(
      "Stores all to-dos of all files, or none: nothing is stored if a file is invalid, the store\n"
      "becomes full, or the program is stopped. The content of a file decides which format it is.\n"
      "\n"
      "A to-do of iCalendar 2.0 whose UID is the UUID of a stored task updates that task: what "
      "has\n"
      "changed since the last import is taken from the file, and other changes made here are "
      "kept.\n"
      "To-dos without changes are left alone, and so are those older than the stored text.\n"
      "Lines that a task has no field for are kept and exported again.\n"
      "To-dos of vCalendar 1.0 are always added.\n"
      "Examples:\n"
      "  ulotask import phone.vcs tasks.ics\n"
      "  ulotask import - < phone.vcs");
  verb.run([importOptions, &session] { import(session, *importOptions); });

  verb = program.addVerb("export", "Write tasks as a calendar text");
  auto exportOptions = std::make_shared<ExportOptions>();
  verb.option("UID", exportOptions->uids, "Numbers of tasks; default: all tasks");
  verb.option("-o,--output", exportOptions->file, "The file to write; - is standard output")
      .valueName("FILE")
      .showDefault();
  verb.option("--format", exportOptions->format,
              "vcalendar (1.0, of phones) or icalendar (2.0, of today's programs)")
      .oneOf({"vcalendar", "icalendar"})
      .valueName("FORMAT")
      .showDefault();
  verb.footer("The name of the file does not decide the format. A vCalendar text contains no UID, "
              "and\nimport does not read its category. An iCalendar text contains all lines that "
              "the tasks\ncame with, and import recognizes the tasks.\n"
              "Examples:\n"
              "  ulotask export -o tasks.vcs\n"
              "  ulotask export --format icalendar -o tasks.ics\n"
              "  ulotask export 7 8 > two.vcs");
  verb.run([exportOptions, &session] { exportTasks(session, *exportOptions); });
}

}  // namespace ulotask
