#include "arguments.h"
#include "calendar_file.h"
#include "database.h"
#include "exit_codes.h"
#include "ical_writer.h"
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
#include <functional>
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

// The UIDs of tasks, of which reports show all or, if there are many, the first and the last.
class ShownUids {
public:
  void add(unsigned int uid) {
    if (uids_.size() == 2 * shownAtBothEnds)
      uids_.erase(uids_.begin() + shownAtBothEnds);
    uids_.push_back(uid);
    ++count_;
  }
  [[nodiscard]] std::size_t count() const { return count_; }
  [[nodiscard]] std::string text() const {
    std::string text;
    for (std::size_t i = 0; i < uids_.size(); ++i) {
      if (i == shownAtBothEnds && count_ > uids_.size())
        text += ", ...";
      text += (i == 0 ? "" : ", ") + std::to_string(uids_[i]);
    }
    return text;
  }

private:
  static constexpr std::ptrdiff_t shownAtBothEnds = 5;
  std::vector<unsigned int> uids_;
  std::size_t count_ = 0;
};

// The operation that failed if an import stores nothing.
constexpr const char* nothingStored = "nothing was stored: the import";

// Reports of an import. They are printed only after everything has been committed.
struct Stored {
  struct Shortened {
    const std::string* file;
    unsigned int uid;
    ulo::ShortenedText text;
  };
  struct Listed {
    unsigned int uid;
    JsonExtras extras;
  };
  std::vector<std::string> notices;  // of the calendars
  std::vector<Shortened> shortened;
  std::vector<std::string> lines;
  std::vector<Listed> listed;  // tasks to be printed as JSON
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
  // The name of the file must outlive `stored`.
  CalendarImport(Session& session, const std::string& file, Calendar calendar, bool json,
                 Stored& stored)
      : session_(session), file_(file), calendar_(std::move(calendar)), json_(json),
        stored_(stored) {}

  void store(ulo::IcalIntake& intake, Progress& progress) {
    calendar_.forEachTodo(
        [&](ZTASK_ENG_Task& task) {
          ulo::TakenIn taken;
          require(ulo::takeIn(session_.store(), task, &taken.shortened), nothingStored);
          taken.uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
          note(taken, false);
          progress.advance();
        },
        [&](const TASK_ENG_Ical::Todo& todo) {
          ulo::TakenIn taken;
          require(intake.take(todo, taken), nothingStored);
          note(taken, todo.repeats);
          progress.advance();
        });
    std::vector<std::string> notices = calendar_.notices();
    std::move(notices.begin(), notices.end(), std::back_inserter(stored_.notices));
    if (!json_)
      stored_.lines.push_back(line());
  }

private:
  void note(const ulo::TakenIn& taken, bool repeats) {
    uids_[taken.how].add(taken.uid);
    for (const ulo::ShortenedText& text : taken.shortened)
      stored_.shortened.push_back({&file_, taken.uid, text});
    if (!json_ || taken.how == ulo::Taken::repeated)
      return;
    stored_.listed.push_back({taken.uid, {repeats, entryOf(taken.how).jsonWord}});
  }

  static const TakenEntry& entryOf(ulo::Taken how) {
    return *std::find_if(std::begin(takenEntries), std::end(takenEntries),
                         [=](const TakenEntry& entry) { return entry.how == how; });
  }

  [[nodiscard]] std::string line() const {
    const std::string source =
        oneLine(std::string_view(shownName(file_))) + " (" + nameOf(calendar_.version()) + "): ";
    const std::string imported = counted(calendar_.count(), "task") + " imported from " + source;
    if (calendar_.version() == CalendarVersion::vcalendar)
      return imported + "UID " + uids_.at(ulo::Taken::added).text();
    std::string parts;
    for (const TakenEntry& entry : takenEntries) {
      const auto found = uids_.find(entry.how);
      if (found == uids_.end())
        continue;
      parts +=
          (parts.empty() ? "" : ", ") + std::to_string(found->second.count()) + " " + entry.word;
      if (entry.showsUids)
        parts += " (UID " + found->second.text() + ")";
    }
    return imported + parts;
  }

  Session& session_;
  const std::string& file_;
  Calendar calendar_;
  bool json_;
  Stored& stored_;
  std::map<ulo::Taken, ShownUids> uids_;
};

// Leaves out tasks that another program has removed since they were stored.
void printJson(Session& session, const std::vector<Stored::Listed>& listed) {
  const ReadSnapshot snapshot;
  TaskArray array;
  for (const Stored::Listed& each : listed) {
    ZTASK_ENG_Task task;
    const int code = session.store().getTask(each.uid, task);
    if (code == TASK_ENG_NOT_FOUND)
      continue;
    require(code, "reading task " + std::to_string(each.uid));
    session.output.write(array.add(task, each.extras));
  }
  session.output.write(array.end());
}

// Until a store has about a thousand tasks, SQLite keeps the data for undoing a single insert in
// one block of memory, and is faster without the bulk transaction.
ulo::WriteTransaction::Changes changesFor(Session& session, std::size_t todos) {
  constexpr std::size_t smallStore = 1000;
  return todos + session.countTasks() <= smallStore ? ulo::WriteTransaction::Changes::few
                                                    : ulo::WriteTransaction::Changes::many;
}

void import(Session& session, const ImportOptions& options) {
  // The store is locked only after everything has been examined.
  std::vector<CalendarFile> files;
  Stored stored;
  std::size_t total = 0;
  for (const std::string& name : options.files) {
    files.push_back(openCalendar(name));
    for (const Calendar& calendar : files.back().calendars)
      total += calendar.count();
  }

  const ulo::WriteTransaction::Changes changes = changesFor(session, total);
  {
    Progress progress("importing", total);
    const auto storeAll = [&] {
      using Known = ulo::IcalIntake::Known;
      ulo::IcalIntake intake(session.store(), options.addAgain ? Known::addAgain : Known::update);
      for (const CalendarFile& file : files)
        for (const Calendar& calendar : file.calendars)
          calendar.forEachUuid([&](const QString& uuid) { intake.expect(uuid); });
      require(intake.find(), nothingStored);
      // Each text is released as soon as its to-dos are stored.
      for (CalendarFile& file : files)
        for (Calendar& calendar : file.calendars)
          CalendarImport(session, file.name, std::move(calendar), options.json, stored)
              .store(intake, progress);
    };
    session.inTransaction(nothingStored, storeAll, changes);
  }
  for (const std::string& notice : stored.notices)
    session.output.notice(notice);
  for (const Stored::Shortened& each : stored.shortened)
    session.output.notice(shownName(*each.file) + ", task " + std::to_string(each.uid) + ": " +
                          sentence(each.text));
  for (const std::string& line : stored.lines)
    session.output.line(line);
  if (options.json)
    printJson(session, stored.listed);
}

struct ExportOptions {
  std::vector<std::string> uids;
  std::string file = "-";
  std::string format = "vcalendar";
};

// Calls `visit` with the tasks that are exported, page by page.
void forEachExported(Session& session, const std::vector<unsigned int>& uids,
                     const PageVisitor& visit) {
  if (uids.empty()) {
    forEachPageByUid(session, visit);
    return;
  }
  // Nothing is written if one of them is missing.
  for (const unsigned int uid : uids)
    session.task(uid);
  Records page;
  for (std::size_t i = 0; i < uids.size(); ++i) {
    page.append(session.task(uids[i]));
    if (page.count() == uint{pageSize} || i + 1 == uids.size()) {
      visit(page);
      page.clear();
    }
  }
}

QByteArray currentText(const ZTASK_ENG_Task& task) {
  QByteArray text;
  require(ulo::currentText(task, text),
          "reading the calendar text of task " +
              std::to_string(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)));
  return text;
}

// An exported text, made from pages of tasks.
class ExportedText {
public:
  virtual ~ExportedText() = default;
  // Each returns the next part of the text.
  virtual std::string begin() = 0;
  virtual std::string add(const Records& page) = 0;
  virtual std::string end() = 0;
};

class ExportedVcalendar : public ExportedText {
public:
  std::string begin() override { return writer_.begin(); }
  std::string add(const Records& page) override { return writer_.add(page); }
  std::string end() override { return writer_.end(); }

private:
  VcalendarWriter writer_;
};

class ExportedIcalendar : public ExportedText {
public:
  std::string begin() override { return writer_.begin().toStdString(); }
  std::string add(const Records& page) override {
    std::string text;
    for (const ZTASK_ENG_Task& task : page) {
      const QByteArray part = writer_.add(currentText(task), task);
      text.append(part.constData(), static_cast<std::size_t>(part.size()));
    }
    return text;
  }
  std::string end() override { return writer_.end().toStdString(); }

private:
  ulo::IcalWriter writer_;
};

// Passes the parts of the text to `write` and returns the number of tasks.
std::size_t exportText(Session& session, const ExportOptions& options,
                       const std::function<void(const std::string& part)>& write) {
  const bool isIcalendar = options.format == "icalendar";
  std::unique_ptr<ExportedText> text;
  if (isIcalendar)
    text = std::make_unique<ExportedIcalendar>();
  else
    text = std::make_unique<ExportedVcalendar>();
  const std::vector<unsigned int> uids = argumentUids(options.uids);
  session.store();
  // Tasks and their texts are read in the same state of the store.
  const ReadSnapshot snapshot;
  // A single task keeps the lines of the calendar that it came in.
  const bool isSingle =
      isIcalendar && (uids.empty() ? session.countTasks() == 1 : uids.size() == 1);
  std::size_t count = 0;
  std::string part = isSingle ? std::string() : text->begin();
  forEachExported(session, uids, [&](const Records& page) {
    part += isSingle ? currentText(page[0]).toStdString() : text->add(page);
    count += page.count();
    write(part);
    part.clear();
  });
  if (!isSingle)
    write(part + text->end());
  return count;
}

void exportTasks(Session& session, const ExportOptions& options) {
  if (options.file == "-") {
    exportText(session, options, [&](const std::string& part) { session.output.write(part); });
    return;
  }
  FileWriter file(options.file);
  const std::size_t count =
      exportText(session, options, [&](const std::string& part) { file.write(part); });
  file.commit();
  session.output.line(counted(count, "task") + " exported to " +
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
