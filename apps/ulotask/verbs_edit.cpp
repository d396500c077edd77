#include "arguments.h"
#include "change_task.h"
#include "exit_codes.h"
#include "for_each.h"
#include "session.h"
#include "task_format.h"
#include "text.h"
#include "text_limits.h"
#include "verbs.h"

#include <functional>
#include <optional>

namespace ulotask {
namespace {

std::string named(const ZTASK_ENG_Task& task) {
  return "task " + std::to_string(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)) + ": " +
         oneLine(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
}

// What the command line gives for a task.
struct TaskOptions {
  std::optional<std::string> summary;
  std::optional<std::string> due;
  std::optional<std::string> alarm;
  std::optional<std::string> priority;
  std::optional<std::string> status;
  std::optional<std::string> category;
  std::optional<std::string> note;
  bool json = false;

  [[nodiscard]] bool giveNothing() const {
    return !summary && !due && !alarm && !priority && !status && !category && !note;
  }
};

void setText(Session& session, ZTASK_ENG_Task& task, ZTASK_ENG_Task::TASK_FIELD_T field,
             const QString& text) {
  task.setString(field, text);
  if (const std::optional<std::string> cut = cutToLimit(task, field))
    session.output.notice(*cut);
}

// Sets the fields that are given; the others stay.
void apply(Session& session, const TaskOptions& given, ZTASK_ENG_Task& task) {
  if (given.due)
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, argumentDateOrNone(*given.due, "--due"));
  if (given.alarm)
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM, argumentDateOrNone(*given.alarm, "--alarm"));
  if (given.priority)
    task.setPriority(argumentPriority(*given.priority));
  if (given.status)
    task.setStatus(argumentStatus(*given.status));
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
    session.output.json(toJson(task));
  else
    session.output.line(what + named(task));
}

void add(Session& session, const TaskOptions& options) {
  ZTASK_ENG_Task task;
  apply(session, options, task);
  require(session.add(task), "adding the task");
  print(session, "Added ", task, options.json);
}

Failure noTask(unsigned int uid) {
  return {Exit::notFound, "no task has the UID " + std::to_string(uid)};
}

// Returns the task as it was stored.
ZTASK_ENG_Task change(Session& session, unsigned int uid,
                      const std::function<void(ZTASK_ENG_Task&)>& work) {
  ulo::ChangeReport report;
  const int code = ulo::changeTask(session.store(), uid, work, &report);
  if (code == TASK_ENG_NOT_FOUND)
    throw noTask(uid);
  require(code, "storing task " + std::to_string(uid));
  if (report.categoryVanished)
    session.output.notice("the category of " + named(report.task) +
                          " is gone; the task is stored without one");
  return report.task;
}

void setStatus(Session& session, const std::vector<std::string>& arguments, int status) {
  forEach(session, argumentUids(arguments), [&](unsigned int uid) {
    const ZTASK_ENG_Task task =
        change(session, uid, [&](ZTASK_ENG_Task& stored) { stored.setStatus(status); });
    session.output.line((status == statusCompleted ? "Done: " : "To do again: ") + named(task));
  });
}

void edit(Session& session, const std::string& uid, const TaskOptions& options) {
  if (options.giveNothing())
    throw Failure(Exit::usage, "nothing to change is given; see ulotask edit --help");
  const ZTASK_ENG_Task task = change(session, argumentUid(uid), [&](ZTASK_ENG_Task& stored) {
    apply(session, options, stored);
    if (options.category)
      require(session.makeCategory(stored.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY)),
              "making the category");
  });
  print(session, "Changed ", task, options.json);
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
void addTaskOptions(CLI::App& verb, TaskOptions& options) {
  verb.add_option("--due", options.due,
                  "Local date or date and time: 2026-03-05, \"2026-03-05 18:00\"; none for none")
      ->type_name("DATE");
  verb.add_option("--alarm", options.alarm, "When to remind, written like --due")
      ->type_name("DATE");
  verb.add_option("--priority", options.priority,
                  "1 (highest) to 9 (lowest), 0 for none, or high, normal, low")
      ->type_name("PRIORITY");
  verb.add_option("--category", options.category,
                  "Name of a category, made when missing; \"\" for none")
      ->type_name("CATEGORY");
  verb.add_option("--note", options.note, "The text of the task");
}

void addAdd(CLI::App& app, Session& session) {
  CLI::App* verb = app.add_subcommand("add", "Add a task");
  auto options = std::make_shared<TaskOptions>();
  verb->add_option("SUMMARY", options->summary, "The title")->required();
  addTaskOptions(*verb, *options);
  verb->add_flag("--json", options->json, "Print the stored task as a JSON object");
  verb->footer("Examples:\n"
               "  ulotask add \"Buy milk\"\n"
               "  ulotask add \"Call the bank\" --due \"2026-03-05 18:00\" --priority high\n"
               "  ulotask add --category work -- \"-5 degrees: order heating oil\"");
  verb->callback([options, &session] { add(session, *options); });
}

void addEdit(CLI::App& app, Session& session) {
  CLI::App* verb = app.add_subcommand("edit", "Change fields of a task");
  auto uid = std::make_shared<std::string>();
  auto options = std::make_shared<TaskOptions>();
  verb->add_option("UID", *uid, "The task's number, as list prints it")->required();
  verb->add_option("--summary", options->summary, "The title");
  addTaskOptions(*verb, *options);
  verb->add_option("--status", options->status,
                   "A status word, such as completed, needs-action, accepted or delegated")
      ->type_name("STATUS");
  verb->add_flag("--json", options->json, "Print the stored task as a JSON object");
  verb->footer("What isn't given stays as it is, but for the time of the change. The end follows "
               "the\nstatus: a task that becomes completed gets it, one that needs action loses "
               "it.\n"
               "Examples:\n"
               "  ulotask edit 7 --due \"2026-03-06 09:00\" --priority high\n"
               "  ulotask edit 7 --due none --category \"\" --note \"\"\n"
               "  ulotask edit 7 --status delegated");
  verb->callback([uid, options, &session] { edit(session, *uid, *options); });
}

}  // namespace

void addEditVerbs(CLI::App& app, Session& session) {
  addAdd(app, session);
  addEdit(app, session);

  const auto addUidVerb = [&](const char* name, const char* description, const char* example,
                              auto work) {
    CLI::App* uidVerb = app.add_subcommand(name, description);
    auto uids = std::make_shared<std::vector<std::string>>();
    uidVerb->add_option("UID", *uids, "Numbers of tasks, as list prints them")->required();
    uidVerb->footer(std::string("Example:\n  ") + example);
    uidVerb->callback([uids, work, &session] { work(session, *uids); });
  };
  using Arguments = std::vector<std::string>;
  addUidVerb("done", "Mark tasks as completed", "ulotask done 7 8",
             [](Session& s, const Arguments& uids) { setStatus(s, uids, statusCompleted); });
  addUidVerb("undone", "Mark tasks as needing action again", "ulotask undone 7",
             [](Session& s, const Arguments& uids) { setStatus(s, uids, statusNeedsAction); });
  addUidVerb("rm", "Remove tasks", "ulotask rm 7 8", remove);
}

}  // namespace ulotask
