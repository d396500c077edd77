#include "arguments.h"
#include "change_task.h"
#include "dates.h"
#include "exit_codes.h"
#include "for_each.h"
#include "session.h"
#include "take_in.h"
#include "task_format.h"
#include "task_json.h"
#include "task_words.h"
#include "text.h"
#include "verbs.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ulotask {
namespace {

std::string named(const ZTASK_ENG_Task& task) {
  return "task " + std::to_string(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)) + ": " +
         oneLine(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
}

// The fields of a task on the command line.
struct TaskOptions {
  std::optional<std::string> summary;
  std::optional<std::string> due;
  std::optional<std::string> alarm;
  std::optional<std::string> priority;
  std::optional<std::string> status;
  std::optional<std::string> category;
  std::optional<std::string> note;
  bool json = false;

  [[nodiscard]] bool isEmpty() const {
    return !summary && !due && !alarm && !priority && !status && !category && !note;
  }
};

void setText(Session& session, ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field,
             const QString& text) {
  task.setString(field, text);
  if (const std::optional<ulo::ShortenedText> shortened = ulo::shortenToLimit(task, field))
    session.output.notice(sentence(*shortened));
}

// Sets the fields that are given and leaves the others unchanged.
void apply(Session& session, const TaskOptions& given, ZTASK_ENG_Task& task) {
  if (given.due)
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, argumentDateOrNone(*given.due, "--due"));
  if (given.alarm)
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM, argumentDateOrNone(*given.alarm, "--alarm"));
  if (given.priority)
    task.setPriority(argumentPriority(*given.priority));
  if (given.status)
    task.setStatus(codeOf(argumentStatus(*given.status)));
  if (given.category)
    task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, argumentCategory(*given.category));
  if (given.summary) {
    const QString summary = argumentText(*given.summary, "summary");
    if (summary.trimmed().isEmpty())
      throw Failure(Exit::usage, "the summary is empty");
    setText(session, task, ZTASK_ENG_Task::TASK_FIELD_SUMMARY, summary);
  }
  if (given.note)
    setText(session, task, ZTASK_ENG_Task::TASK_FIELD_NOTE, argumentText(*given.note, "note"));
}

void print(Session& session, const char* what, const ZTASK_ENG_Task& task, bool json) {
  if (json)
    session.output.write(jsonOf(
        task, {!session.repetition(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)).isEmpty()}));
  else
    session.output.line(what + named(task));
}

void add(Session& session, const TaskOptions& options) {
  ZTASK_ENG_Task task;
  apply(session, options, task);
  require(ulo::takeIn(session.store(), task), "adding the task");
  print(session, "Added ", task, options.json);
}

// Says how completing a repeating task ended; empty for any other change.
std::string sentenceOfNextDate(const ulo::ChangeReport& report) {
  if (!report.next)
    return {};
  switch (*report.next) {
  case TASK_ENG_Ical::moved: {
    const std::string due =
        ulo::formatDate(report.task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE)).toStdString();
    return "it repeats and has moved to its next date" + (due.empty() ? due : ", " + due);
  }
  case TASK_ENG_Ical::lastDate:
    return "it was its last date";
  default:
    return "it repeats, but the next date cannot be computed; it is completed";
  }
}

// Returns the change as it was stored.
ulo::ChangeReport change(Session& session, unsigned int uid,
                         const std::function<void(ZTASK_ENG_Task&)>& work) {
  ulo::ChangeReport report;
  const int code = ulo::changeTask(session.store(), uid, work, &report);
  if (code == TASK_ENG_NOT_FOUND)
    throw noTask(uid);
  require(code, "storing task " + std::to_string(uid));
  if (report.categoryVanished)
    session.output.notice("the category of " + named(report.task) +
                          " is gone; the task is stored without one");
  return report;
}

void setStatus(Session& session, const std::vector<std::string>& arguments, ulo::Status status) {
  forEach(session, argumentUids(arguments), [&](unsigned int uid) {
    const ulo::ChangeReport report =
        change(session, uid, [&](ZTASK_ENG_Task& stored) { stored.setStatus(codeOf(status)); });
    const std::string next = sentenceOfNextDate(report);
    session.output.line((status == ulo::Status::completed ? "Done: " : "To do again: ") +
                        named(report.task) + (next.empty() ? next : "; " + next));
  });
}

void edit(Session& session, const std::string& uid, const TaskOptions& options) {
  if (options.isEmpty())
    throw Failure(Exit::usage, "no change is given; see ulotask edit --help");
  const ulo::ChangeReport report = change(session, argumentUid(uid), [&](ZTASK_ENG_Task& stored) {
    apply(session, options, stored);
    if (options.category)
      require(ulo::ensureCategory(session.store(),
                                  stored.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY)),
              "adding the category");
  });
  if (const std::string next = sentenceOfNextDate(report); !next.empty())
    session.output.notice(named(report.task) + "; " + next);
  print(session, "Changed ", report.task, options.json);
}

void remove(Session& session, const std::vector<std::string>& arguments) {
  forEach(session, argumentUids(arguments), [&](unsigned int uid) {
    ZTASK_ENG_Task task;
    const int code = ulo::removeTask(session.store(), uid, task);
    if (code == TASK_ENG_NOT_FOUND)
      throw noTask(uid);
    require(code, "removing task " + std::to_string(uid));
    session.output.line("Removed " + named(task));
  });
}

// The options that add and edit share.
void addTaskOptions(Verb& verb, TaskOptions& options) {
  verb.option("--due", options.due,
              "Local date or date and time: 2026-03-05, \"2026-03-05 18:00\"; none for none")
      .valueName("DATE");
  verb.option("--alarm", options.alarm, "When to remind, written like --due").valueName("DATE");
  verb.option("--priority", options.priority,
              "1 (highest) to 9 (lowest), 0 for none, or high, normal, low")
      .valueName("PRIORITY");
  verb.option("--category", options.category, "Name of a category, added if missing; \"\" for none")
      .valueName("CATEGORY");
  verb.option("--note", options.note, "The text of the task");
}

void addAdd(Verb& program, Session& session) {
  Verb verb = program.addVerb("add", "Add a task");
  auto options = std::make_shared<TaskOptions>();
  verb.option("SUMMARY", options->summary, "The title").required();
  addTaskOptions(verb, *options);
  verb.flag("--json", options->json, "Print the stored task as a JSON object");
  verb.footer("Examples:\n"
              "  ulotask add \"Buy milk\"\n"
              "  ulotask add \"Call the bank\" --due \"2026-03-05 18:00\" --priority high\n"
              "  ulotask add --category work -- \"-5 degrees: order heating oil\"");
  verb.run([options, &session] { add(session, *options); });
}

void addEdit(Verb& program, Session& session) {
  Verb verb = program.addVerb("edit", "Change fields of a task");
  auto uid = std::make_shared<std::string>();
  auto options = std::make_shared<TaskOptions>();
  verb.option("UID", *uid, "The task's number, as list prints it").required();
  verb.option("--summary", options->summary, "The title");
  addTaskOptions(verb, *options);
  verb.option("--status", options->status,
              "A status word, such as completed, needs-action, accepted or delegated")
      .valueName("STATUS");
  verb.flag("--json", options->json, "Print the stored task as a JSON object");
  verb.footer(
      "Other fields stay unchanged, except for the time of the change. The end follows the\n"
      "status: it is set if the task becomes completed and removed if it needs action.\n"
      "Examples:\n"
      "  ulotask edit 7 --due \"2026-03-06 09:00\" --priority high\n"
      "  ulotask edit 7 --due none --category \"\" --note \"\"\n"
      "  ulotask edit 7 --status delegated");
  verb.run([uid, options, &session] { edit(session, *uid, *options); });
}

}  // namespace

void addEditVerbs(Verb& program, Session& session) {
  addAdd(program, session);
  addEdit(program, session);

  const auto addUidVerb = [&](const char* name, const char* description, const char* example,
                              auto work) {
    Verb uidVerb = program.addVerb(name, description);
    auto uids = std::make_shared<std::vector<std::string>>();
    uidVerb.option("UID", *uids, "Numbers of tasks, as list prints them").required();
    uidVerb.footer(std::string("Example:\n  ") + example);
    uidVerb.run([uids, work, &session] { work(session, *uids); });
  };
  using Arguments = std::vector<std::string>;
  addUidVerb("done", "Mark tasks as completed; a repeating task moves to its next date",
             "ulotask done 7 8",
             [](Session& s, const Arguments& uids) { setStatus(s, uids, ulo::Status::completed); });
  addUidVerb(
      "undone", "Mark tasks as needing action again", "ulotask undone 7",
      [](Session& s, const Arguments& uids) { setStatus(s, uids, ulo::Status::needsAction); });
  addUidVerb("rm", "Remove tasks", "ulotask rm 7 8", remove);
}

}  // namespace ulotask
