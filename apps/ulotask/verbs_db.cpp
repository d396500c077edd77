#include "calendar_file.h"
#include "change_journal.h"
#include "data_directory.h"
#include "exit_codes.h"
#include "session.h"
#include "store_questions.h"
#include "text.h"
#include "ulodb2.h"
#include "verbs.h"

#include <algorithm>
#include <filesystem>

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
    throw Failure(Exit::badScript, "the text is refused with code " + std::to_string(code));
}

void check(Session& session) {
  Output& output = session.output;
  int defects = 0;
  const auto judge = [&](const std::string& subject, const std::string& defect) {
    output.line(subject + ": " + (defect.empty() ? "sound" : defect));
    defects += defect.empty() ? 0 : 1;
  };

  session.store();
  const StoreQuestions database;
  const int fileCode = DB_CheckFile(printLine, &output);
  judge("database file", fileCode == DB_OK ? "" : "damaged, code " + std::to_string(fileCode));
  if (fileCode != DB_OK)
    throw Failure(Exit::storeUnsound, "the database file is damaged");

  QValueList<QString> names;
  require(session.store().getAllCategories(names), "reading the categories");
  const auto nullNames =
      std::count_if(names.begin(), names.end(), [](const QString& name) { return name.isNull(); });
  judge("category of tasks without one",
        nullNames == 1 ? "" : "stored " + std::to_string(nullNames) + " times");

  std::int64_t lastEntry = 0;
  const bool journalReads = ulo::ChangeJournal(ulo::dataDirectory()).lastEntry(lastEntry);
  judge("change journal", journalReads ? "" : "can't be read; the log says why");

  const std::vector<unsigned int> orphans = database.tasksWithoutCategory();
  if (!orphans.empty())
    output.line("note: " + counted(orphans.size(), "task") +
                " of a category that was removed: they read as of category None");

  int count = 0;
  require(session.store().getCount(count), "counting the tasks");
  output.line(counted(static_cast<std::size_t>(count), "task") + ", " +
              std::to_string(names.count()) + " categories");
  if (defects > 0)
    throw Failure(Exit::storeUnsound,
                  counted(static_cast<std::size_t>(defects), "defect") + " in the store");
}

}  // namespace

void addDatabaseVerbs(CLI::App& app, Session& session) {
  CLI::App* group = app.add_subcommand("db", "Look into the database");
  group->require_subcommand(1);

  CLI::App* verb = group->add_subcommand("explain", "Show how a script or statement is understood");
  auto script = std::make_shared<std::string>();
  verb->add_option("SCRIPT", *script, "The text, a file that holds it, or - for standard input")
      ->required();
  verb->footer("Prints its words, its checked tree and the SQL that it leads to.\n"
               "Example:\n"
               "  ulotask db explain \"sml:cursor \\$c = open_cursor('task_index_due');\"");
  verb->callback([script, &session] { explain(session, *script); });

  verb = group->add_subcommand("check", "Check that the store is sound");
  verb->footer("Example:\n"
               "  ulotask db check");
  verb->callback([&session] { check(session); });
}

}  // namespace ulotask
