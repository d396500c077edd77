#include "arguments.h"
#include "session.h"
#include "task_format.h"
#include "verbs.h"

#include <QJsonArray>

namespace ulotask {
namespace {

struct ListOptions {
  std::string sort = "due";
  bool json = false;
};

void list(Session& session, const ListOptions& options) {
  const auto sort =
      options.sort == "due" ? ZTASK_ENG_Model::TASK_SORT_DUE : ZTASK_ENG_Model::TASK_SORT_PRIORITY;
  const QValueList<ZTASK_ENG_Task> tasks = session.allTasks(sort);
  if (options.json) {
    QJsonArray array;
    for (const ZTASK_ENG_Task& task : tasks)
      array.append(toJson(task));
    session.output.json(array);
    return;
  }
  if (tasks.isEmpty()) {
    session.output.line("No tasks.");
    return;
  }
  Table table = taskTable();
  for (const ZTASK_ENG_Task& task : tasks)
    addTo(table, task);
  table.print(session.output);
}

struct ShowOptions {
  std::string uid;
  bool json = false;
};

void show(Session& session, const ShowOptions& options) {
  const ZTASK_ENG_Task task = session.task(argumentUid(options.uid));
  if (options.json)
    session.output.json(toJson(task));
  else
    printTask(session.output, task);
}

}  // namespace

void addListVerbs(CLI::App& app, Session& session) {
  CLI::App* verb = app.add_subcommand("list", "List all tasks, one to a line");
  auto listOptions = std::make_shared<ListOptions>();
  verb->add_option("--sort", listOptions->sort,
                   "due: by due date, then priority; priority: "
                   "by priority, then due date")
      ->check(CLI::IsMember({"due", "priority"}))
      ->capture_default_str();
  verb->add_flag("--json", listOptions->json, "Print a JSON array for programs");
  verb->footer("Examples:\n"
               "  ulotask list\n"
               "  ulotask list --sort priority\n"
               "  ulotask list --json | jq '.[].summary'");
  verb->callback([listOptions, &session] { list(session, *listOptions); });

  verb = app.add_subcommand("show", "Show all fields of a task");
  auto showOptions = std::make_shared<ShowOptions>();
  verb->add_option("UID", showOptions->uid, "The task's number, as list prints it")->required();
  verb->add_flag("--json", showOptions->json, "Print a JSON object for programs");
  verb->footer("Example:\n"
               "  ulotask show 7");
  verb->callback([showOptions, &session] { show(session, *showOptions); });
}

}  // namespace ulotask
