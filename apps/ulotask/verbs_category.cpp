#include "arguments.h"
#include "exit_codes.h"
#include "for_each.h"
#include "session.h"
#include "store_questions.h"
#include "text.h"
#include "verbs.h"

#include <QJsonArray>

#include <memory>
#include <string>
#include <vector>

namespace ulotask {
namespace {

QString categoryName(const std::string& argument) {
  if (argument.empty())
    throw Failure(Exit::usage, "the name of the category is empty");
  return argumentText(argument, "category");
}

std::string quoted(const QString& name) {
  return '"' + oneLine(name) + '"';
}

void listCategories(Session& session, bool json) {
  session.store();
  std::vector<StoreQuestions::Category> categories = StoreQuestions().categories();
  std::erase_if(categories, [](const auto& category) { return category.name.isNull(); });
  if (json) {
    QJsonArray array;
    for (const StoreQuestions::Category& category : categories)
      array.append(QJsonObject{{"name", category.name}, {"tasks", category.tasks}});
    session.output.json(array);
    return;
  }
  if (categories.empty()) {
    session.output.line("No categories.");
    return;
  }
  std::vector<Table::Row> rows;
  for (const StoreQuestions::Category& category : categories)
    rows.push_back({std::to_string(category.tasks), oneLine(category.name)});
  printTable(session.output,
             Table({{"TASKS", Table::Align::right, 0}, {"CATEGORY", Table::Align::left, 0}}), rows);
}

void addCategory(Session& session, const std::string& argument) {
  QString name = categoryName(argument);
  unsigned int uid = 0;
  const int code = session.store().addCategory(name, uid);
  if (code == TASK_ENG_EXISTS)
    throw Failure(Exit::exists, "the category " + quoted(name) + " exists already");
  require(code, "adding the category " + quoted(name));
  session.output.line("Added category " + quoted(name));
}

void renameCategory(Session& session, const std::string& from, const std::string& to) {
  QString oldName = categoryName(from);
  QString newName = categoryName(to).toLower();  // as the store keeps it
  const std::string what = "renaming the category " + quoted(oldName);
  session.inTransaction(what, [&] {
    session.requireCategory(oldName);
    // The store would rename the category whose name is in lower case.
    if (oldName != oldName.toLower())
      throw Failure(Exit::usage,
                    "the category " + quoted(oldName) +
                        " cannot be renamed: the store renames only names in lower case");
    if (session.hasCategory(newName))
      throw Failure(Exit::exists, "the category " + quoted(newName) + " exists already");
    require(session.store().renameCategory(oldName, newName), what);
  });
  session.output.line("Renamed category " + quoted(oldName) + " to " + quoted(newName));
}

void removeCategory(Session& session, const std::string& argument, bool withTasks) {
  QString name = categoryName(argument);
  const std::string what = "removing the category " + quoted(name);
  int tasks = 0;
  session.inTransaction(what, [&] {
    session.requireCategory(name);
    for (const StoreQuestions::Category& category : StoreQuestions().categories())
      tasks += category.name == name && !category.name.isNull() ? category.tasks : 0;
    require(session.store().removeCategory(name, withTasks), what);
  });
  std::string line = "Removed category " + quoted(name);
  if (tasks > 0)
    line += (withTasks ? " with " : "; now of category None: ") +
            counted(static_cast<std::size_t>(tasks), "task");
  session.output.line(line);
}

}  // namespace

void addCategoryVerbs(Verb& program, Session& session) {
  Verb group = program.addGroup("category", "List and change the categories");

  Verb verb = group.addVerb("list", "List the categories with their numbers of tasks");
  auto json = std::make_shared<bool>(false);
  verb.flag("--json", *json, "Print a JSON array for programs");
  verb.footer("Example:\n"
              "  ulotask category list");
  verb.run([json, &session] { listCategories(session, *json); });

  auto names = std::make_shared<std::vector<std::string>>();
  verb = group.addVerb("add", "Add categories");
  verb.option("NAME", *names, "Names of new categories").required();
  verb.footer("Names are case-sensitive.\n"
              "Example:\n"
              "  ulotask category add garden \"spare time\"");
  verb.run([names, &session] {
    forEach(session, *names, [&](const std::string& name) { addCategory(session, name); });
  });

  struct Rename {
    std::string from;
    std::string to;
  };
  auto rename = std::make_shared<Rename>();
  verb = group.addVerb("rename", "Rename a category, which keeps its tasks");
  verb.option("CATEGORY", rename->from, "The present name, in lower case").required();
  verb.option("NAME", rename->to, "The new name, which is stored in lower case").required();
  verb.footer("Example:\n"
              "  ulotask category rename party feast");
  verb.run([rename, &session] { renameCategory(session, rename->from, rename->to); });

  struct Removal {
    std::vector<std::string> names;
    bool withTasks = false;
  };
  auto removal = std::make_shared<Removal>();
  verb = group.addVerb("rm", "Remove categories");
  verb.option("CATEGORY", removal->names, "Names of categories").required();
  verb.flag("--with-tasks", removal->withTasks, "Also remove their tasks");
  verb.footer(
      "Tasks of a removed category are kept and shown with the category None. The next change "
      "of\nsuch a task stores it without a category.\n"
      "Examples:\n"
      "  ulotask category rm garden\n"
      "  ulotask category rm \"spare time\" --with-tasks");
  verb.run([removal, &session] {
    forEach(session, removal->names,
            [&](const std::string& name) { removeCategory(session, name, removal->withTasks); });
  });
}

}  // namespace ulotask
