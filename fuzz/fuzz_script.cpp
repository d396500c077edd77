// Fuzzes statements and scripts on the tables of tasks. An input has the format of
// tests/golden/odb: parameters, a line "---" and the text; or only the text.
#include "machine/executable.h"
#include "ulodb2.h"

#include "fuzz_support.h"
#include "sql_text.h"
#include "task_scripts.h"
#include "temporary_directory.h"

#include <cstring>

namespace {

using fuzz::Wanted;

// Limits the iterations of loops; the limit of the database takes seconds to reach. This many
// iterations are enough to visit each row of the tables below in each loop of a script.
constexpr int mostPasses = 300;
constexpr int mostColumns = 14;

void mustRun(const char* text) {
  FUZZ_REQUIRE(DB_Exec("%s", text) == DB_OK);
}

// A database with the tables of tasks, six tasks and three categories, which stays open.
class Tables {
public:
  Tables() {
    FUZZ_REQUIRE(DB_Open(1) == DB_OK);
    mustRun(task_scripts::createTaskTable);
    for (const char* index : task_scripts::createTaskIndexes)
      mustRun(index);
    mustRun(task_scripts::createCategoryTable);
    mustRun(task_scripts::createCategoryIndex);
    for (const char* name : {"get_null_varchar()", "'none'", "'meeting'"})
      FUZZ_REQUIRE(DB_Exec("insert into task_table_category(name, flag) values (%s, true)", name) ==
                   DB_OK);
    struct Row {
      int priority, status, due, category;
      const char* summary;
    };
    for (const Row& row :
         {Row{1, 1, 100, 1, "first"}, Row{5, 0, 50, 2, "second"}, Row{1, 1, 100, 3, "third"},
          Row{9, 0, INT32_MAX, 2, "no date"}, Row{0, 1, 75, 2, "007"}, Row{5, 2, 200, 1, "last"}})
      FUZZ_REQUIRE(DB_Exec("insert into task_table_task (priority, status, note, summary, uuid, "
                           "alarm, due, end, categoryUid, revision) values (%d, %d, "
                           "get_null_varchar(), '%s', 'u', 0, %d, %d, %d, 7)",
                           row.priority, row.status, row.summary, row.due, row.due,
                           row.category) == DB_OK);
    ulo::odb::loopPassLimit = mostPasses;
    before_ = content();
  }

  // Requires that every input starts with the same content as the first one.
  void checkUnchanged() const { FUZZ_REQUIRE(content() == before_); }

private:
  static std::string content();

  DataDirectory directory_;
  std::string before_;
};

// The outcome of a text: the result code, the rows, and the thread's tag.
struct Outcome {
  int code = DB_OK;
  std::string rows;
  int tag = 0;

  bool operator==(const Outcome& other) const {
    return code == other.code && rows == other.rows && tag == other.tag;
  }
};

void addField(std::string& row, DB_CURSOR cursor, int column) {
  row += std::to_string(DB_CSC_GetFieldAsInteger(cursor, column)) + "," +
         std::to_string(DB_CSC_GetFieldAsBool(cursor, column));
  if (const char* bytes = DB_CSC_GetFieldAsChar(cursor, column))
    row += std::string(",'") + bytes + "'";
  if (const unsigned short* units = DB_CSC_GetFieldAsUnicode(cursor, column))
    for (row += ",u"; *units != 0; ++units)
      row += std::to_string(*units) + " ";
  row += "|";
}

std::string rowsOf(DB_CURSOR cursor) {
  std::string rows;
  for (; DB_CSC_Eof(cursor) == 0; DB_CSC_MoveNext(cursor)) {
    for (int column = -1; column < mostColumns; ++column)
      addField(rows, cursor, column);
    rows += "\n";
  }
  DB_CSC_MoveNext(cursor);
  FUZZ_REQUIRE(DB_CSC_GetFieldAsInteger(cursor, 0) == 0);
  return rows;
}

std::string Tables::content() {
  DB_CURSOR tasks = nullptr;
  FUZZ_REQUIRE(DB_Query(&tasks, "%s", task_scripts::allTasks) == DB_OK);
  std::string all = rowsOf(tasks);
  DB_CSC_Close(tasks);
  DB_CURSOR categories = nullptr;
  FUZZ_REQUIRE(DB_Query(&categories, "%s", task_scripts::allCategories) == DB_OK);
  all += rowsOf(categories);
  DB_CSC_Close(categories);
  return all;
}

// A way to run a text: with or without a result, with or without parameters.
struct Way {
  bool wantsRows;
  DB_PARAM block;  // or null
};

template <typename... Arguments>
Outcome run(const Way& way, const char* text, Arguments... arguments) {
  Outcome outcome;
  DB_CURSOR cursor = nullptr;
  if (way.wantsRows)
    outcome.code = way.block == nullptr ? DB_Query(&cursor, text, arguments...)
                                        : DB_QueryWithParam(&cursor, way.block, text, arguments...);
  else
    outcome.code = way.block == nullptr ? DB_Exec(text, arguments...)
                                        : DB_ExecWithParam(way.block, text, arguments...);
  FUZZ_REQUIRE((cursor != nullptr) == (way.wantsRows && outcome.code == DB_OK));
  if (cursor != nullptr)
    outcome.rows = rowsOf(cursor);
  DB_CSC_Close(cursor);
  outcome.tag = DB_GetTag();
  return outcome;
}

// Runs a text as a template, with an argument for each of its conversions.
constexpr std::size_t mostArguments = 4;
template <typename... Arguments>
void runTemplate(const Way& way, const char* text, const std::vector<Wanted>& wanted,
                 Arguments... arguments) {
  constexpr std::size_t given = sizeof...(arguments);
  if (given == wanted.size()) {
    run(way, text, arguments...);
    return;
  }
  if constexpr (given < mostArguments) {
    switch (wanted[given]) {
    case Wanted::text:
      return runTemplate(way, text, wanted, arguments..., "task_index_due");
    case Wanted::number:
      return runTemplate(way, text, wanted, arguments..., -1);
    case Wanted::longNumber:
      return runTemplate(way, text, wanted, arguments..., 4294967297L);
    }
  }
}

// Rolls back all changes made during its lifetime.
class Undone {
public:
  Undone() { FUZZ_REQUIRE(DB_BeginTransaction(0) == DB_OK); }
  Undone(const Undone&) = delete;
  Undone& operator=(const Undone&) = delete;
  ~Undone() { FUZZ_REQUIRE(DB_AbortTransaction() == DB_OK); }
};

// Requires that a text has the same outcome with new and with cached statements, and whether or not
// SQLite filters its loops. The number of iterations may differ.
void checkSameEitherWay(const Way& way, const char* text) {
  Outcome outcomes[3];
  for (Outcome& outcome : outcomes) {
    ulo::odb::pushDownEnabled = &outcome != &outcomes[2];
    mustRun("sml:set_session_tag(0);");
    const Undone undone;
    outcome = run(way, "%s", text);
  }
  ulo::odb::pushDownEnabled = true;
  FUZZ_REQUIRE(outcomes[0] == outcomes[1]);
  if (outcomes[0].code != DB_LIMIT && outcomes[2].code != DB_LIMIT)
    FUZZ_REQUIRE(outcomes[0] == outcomes[2]);
}

void checkReading(const Way& way, const char* text) {
  FUZZ_REQUIRE(DB_BeginRead() == DB_OK);
  run(way, "%s", text);
  FUZZ_REQUIRE(DB_BeginTransaction(0) == DB_TRANSACTION);
  FUZZ_REQUIRE(DB_EndRead() == DB_OK);
}

void checkExplained(const char* text, DB_PARAM block) {
  std::size_t lines = 0;
  const auto count = [](void* context, const char* line) {
    *static_cast<std::size_t*>(context) += std::strlen(line) > 0 ? 1 : 0;
  };
  const Undone undone;
  DB_Explain(text, DB_EXPLAIN_TOKENS | DB_EXPLAIN_TREE | DB_EXPLAIN_SQL | DB_EXPLAIN_RUN, block,
             count, &lines);
  FUZZ_REQUIRE(lines > 0);
}

// Binds a line of parameters: ":0 = 5", ":1 = 'bytes'", ":2 = u'units'"; anything else binds null.
void bindLine(DB_PARAM block, const std::string& line) {
  const std::size_t equals = line.find(" = ");
  if (line.empty() || line[0] != ':' || equals == std::string::npos)
    return;
  const int index = std::atoi(line.c_str() + 1);
  std::string value = line.substr(equals + 3);
  const bool isUnicode = value.rfind("u'", 0) == 0;
  if (isUnicode || value.rfind('\'', 0) == 0) {
    value = value.substr(isUnicode ? 2 : 1);
    value = value.substr(0, value.rfind('\''));
    std::vector<unsigned short> units(value.begin(), value.end());
    units.push_back(0);
    static_cast<void>(isUnicode ? DB_PARAM_BindUnicode(block, index, units.data())
                                : DB_PARAM_BindChar(block, index, value.c_str()));
  } else if (!value.empty() && (value[0] == '-' || (value[0] >= '0' && value[0] <= '9'))) {
    DB_PARAM_BindInteger(block, index, static_cast<int>(std::atoll(value.c_str())));
  } else {
    DB_PARAM_BindChar(block, index, nullptr);
  }
}

struct Input {
  std::string parameters;
  std::string text;
};

// Splits an input. Texts for the interface end at their first zero byte.
Input inputOf(const std::string& bytes) {
  const std::string separator = "---\n";
  const std::size_t end = bytes.find(separator);
  if (end == std::string::npos)
    return {"", bytes.c_str()};
  return {bytes.substr(0, end), bytes.c_str() + end + separator.size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isPrepared = (fuzz::prepare(), true);
  static const Tables tables;
  FUZZ_REQUIRE(isPrepared);
  const Input input = inputOf(fuzz::textOf(data, size));
  constexpr int parameters = 16;
  DB_PARAM block = DB_PARAM_Open(parameters);
  for (std::size_t at = 0; at < input.parameters.size();) {
    const std::size_t end = std::min(input.parameters.find('\n', at), input.parameters.size());
    bindLine(block, input.parameters.substr(at, end - at));
    at = end + 1;
  }

  const char* text = input.text.c_str();
  checkSameEitherWay({true, block}, text);
  checkReading({true, block}, text);
  if (fuzz::isOneIn(4, input.text)) {
    checkSameEitherWay({false, nullptr}, text);
    checkExplained(text, block);
  }
  if (const auto wanted = fuzz::wantedBy(input.text);
      !wanted.empty() && wanted.size() <= mostArguments) {
    const Undone undone;
    runTemplate({true, block}, text, wanted);
    runTemplate({false, nullptr}, text, wanted);
  }
  DB_PARAM_Close(block);
  tables.checkUnchanged();
  return 0;
}
