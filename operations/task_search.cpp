#include "task_search.h"

#include "ZTASK_ENG_Model.h"
#include "database.h"
#include "store_steps.h"
#include "task_match.h"
#include "task_scripts.h"
#include "write_transaction.h"

#include <map>
#include <string>

namespace ulo {
namespace {

using CategoryNames = std::map<unsigned int, QString>;

// The store's name for a category that does not exist.
const QString unknownCategory = QStringLiteral("None");

// A condition has a limited number of operators.
constexpr int mostCategories = 32;

constexpr const char* everyTask = "$c->get_field('UID') > 0";

int readNames(CategoryNames& names) {
  ResultRows rows;
  const int result = rows.query(task_scripts::categoryNames);
  for (; !rows.atEnd(); rows.next())
    names[rows.uid(task_scripts::UidName::uid)] = rows.varchar(task_scripts::UidName::name);
  return result;
}

// The condition that the fields of a row contain the text of parameter 0 or that its category is
// one whose name does. Empty if it would be met by most rows, or have too many operators.
std::string textCondition(const QString& text, const CategoryNames& names) {
  if (text.isEmpty() || contains(unknownCategory, text))
    return {};
  std::string condition = "contains($c->get_field('summary'), :0)"
                          " || contains($c->get_field('note'), :0)"
                          " || contains($c->get_field('uuid'), :0)";
  int categories = 0;
  for (const auto& [uid, name] : names) {
    if (!contains(name, text))
      continue;
    if (++categories > mostCategories)
      return {};
    condition += " || $c->get_field('categoryUid') == " + std::to_string(uid);
  }
  return "(" + condition + ")";
}

}  // namespace

int searchTasks(const TaskSearch& wanted, const TaskVisitor& visit) {
  const ReadSnapshot snapshot;
  CategoryNames names;
  if (const int result = readNames(names); result != DB_OK)
    return storeCode(result);
  std::optional<Example> example;
  if (wanted.example)
    example.emplace(*wanted.example);

  std::string condition = example ? example->scriptCondition() : std::string();
  if (wanted.text)
    if (const std::string text = textCondition(*wanted.text, names); !text.empty())
      condition += (condition.empty() ? "" : " && ") + text;
  if (condition.empty())
    condition = everyTask;

  ParameterBlock block(1);
  if (!block)
    return TASK_ENG_MEMORY_FULL;
  block.bindText(0, wanted.text.value_or(QString()));
  ResultRows rows;
  if (const int result = block.query(rows, task_scripts::tasksWhere, condition.c_str());
      result != DB_OK)
    return storeCode(result);
  const TaskReader<task_scripts::PlainTask> reader(true, rows);
  for (; !rows.atEnd(); rows.next()) {
    const auto known = names.find(rows.uid(task_scripts::PlainTask::category));
    const QString& category = known == names.end() ? unknownCategory : known->second;
    if (wanted.text && !mentions(rows, *wanted.text) && !contains(category, *wanted.text))
      continue;
    if (!example || example->isMetBy(rows))
      visit(reader.task(category));
  }
  return TASK_ENG_OK;
}

}  // namespace ulo
