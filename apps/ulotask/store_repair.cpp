#include "store_repair.h"

#include "database.h"
#include "exit_codes.h"
#include "file_names.h"
#include "session.h"
#include "store_files.h"
#include "task_scripts.h"
#include "text.h"
#include "ulo/change_journal.h"

#include <algorithm>
#include <array>
#include <map>

#include <sys/stat.h>

namespace ulotask {
namespace {

// Argument: the UID of the category.
constexpr const char* tasksScript = "sml:declare schema tasks (uid integer);\n"
                                    "declare buffer schema tasks;\n"
                                    "cursor $c = open_cursor('task_index_categoryId');\n"
                                    "tuple $key = $c->new_empty_key_tuple();\n"
                                    "$key->set_field(0, %d);\n"
                                    "bool $more = $c->find($key);\n"
                                    "while ($more) {\n"
                                    "buffer_put(uid, $c->get_field('UID'));\n"
                                    "buffer_move_next();\n"
                                    "$more = $c->move_next_in_dup();\n"
                                    "};";

// Arguments: the UID of the task and that of its new category.
constexpr const char* moveScript = "sml:cursor $c = open_cursor('task_table_task');\n"
                                   "tuple $key = $c->new_empty_key_tuple();\n"
                                   "$key->set_field('UID', %d);\n"
                                   "if ($c->find($key)) {\n"
                                   "tuple $data = $c->get_data_tuple();\n"
                                   "$data->set_field('categoryUid', %d);\n"
                                   "$c->update($data);\n"
                                   "};";

// Argument: the UID of the category.
constexpr const char* removeScript = "sml:cursor $c = open_cursor('task_table_category');\n"
                                     "tuple $key = $c->new_empty_key_tuple();\n"
                                     "$key->set_field('UID', %d);\n"
                                     "if ($c->find($key)) {\n"
                                     "$c->del();\n"
                                     "};";
constexpr const char* markScript = "sml:cursor $c = open_cursor('task_table_category');\n"
                                   "tuple $key = $c->new_empty_key_tuple();\n"
                                   "$key->set_field('UID', %d);\n"
                                   "if ($c->find($key)) {\n"
                                   "tuple $data = $c->get_data_tuple();\n"
                                   "$data->set_field('flag', true);\n"
                                   "$c->update($data);\n"
                                   "};";

constexpr const char* repairing = "nothing was repaired: the repair";

std::string shown(const QString& name) {
  return name.isNull() ? "category of tasks without one" : "category \"" + oneLine(name) + '"';
}

std::size_t moveTasks(unsigned int from, unsigned int to) {
  ResultRows rows;
  requireDatabase(rows.query(tasksScript, static_cast<int>(from)), repairing);
  std::size_t moved = 0;
  for (; !rows.atEnd(); rows.next(), ++moved)
    requireDatabase(DB_Exec(moveScript, rows.integer(0), static_cast<int>(to)), repairing);
  return moved;
}

std::string merge(const DoubledCategory& doubled) {
  std::size_t moved = 0;
  for (std::size_t i = 1; i < doubled.uids.size(); ++i) {
    moved += moveTasks(doubled.uids[i], doubled.uids.front());
    requireDatabase(DB_Exec(removeScript, static_cast<int>(doubled.uids[i])), repairing);
  }
  return shown(doubled.name) + ": " + counted(doubled.uids.size() - 1, "double") + " removed, " +
         counted(moved, "task") + " moved to the first";
}

std::string addOriginals(const std::vector<StoreQuestions::Category>& categories) {
  std::size_t added = 0;
  for (const char* name : task_scripts::defaultCategories) {
    const bool isThere =
        std::any_of(categories.begin(), categories.end(),
                    [&](const StoreQuestions::Category& each) { return each.name == name; });
    if (isThere)
      continue;
    requireDatabase(DB_Exec(task_scripts::insertDefaultCategory, name, "true"), repairing);
    ++added;
  }
  // The mark of a store whose first start was completed.
  for (const StoreQuestions::Category& category : categories) {
    if (category.name.isNull())
      requireDatabase(DB_Exec(markScript, static_cast<int>(category.uid)), repairing);
  }
  return "default categories: " + std::to_string(added) + " added";
}

}  // namespace

std::vector<DoubledCategory>
doubledCategories(const std::vector<StoreQuestions::Category>& categories) {
  std::vector<DoubledCategory> found;
  for (const StoreQuestions::Category& category : categories) {
    const auto same = std::find_if(found.begin(), found.end(), [&](const DoubledCategory& each) {
      return each.name == category.name && each.name.isNull() == category.name.isNull();
    });
    if (same != found.end())
      same->uids.push_back(category.uid);
    else
      found.push_back({category.name, {category.uid}});
  }
  std::erase_if(found, [](const DoubledCategory& each) { return each.uids.size() == 1; });
  return found;
}

bool lacksOriginalCategories(const std::vector<StoreQuestions::Category>& categories) {
  return std::none_of(categories.begin(), categories.end(),
                      [](const StoreQuestions::Category& each) { return each.isOriginal; });
}

std::vector<std::string> repairCategories(Session& session) {
  std::vector<std::string> done;
  session.inTransaction(repairing, [&] {
    const StoreQuestions database;
    for (const DoubledCategory& doubled : doubledCategories(database.categories()))
      done.push_back(merge(doubled));
    const std::vector<StoreQuestions::Category> categories = database.categories();
    if (lacksOriginalCategories(categories))
      done.push_back(addOriginals(categories));
  });
  return done;
}

std::string compareJournal(ulo::ChangeJournal& journal, const std::set<unsigned int>& stored) {
  std::vector<ulo::Change> entries;
  if (!journal.entriesSince(0, entries))
    return "can't be read; the log says why";
  std::map<unsigned int, ulo::ChangeType> last;
  for (const ulo::Change& entry : entries) {
    if (entry.source == ZTASK_ENG_Model::identifier)
      last[entry.uid] = entry.type;
  }
  std::size_t missing = 0;
  std::size_t left = 0;
  for (const auto& [uid, type] : last) {
    const bool isStored = stored.count(uid) != 0;
    if (type == ulo::ChangeType::removed)
      left += isStored ? 1 : 0;
    else
      missing += isStored ? 0 : 1;
  }
  std::string difference;
  if (missing > 0)
    difference = counted(missing, "task") + " of its last entries not in the store";
  if (left > 0)
    difference += (difference.empty() ? "" : ", ") + counted(left, "task") +
                  " removed by its last entries still in the store";
  return difference;
}

std::vector<std::string> foreignAccess() {
  constexpr mode_t readable = S_IRGRP | S_IROTH;
  constexpr mode_t writable = S_IWGRP | S_IWOTH;
  constexpr mode_t permissions = 07777;
  const std::string directory = storeDirectoryName();
  std::vector<std::string> notes;
  const auto note = [&](const std::string& path, mode_t mode, const char* what) {
    std::array<char, 8> octal{};
    static_cast<void>(std::snprintf(octal.data(), octal.size(), "%04o",
                                    static_cast<unsigned int>(mode & permissions)));
    notes.push_back(oneLine(std::string_view(path)) + " is " + what + " by other users (mode " +
                    octal.data() + ")");
  };
  struct stat status {};
  if (stat(directory.c_str(), &status) != 0)
    return notes;
  if ((status.st_mode & writable) != 0)
    note(directory, status.st_mode, "writable");
  for (const std::string& name : ulo::fileNames(directory)) {
    std::string path = directory;
    path += '/' + name;
    if (!name.starts_with("tasks.db") || stat(path.c_str(), &status) != 0)
      continue;
    if ((status.st_mode & writable) != 0)
      note(path, status.st_mode, "writable");
    else if ((status.st_mode & readable) != 0)
      note(path, status.st_mode, "readable");
  }
  std::sort(notes.begin(), notes.end());
  return notes;
}

}  // namespace ulotask
