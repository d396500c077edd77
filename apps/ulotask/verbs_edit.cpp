#include "arguments.h"
#include "exit_codes.h"
#include "session.h"
#include "task_format.h"
#include "text.h"
#include "text_limits.h"
#include "verbs.h"

#include <algorithm>

namespace ulotask {
namespace {

constexpr int statusCompleted = 0;
constexpr int statusNeedsAction = 1;

std::string named(const ZTASK_ENG_Task& task) {
  return "task " + std::to_string(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID)) + ": " +
         oneLine(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
}

struct AddOptions {
  std::string summary;
  std::string due;
  std::string alarm;
  std::string priority = "0";
  std::optional<std::string> category;
  std::optional<std::string> note;
  bool json = false;
};

void add(Session& session, const AddOptions& options) {
  ZTASK_ENG_Task task;
  const QString summary = argumentText(options.summary, "summary");
  if (summary.trimmed().isEmpty())
    throw Failure(Exit::usage, "the summary is empty");
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, summary);
  if (options.category)
    task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY,
                   argumentText(*options.category, "category"));
  if (options.note)
    task.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, argumentText(*options.note, "note"));
  if (!options.due.empty())
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE, argumentDate(options.due, "--due"));
  if (!options.alarm.empty())
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_ALARM, argumentDate(options.alarm, "--alarm"));
  task.setPriority(argumentPriority(options.priority));

  for (const std::string& cut : cutToLimits(task))
    session.output.notice(cut);
  require(session.add(task), "adding the task");
  if (options.json)
    session.output.json(toJson(task));
  else
    session.output.line("Added " + named(task));
}

// A task whose category was removed reads as of category "None", which can't be stored.
void update(Session& session, ZTASK_ENG_Task& task) {
  int code = session.store().updateTask(task);
  if (code == TASK_ENG_NOT_FOUND) {
    const QString category = task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
    QValueList<QString> known;
    require(session.store().getAllCategories(known), "reading the categories");
    if (std::find(known.begin(), known.end(), category) == known.end()) {
      task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, QString());
      code = session.store().updateTask(task);
      if (code == TASK_ENG_OK)
        session.output.notice("the category of " + named(task) +
                              " is gone; the task is stored without one");
    }
  }
  if (code == TASK_ENG_NOT_FOUND)
    throw Failure(Exit::notFound, named(task) + " has been removed meanwhile");
  require(code, "storing " + named(task));
}

// Does `work` for each UID. Those that no task has don't keep it from the others.
template <typename Work>
void forEachUid(Session& session, const std::vector<std::string>& arguments, const Work& work) {
  std::string missing;
  for (const unsigned int uid : argumentUids(arguments)) {
    try {
      work(uid);
    } catch (const Failure& failure) {
      if (failure.code() != Exit::notFound)
        throw;
      if (!missing.empty())
        session.output.notice(missing);
      missing = failure.what();
    }
  }
  if (!missing.empty())
    throw Failure(Exit::notFound, missing);
}

void setStatus(Session& session, const std::vector<std::string>& arguments, int status) {
  forEachUid(session, arguments, [&](unsigned int uid) {
    ZTASK_ENG_Task task = session.task(uid);
    task.setStatus(status);
    update(session, task);
    session.output.line((status == statusCompleted ? "Done: " : "To do again: ") + named(task));
  });
}

void remove(Session& session, const std::vector<std::string>& arguments) {
  forEachUid(session, arguments, [&](unsigned int uid) {
    const ZTASK_ENG_Task task = session.task(uid);
    const int code = session.store().removeTask(uid);
    if (code == TASK_ENG_NOT_FOUND)
      throw Failure(Exit::notFound, named(task) + " has been removed meanwhile");
    require(code, "removing " + named(task));
    session.output.line("Removed " + named(task));
  });
}

}  // namespace

void addEditVerbs(CLI::App& app, Session& session) {
  CLI::App* verb = app.add_subcommand("add", "Add a task");
  auto addOptions = std::make_shared<AddOptions>();
  verb->add_option("SUMMARY", addOptions->summary, "The title")->required();
  verb->add_option("--due", addOptions->due,
                   "Local date or date and time: 2026-03-05, \"2026-03-05 18:00\"");
  verb->add_option("--alarm", addOptions->alarm, "When to remind, written like --due");
  verb->add_option("--priority", addOptions->priority,
                   "1 (highest) to 9 (lowest), 0 for none, or high, normal, low")
      ->capture_default_str();
  verb->add_option("--category", addOptions->category, "Name of a category; made when missing");
  verb->add_option("--note", addOptions->note, "The text of the task");
  verb->add_flag("--json", addOptions->json, "Print the stored task as a JSON object");
  verb->footer("Examples:\n"
               "  ulotask add \"Buy milk\"\n"
               "  ulotask add \"Call the bank\" --due \"2026-03-05 18:00\" --priority high\n"
               "  ulotask add --category work -- \"-5 degrees: order heating oil\"");
  verb->callback([addOptions, &session] { add(session, *addOptions); });

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
