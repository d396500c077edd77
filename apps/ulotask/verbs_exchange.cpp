#include "arguments.h"
#include "calendar_file.h"
#include "exit_codes.h"
#include "listing.h"
#include "progress.h"
#include "session.h"
#include "take_in.h"
#include "task_format.h"
#include "task_json.h"
#include "text.h"
#include "verbs.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace ulotask {
namespace {

struct ImportOptions {
  std::vector<std::string> files;
  bool json = false;
};

struct Calendar {
  std::string name;
  QList<ZTASK_ENG_Task> tasks;
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

using Calendars = std::vector<std::unique_ptr<Calendar>>;

// Reports of an import. They are printed only after everything has been committed.
struct Stored {
  std::vector<std::string> notices;
  std::vector<std::string> lines;
  TaskArray array;
  std::string json;
};

// Stores the tasks of a calendar, or fails.
void store(Session& session, Calendar& calendar, bool json, Progress& progress, Stored& stored) {
  const std::string name = shownName(calendar.name);
  std::vector<unsigned int> uids;
  for (uint i = 0; i < calendar.tasks.count(); ++i) {
    ZTASK_ENG_Task& task = *calendar.tasks.at(i);
    std::vector<ulo::ShortenedText> shortened;
    require(ulo::takeIn(session.store(), task, &shortened), nothingStored);
    uids.push_back(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID));
    if (json)
      stored.json += stored.array.add(task);
    progress.advance();
    for (const ulo::ShortenedText& text : shortened)
      stored.notices.push_back(name + ", task " + std::to_string(uids.back()) + ": " +
                               sentence(text));
  }
  if (!json && !uids.empty())
    stored.lines.push_back(counted(uids.size(), "task") + " imported from " +
                           oneLine(std::string_view(name)) + ": UID " + shownUids(uids));
}

void import(Session& session, const ImportOptions& options) {
  // The store is locked only after everything has been read.
  Calendars calendars;
  Stored stored;
  std::size_t total = 0;
  for (const std::string& name : options.files) {
    auto calendar = std::make_unique<Calendar>();
    calendar->name = name;
    calendar->tasks.setAutoDelete(true);
    for (std::string& notice : readCalendar(name, calendar->tasks))
      stored.notices.push_back(std::move(notice));
    total += calendar->tasks.count();
    calendars.push_back(std::move(calendar));
  }

  session.store();
  {
    Progress progress("importing", total);
    session.inTransaction(nothingStored, [&] {
      for (const std::unique_ptr<Calendar>& calendar : calendars)
        store(session, *calendar, options.json, progress, stored);
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
};

void exportTasks(Session& session, const ExportOptions& options) {
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  if (options.uids.empty()) {
    QValueList<ZTASK_ENG_Task> all = tasksOf(session, {});
    std::sort(all.begin(), all.end(), [](const ZTASK_ENG_Task& a, const ZTASK_ENG_Task& b) {
      return a.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID) <
             b.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
    });
    for (const ZTASK_ENG_Task& task : all)
      tasks.append(new ZTASK_ENG_Task(task));
  } else {
    for (const unsigned int uid : argumentUids(options.uids))
      tasks.append(new ZTASK_ENG_Task(session.task(uid)));
  }

  const std::string text = calendarText(tasks);
  if (options.file == "-") {
    session.output.write(text);
    return;
  }
  writeFile(options.file, text);
  session.output.line(counted(tasks.count(), "task") + " exported to " +
                      oneLine(std::string_view(options.file)));
}

}  // namespace

void addExchangeVerbs(Verb& program, Session& session) {
  Verb verb = program.addVerb("import", "Add the to-dos of vCalendar 1.0 files");
  auto importOptions = std::make_shared<ImportOptions>();
  verb.option("FILE", importOptions->files, "A vCalendar file, or - for standard input").required();
  verb.flag("--json", importOptions->json, "Print the stored tasks as a JSON array");
  verb.footer(
      "Stores all to-dos of all files, or none: nothing is stored if a file is invalid, the store\n"
      "becomes full, or the program is stopped.\n"
      "Examples:\n"
      "  ulotask import phone.vcs\n"
      "  ulotask import - < phone.vcs");
  verb.run([importOptions, &session] { import(session, *importOptions); });

  verb = program.addVerb("export", "Write tasks as a vCalendar 1.0 text");
  auto exportOptions = std::make_shared<ExportOptions>();
  verb.option("UID", exportOptions->uids, "Numbers of tasks; default: all tasks");
  verb.option("-o,--output", exportOptions->file, "The file to write; - is standard output")
      .valueName("FILE")
      .showDefault();
  verb.footer("The text contains no UID, and import does not read its category.\n"
              "Examples:\n"
              "  ulotask export -o tasks.vcs\n"
              "  ulotask export 7 8 > two.vcs");
  verb.run([exportOptions, &session] { exportTasks(session, *exportOptions); });
}

}  // namespace ulotask
