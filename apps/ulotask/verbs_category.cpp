#include "arguments.h"
#include "exit_codes.h"
#include "for_each.h"
#include "session.h"
#include "store_questions.h"
#include "text.h"
#include "verbs.h"
#include "write_transaction.h"

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
  Table table({{"TASKS", Table::Align::right, 0}, {"CATEGORY", Table::Align::left, 0}});
  for (const StoreQuestions::Category& category : categories)
    table.add({std::to_string(category.tasks), oneLine(category.name)});
  table.print(session.output);
}

// Runs `work`, which reads and then writes, while no other program writes.
template <typename Work> void alone(Session& session, const std::string& what, const Work& work) {
  session.store();
  ulo::WriteTransaction transaction;
  require(ulo::storeCode(transaction.result()), what);
  work();
  require(ulo::storeCode(transaction.commit()), what);
}

void addCategory(Session& session, const std::string& argument) {
  QString name = categoryName(argument);
  unsigned int uid = 0;
  const int code = session.store().addCategory(name, uid);
  if (code == TASK_ENG_EXISTS)
    throw Failure(Exit::exists, "there is a category " + quoted(name) + " already");
  require(code, "adding the category " + quoted(name));
  session.output.line("Added category " + quoted(name));
}

void renameCategory(Session& session, const std::string& from, const std::string& to) {
  QString oldName = categoryName(from);
  QString newName = categoryName(to).toLower();  // as the store keeps it
  const std::string what = "renaming the category " + quoted(oldName);
  alone(session, what, [&] {
    session.requireCategory(oldName);
    // The store would rename the one in lower case, if there is one.
    if (oldName != oldName.toLower())
      throw Failure(Exit::usage,
                    "the category " + quoted(oldName) +
                        " can't be renamed: the store renames names in lower case only");
    if (session.hasCategory(newName))
      throw Failure(Exit::exists, "there is a category " + quoted(newName) + " already");
    require(session.store().renameCategory(oldName, newName), what);
  });
  session.output.line("Renamed category " + quoted(oldName) + " to " + quoted(newName));
}

void removeCategory(Session& session, const std::string& argument, bool withTasks) {
  QString name = categoryName(argument);
  const std::string what = "removing the category " + quoted(name);
  int tasks = 0;
  alone(session, what, [&] {
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
  verb.footer("Names that differ in upper and lower case are different names.\n"
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
  verb = group.addVerb("rename", "Rename a category; its tasks stay its tasks");
  verb.option("CATEGORY", rename->from, "The name it has, in lower case").required();
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
  verb.flag("--with-tasks", removal->withTasks, "Remove their tasks too");
  verb.footer("Tasks of a removed category stay and read as of category None; the next change of "
              "one\nstores it without a category.\n"
              "Examples:\n"
              "  ulotask category rm garden\n"
              "  ulotask category rm \"spare time\" --with-tasks");
  verb.run([removal, &session] {
    forEach(session, removal->names,
            [&](const std::string& name) { removeCategory(session, name, removal->withTasks); });
  });
}

}  // namespace ulotask
