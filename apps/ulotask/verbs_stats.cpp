#include "change_lines.h"
#include "database.h"
#include "file_names.h"
#include "listing.h"
#include "session.h"
#include "text.h"
#include "ulo/change_journal.h"
#include "ulo/data_directory.h"
#include "verbs.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ulotask {
namespace {

struct Statistics {
  std::vector<int> counts;  // by `views`
  std::size_t categories = 0;
  std::map<std::string, std::uintmax_t> files;  // bytes by name
  std::int64_t lastEntry = 0;
};

// The database files, and the files beside them that exist while they are in use.
std::map<std::string, std::uintmax_t> databaseFiles() {
  std::map<std::string, std::uintmax_t> files;
  const std::string directory = ulo::dataDirectory();
  for (const std::string& name : ulo::fileNames(directory)) {
    std::error_code gone;
    const std::uintmax_t bytes = std::filesystem::file_size(directory + '/' + name, gone);
    if (!gone && name.find(".db") != std::string::npos)
      files[name] = bytes;
  }
  return files;
}

// Tasks and categories, in one state of the store.
void countRows(Session& session, Statistics& result) {
  ZTASK_ENG_Model& store = session.store();
  const ReadSnapshot snapshot;
  result.counts.clear();
  for (const View& view : views) {
    int count = 0;
    require(store.getCount(count, view.category), "counting the tasks");
    result.counts.push_back(count);
  }
  QValueList<QString> names;
  require(store.getAllCategories(names), "reading the categories");
  result.categories = static_cast<std::size_t>(std::count_if(
      names.begin(), names.end(), [](const QString& name) { return !name.isNull(); }));
}

Statistics statistics(Session& session) {
  // The journal uses a separate connection. The counts match the last entry if no change was
  // committed between two reads of the journal. If other programs never stop writing, the last
  // attempt is shown.
  constexpr int attempts = 100;
  Statistics result;
  // Creates the journal if there is none yet.
  session.store();
  ulo::ChangeJournal journal(ulo::dataDirectory());
  for (int attempt = 0; attempt < attempts; ++attempt) {
    std::int64_t before = 0;
    requireJournal(journal.lastEntry(before));
    countRows(session, result);
    requireJournal(journal.lastEntry(result.lastEntry));
    if (result.lastEntry == before)
      break;
  }
  result.files = databaseFiles();
  return result;
}

void stats(Session& session, bool json) {
  const Statistics found = statistics(session);
  if (json) {
    QJsonObject tasks;
    for (std::size_t i = 0; i < std::size(views); ++i)
      tasks[views[i].word] = found.counts[i];
    QJsonObject files;
    for (const auto& [name, bytes] : found.files)
      files[QString::fromStdString(name)] = static_cast<qint64>(bytes);
    session.output.json(QJsonObject{{"tasks", tasks},
                                    {"categories", static_cast<qint64>(found.categories)},
                                    {"directory", QString::fromStdString(ulo::dataDirectory())},
                                    {"files", files},
                                    {"lastChange", static_cast<qint64>(found.lastEntry)}});
    return;
  }
  std::vector<Table::Row> rows;
  for (std::size_t i = 0; i < std::size(views); ++i)
    rows.push_back({std::string("tasks, ") + views[i].word, std::to_string(found.counts[i])});
  rows.push_back({"categories", std::to_string(found.categories)});
  for (const auto& [name, bytes] : found.files)
    rows.push_back({oneLine(std::string_view(name)), counted(bytes, "byte")});
  rows.push_back({"last change", "entry " + std::to_string(found.lastEntry)});
  printTable(session.output,
             Table({{"WHAT", Table::Align::left, 0}, {"HOW MUCH", Table::Align::left, 0}}), rows);
}

}  // namespace

void addStatsVerb(Verb& program, Session& session) {
  Verb verb = program.addVerb("stats", "Count tasks, categories, bytes and changes");
  auto json = std::make_shared<bool>(false);
  verb.flag("--json", *json, "Print a JSON object for programs");
  verb.footer("Counts each view of list; a task can be in several.\n"
              "Example:\n"
              "  ulotask stats");
  verb.run([json, &session] { stats(session, *json); });
}

}  // namespace ulotask
