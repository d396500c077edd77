#include "calendar_file.h"
#include "exit_codes.h"
#include "sample_store.h"
#include "session.h"
#include "store_files.h"
#include "store_questions.h"
#include "store_repair.h"
#include "text.h"
#include "ulo/change_journal.h"
#include "ulo/data_directory.h"
#include "ulodb2.h"
#include "ulodb2_files.h"
#include "verbs.h"
#include "write_transaction.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ulotask {
namespace {

void printLine(void* output, const char* utf8) {
  static_cast<Output*>(output)->line(severalLines(QString::fromUtf8(utf8), 0));
}

std::string scriptText(const std::string& argument) {
  std::error_code ignored;
  if (argument == "-" || std::filesystem::is_regular_file(argument, ignored))
    return readFile(argument, DB_MAX_TEXT);
  return argument;
}

void explain(Session& session, const std::string& argument) {
  const std::string text = scriptText(argument);
  session.store();
  const StoreQuestions database;
  const int code = DB_Explain(text.c_str(), DB_EXPLAIN_TOKENS | DB_EXPLAIN_TREE | DB_EXPLAIN_SQL,
                              nullptr, printLine, &session.output);
  if (code != DB_OK)
    throw Failure(Exit::badScript, "the text was rejected with code " + std::to_string(code));
}

// Lines of a maintenance function: its results, or the reasons for its failure.
struct Lines {
  std::vector<std::string> texts;

  static void add(void* lines, const char* utf8) {
    static_cast<Lines*>(lines)->texts.emplace_back(utf8);
  }
  [[nodiscard]] std::string reason() {
    std::string last = texts.empty() ? "failed" : texts.back();
    if (!texts.empty())
      texts.pop_back();
    return last;
  }
  void print(Output& output) const {
    for (const std::string& text : texts)
      output.line(severalLines(QString::fromStdString(text), 0));
  }
};

// Prints the defects of the file and returns whether it has none. Throws a Failure if it cannot be
// examined.
bool isSound(Output& output, const SampleStore& sample) {
  Lines defects;
  const int result = DB_Inspect(ulo::storeDatabase, sample.file().c_str(), Lines::add, &defects);
  if (result != DB_OK && result != DB_ERROR)
    throw closedStore();
  defects.print(output);
  return result == DB_OK;
}

std::string named(const DoubledCategory& doubled) {
  return '"' + oneLine(doubled.name) + "\" stored " + std::to_string(doubled.uids.size()) +
         " times";
}

std::set<unsigned int> storedUids(Session& session) {
  QValueList<unsigned int> uids;
  require(session.store().getAllIDs(uids, ZTASK_ENG_Model::TASK_CATEGORY_ALL,
                                    ZTASK_ENG_Model::TASK_SORT_DUE),
          "listing the tasks");
  return {uids.begin(), uids.end()};
}

class Judgement {
public:
  explicit Judgement(Output& output) : output_(output) {}
  void on(const std::string& subject, const std::string& defect) {
    output_.line(subject + ": " + (defect.empty() ? "sound" : defect));
    defects_ += defect.empty() ? 0 : 1;
  }
  [[nodiscard]] std::size_t defects() const { return defects_; }

private:
  Output& output_;
  std::size_t defects_ = 0;
};

// The rows of the tasks without a category; a sound store has one.
std::ptrdiff_t countNullNames(const std::vector<StoreQuestions::Category>& categories) {
  return std::count_if(categories.begin(), categories.end(),
                       [](const auto& category) { return category.name.isNull(); });
}

// Returns whether there is something to repair.
bool judgeCategories(Judgement& judgement, const StoreQuestions& database) {
  const std::vector<StoreQuestions::Category> categories = database.categories();
  std::string doubles;
  const std::ptrdiff_t nullNames = countNullNames(categories);
  for (const DoubledCategory& doubled : doubledCategories(categories)) {
    if (!doubled.name.isNull())
      doubles += (doubles.empty() ? "" : ", ") + named(doubled);
  }
  judgement.on("category of tasks without one",
               nullNames == 1 ? "" : "stored " + std::to_string(nullNames) + " times");
  judgement.on("categories", doubles);
  const bool lacks = lacksOriginalCategories(categories);
  judgement.on("default categories", lacks ? "missing; the first start was interrupted" : "");
  return nullNames > 1 || !doubles.empty() || lacks;
}

// Returns how many tasks and categories the store contains.
std::string content(Session& session) {
  const std::vector<StoreQuestions::Category> categories = StoreQuestions().categories();
  const std::ptrdiff_t named = std::ssize(categories) - countNullNames(categories);
  return counted(session.countTasks(), "task") + " and " + std::to_string(named) +
         (named == 1 ? " category" : " categories");
}

void check(Session& session, bool repair) {
  Output& output = session.output;
  Judgement judgement(output);
  const bool sound = isSound(output, SampleStore());
  judgement.on("database file", sound ? "" : "damaged");
  if (!sound)
    throw Failure(Exit::storeUnsound,
                  "the database file is damaged; try \"ulotask db rescue\", which keeps the old "
                  "file");

  session.store();
  if (repair) {
    for (const std::string& done : repairCategories(session))
      output.line("repaired: " + done);
  }
  const StoreQuestions database;
  const bool isRepairable = judgeCategories(judgement, database);
  ulo::ChangeJournal journal(ulo::dataDirectory());
  judgement.on("change journal", compareJournal(journal, storedUids(session)));

  const std::vector<unsigned int> orphans = database.tasksWithoutCategory();
  if (!orphans.empty())
    output.line("note: " + counted(orphans.size(), "task") +
                " of a category that was removed: they read as of category None");
  for (const std::string& note : foreignAccess())
    output.line("note: " + note);

  output.line(content(session));
  if (judgement.defects() > 0)
    throw Failure(Exit::storeUnsound,
                  counted(judgement.defects(), "defect") + " in the store" +
                      (isRepairable ? "; try \"ulotask db check --repair\"" : ""));
}

// How a result of a maintenance function ends the program.
struct MaintenanceFailure {
  int result;
  Exit code;
  const char* hint;
};

void requireDone(int result, const std::string& reason,
                 std::initializer_list<MaintenanceFailure> failures) {
  if (result == DB_OK)
    return;
  for (const MaintenanceFailure& failure : failures) {
    if (failure.result == result)
      throw Failure(failure.code, reason + failure.hint);
  }
  if (result == DB_FULL)
    throw Failure(Exit::storeFull, reason);
  if (result == DB_BUSY)
    throw Failure(Exit::inUse, reason + "; close it and try again");
  throw Failure(Exit::failed, reason);
}

std::string shownFile(const std::string& file) {
  return oneLine(std::string_view(file));
}

void backUp(Session& session, const std::string& file, bool force) {
  refuseStoreFile(file);
  const std::string saved = content(session);
  std::string reason;
  const int result =
      DB_Backup(ulo::storeDatabase, targetOf(file).c_str(), force ? 1 : 0, keepLine, &reason);
  requireDone(result, reason,
              {{DB_CONSTRAINT, Exit::fileExists, "; --force replaces it"},
               {DB_CORRUPT, Exit::storeUnsound, "; try \"ulotask db rescue\""},
               {DB_IO, Exit::notWritten, ""},
               {DB_FULL, Exit::notWritten, ""}});
  session.output.line("Saved the store in " + shownFile(file) + " (" + saved + ")");
}

void restore(Session& session, const std::string& file) {
  Lines lines;
  const SampleStore sample;
  const int result =
      DB_Restore(ulo::storeDatabase, file.c_str(), sample.file().c_str(), Lines::add, &lines);
  const std::string reason = result == DB_OK ? "" : lines.reason();
  lines.print(session.output);
  requireDone(result, reason,
              {{DB_CORRUPT, Exit::notStore, ""},
               {DB_BAD_ARGUMENT, Exit::usage, ""},
               {DB_IO, Exit::unreadable, ""}});
  // The store has been replaced: a failure from here on does not undo that.
  std::string counted;
  try {
    counted = content(session);
  } catch (const Failure& failure) {
    counted = std::string("not counted: ") + failure.what();
  }
  session.output.line("Restored the store from " + shownFile(file) + " (" + counted + ")");
}

void rescue(Session& session) {
  Output& output = session.output;
  const SampleStore sample;
  Lines defects;
  if (DB_Inspect(ulo::storeDatabase, sample.file().c_str(), Lines::add, &defects) == DB_OK) {
    output.line("The database file is sound: there is nothing to rescue.");
    return;
  }
  Lines lines;
  const int result = DB_Rescue(ulo::storeDatabase, sample.file().c_str(), Lines::add, &lines);
  const std::string reason = result == DB_OK ? "" : lines.reason();
  lines.print(output);
  requireDone(
      result, reason,
      {{DB_CORRUPT, Exit::notStore, "; \"ulotask db restore FILE\" puts a backup in its place"}});
  output.line("Rescued " + content(session));
}

}  // namespace

void addDatabaseVerbs(Verb& program, Session& session) {
  Verb group = program.addGroup("db", "Look into the database");

  Verb verb = group.addVerb("explain", "Show how a script or statement is parsed");
  auto script = std::make_shared<std::string>();
  verb.option("SCRIPT", *script, "The text, a file that holds it, or - for standard input")
      .required();
  verb.footer("Prints its tokens, its checked tree and the SQL that is derived from it.\n"
              "Example:\n"
              "  ulotask db explain \"sml:cursor \\$c = open_cursor('task_index_due');\"");
  verb.run([script, &session] { explain(session, *script); });

  verb = group.addVerb("check", "Check that the store is sound");
  auto repair = std::make_shared<bool>(false);
  verb.flag("--repair", *repair,
            "Merge categories of the same name and add missing default categories");
  verb.footer("Exits with 11 if it finds a defect. Changes nothing without --repair.\n"
              "Examples:\n"
              "  ulotask db check\n"
              "  ulotask db check --repair");
  verb.run([repair, &session] { check(session, *repair); });

  struct Backup {
    std::string file;
    bool force = false;
  };
  auto backup = std::make_shared<Backup>();
  verb = group.addVerb("backup", "Save the store in a file, while other programs use it");
  verb.option("FILE", backup->file, "The file to write, readable by its owner only").required();
  verb.flag("--force", backup->force, "Replace the file if it exists");
  verb.footer("The file appears when it is complete and checked. It needs no other file.\n"
              "Example:\n"
              "  ulotask db backup tasks-$(date +%F).db");
  verb.run([backup, &session] { backUp(session, backup->file, backup->force); });

  verb = group.addVerb("restore", "Replace the store with a backup");
  auto source = std::make_shared<std::string>();
  verb.option("FILE", *source, "A file that db backup has written, or an old store").required();
  verb.footer("No other program may have the store open. The replaced store is kept beside it, as\n"
              "tasks.db with the date and time.\n"
              "Example:\n"
              "  ulotask db restore tasks-2026-11-22.db");
  verb.run([source, &session] { restore(session, *source); });

  verb = group.addVerb("rescue", "Replace a damaged store with what can be read from it");
  verb.footer("No other program may have the store open. Tasks keep their UIDs. The damaged store "
              "is\nkept beside it, as tasks.db with the date and time.\n"
              "Example:\n"
              "  ulotask db rescue");
  verb.run([&session] { rescue(session); });
}

}  // namespace ulotask
