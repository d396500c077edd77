#include "arguments.h"
#include "database.h"
#include "exit_codes.h"
#include "listing.h"
#include "session.h"
#include "task_format.h"
#include "task_json.h"
#include "task_search.h"
#include "verbs.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ulotask {
namespace {

// Visits the tasks to be printed, in their order.
using Walk = std::function<void(const ulo::TaskVisitor& visit)>;

void printJson(Session& session, const Walk& walk) {
  TaskArray array;
  walk([&](const ZTASK_ENG_Task& task) { session.output.write(array.add(task)); });
  session.output.write(array.end());
}

// Rows of a table that are kept in memory.
constexpr std::size_t rowsKept = 1000;

// Reads more tasks than that twice: first to measure the columns.
void printTable(Session& session, const Walk& walk) {
  const ReadSnapshot snapshot;
  Table table = taskTable();
  std::vector<Table::Row> rows;
  std::size_t count = 0;
  walk([&](const ZTASK_ENG_Task& task) {
    Table::Row row = rowOf(task);
    table.measure(row);
    if (++count <= rowsKept)
      rows.push_back(std::move(row));
  });
  if (count == 0) {
    session.output.line("No tasks.");
    return;
  }
  table.printTitles(session.output);
  if (count <= rowsKept) {
    for (const Table::Row& row : rows)
      table.print(session.output, row);
    return;
  }
  rows = {};
  walk([&](const ZTASK_ENG_Task& task) { table.print(session.output, rowOf(task)); });
}

void printTasks(Session& session, const Walk& walk, bool json) {
  session.store();
  if (json)
    printJson(session, walk);
  else
    printTable(session, walk);
}

struct ListOptions {
  std::string view = "all";
  std::string sort = "due";
  std::optional<std::string> category;
  std::optional<int> limit;
  std::optional<std::string> after;
  bool json = false;
};

// Requires: the word is in the table.
template <typename Table> const auto& entryOf(const Table& table, const std::string& word) {
  return *std::find_if(std::begin(table), std::end(table),
                       [&](const auto& entry) { return word == entry.word; });
}

template <typename Table> std::vector<std::string> wordsOf(const Table& table) {
  std::vector<std::string> words;
  for (const auto& entry : table)
    words.emplace_back(entry.word);
  return words;
}

void list(Session& session, const ListOptions& options) {
  Listing listing;
  listing.view = entryOf(views, options.view).category;
  listing.sort = entryOf(sorts, options.sort).field;
  if (options.category)
    listing.category = argumentCategory(*options.category);
  listing.limit = options.limit;
  if (options.after)
    listing.after = argumentUid(*options.after);
  const auto walk = [&](const ulo::TaskVisitor& visit) {
    forEachPage(session, listing, [&](const Records& page) {
      for (const ZTASK_ENG_Task& task : page)
        visit(task);
    });
  };
  printTasks(session, walk, options.json);
}

struct SearchOptions {
  std::optional<std::string> text;
  std::optional<std::string> summary;
  std::optional<std::string> note;
  std::optional<std::string> status;
  std::optional<int> priority;
  bool json = false;
};

std::optional<ZTASK_ENG_Task> exampleOf(const SearchOptions& options) {
  if (!options.summary && !options.note && !options.status && !options.priority)
    return std::nullopt;
  ZTASK_ENG_Task example;
  if (options.summary)
    example.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY,
                      argumentText(*options.summary, "--summary"));
  if (options.note)
    example.setString(ZTASK_ENG_Task::TASK_FIELD_NOTE, argumentText(*options.note, "--note"));
  if (options.status)
    example.setStatus(codeOf(argumentStatus(*options.status)));
  if (options.priority)
    example.setPriority(*options.priority);
  return example;
}

void search(Session& session, const SearchOptions& options) {
  ulo::TaskSearch wanted;
  wanted.example = exampleOf(options);
  if (!options.text && !wanted.example)
    throw Failure(Exit::usage, "nothing to search for; see ulotask search --help");
  if (options.text)
    wanted.text = argumentText(*options.text, "text");
  const auto walk = [&](const ulo::TaskVisitor& visit) {
    require(ulo::searchTasks(wanted, visit), "searching");
  };
  printTasks(session, walk, options.json);
}

struct ShowOptions {
  std::string uid;
  bool json = false;
};

void show(Session& session, const ShowOptions& options) {
  const ZTASK_ENG_Task task = session.task(argumentUid(options.uid));
  const QString repetition = session.repetition(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID));
  if (options.json)
    session.output.write(jsonOf(task, {!repetition.isEmpty()}));
  else
    printTask(session.output, task, repetition);
}

}  // namespace

void addListVerb(Verb& program, Session& session) {
  Verb verb = program.addVerb("list", "List tasks, one per line");
  auto options = std::make_shared<ListOptions>();
  verb.option("--view", options->view,
              "due: due until the end of today, done or not; incomplete: needs action; "
              "completed")
      .valueName("VIEW")
      .oneOf(wordsOf(views))
      .showDefault();
  verb.option("--category", options->category,
              "Only tasks of this category; \"\" for tasks without one")
      .valueName("CATEGORY");
  verb.option("--sort", options->sort,
              "due: by due date, then priority; priority: "
              "by priority, then due date")
      .valueName("ORDER")
      .oneOf(wordsOf(sorts))
      .showDefault();
  verb.option("--limit", options->limit, "The maximum number of tasks")
      .valueName("NUMBER")
      .range(1, std::numeric_limits<int>::max());
  verb.option("--after", options->after, "Only tasks that follow this one in the order")
      .valueName("UID");
  verb.flag("--json", options->json, "Print a JSON array for programs");
  verb.footer("Use the last UID of a page as --after for the next page.\n"
              "Examples:\n"
              "  ulotask list\n"
              "  ulotask list --view incomplete --sort priority --limit 10\n"
              "  ulotask list --view incomplete --sort priority --limit 10 --after 42\n"
              "  ulotask list --category shop --json | jq '.[].summary'");
  verb.run([options, &session] { list(session, *options); });
}

void addSearchVerb(Verb& program, Session& session) {
  Verb verb = program.addVerb("search", "List the tasks that match");
  auto options = std::make_shared<SearchOptions>();
  verb.option("TEXT", options->text, "In the summary, note, category or UUID; case-sensitive");
  verb.option("--summary", options->summary, "In the summary; ignores case").valueName("TEXT");
  verb.option("--note", options->note, "In the note; ignores case").valueName("TEXT");
  verb.option("--status", options->status, "A status word, such as completed or needs-action")
      .valueName("STATUS");
  verb.option("--priority", options->priority, "This number, 1 to 9")
      .valueName("NUMBER")
      .range(1, 9);
  verb.flag("--json", options->json, "Print a JSON array for programs");
  verb.footer("Lists tasks that match everything that is given, by due date, then priority.\n"
              "Examples:\n"
              "  ulotask search Milk\n"
              "  ulotask search --summary milk --status needs-action\n"
              "  ulotask search bank --priority 1 --json");
  verb.run([options, &session] { search(session, *options); });
}

void addShowVerb(Verb& program, Session& session) {
  Verb verb = program.addVerb("show", "Show all fields of a task");
  auto options = std::make_shared<ShowOptions>();
  verb.option("UID", options->uid, "The task's number, as list prints it").required();
  verb.flag("--json", options->json, "Print a JSON object for programs");
  verb.footer("Example:\n"
              "  ulotask show 7");
  verb.run([options, &session] { show(session, *options); });
}

}  // namespace ulotask
