// Compares the processing of each text in tests/golden/odb with the expected file: its tokens, its
// tree, its SQL with the values, and its rows or its error. A case consists of NAME.in (parameters,
// "---", the text) and NAME.expected. ULO_RENEW_GOLDEN=1 rewrites the latter.

#include "machine/executable.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

const fs::path goldenDirectory = fs::path(ULO_SOURCE_DIR) / "tests/golden/odb";

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

std::vector<std::string> caseNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(goldenDirectory))
    if (entry.path().extension() == ".in")
      names.push_back(entry.path().stem().string());
  std::sort(names.begin(), names.end());
  return names;
}

// Binds a parameter from a line such as ":0 = 5", ":1 = 'text'" or ":2 = null". 'text' is bound as
// varchar, u'text' as unicode.
void bindLine(DB_PARAM block, const std::string& line) {
  const std::size_t equals = line.find(" = ");
  ASSERT_TRUE(line.size() > 3 && line[0] == ':' && equals != std::string::npos) << line;
  const int index = std::stoi(line.substr(1));
  const std::string value = line.substr(equals + 3);
  if (value == "null") {
    ASSERT_EQ(DB_PARAM_BindChar(block, index, nullptr), DB_OK);
  } else if (value[0] == '\'') {
    ASSERT_EQ(DB_PARAM_BindChar(block, index, value.substr(1, value.size() - 2).c_str()), DB_OK);
  } else if (value[0] == 'u') {
    std::vector<unsigned short> units;
    for (const char c : value.substr(2, value.size() - 3))
      units.push_back(static_cast<unsigned short>(static_cast<unsigned char>(c) << 8U));
    units.push_back(0);
    ASSERT_EQ(DB_PARAM_BindUnicode(block, index, units.data()), DB_OK);
  } else {
    ASSERT_EQ(DB_PARAM_BindInteger(block, index, std::stoi(value)), DB_OK);
  }
}

// Adds six tasks: two with the same due date and priority, and one without a due date.
void fillTaskTables() {
  for (const char* name : {"none", "meeting"})
    ASSERT_EQ(
        DB_Exec("insert into task_table_category(name, flag) values ('%s', %s)", name, "true"),
        DB_OK);
  struct Row {
    int priority, status, due, category;
    const char* summary;
  };
  const Row rows[] = {{1, 1, 100, 1, "first"}, {5, 0, 50, 2, "second"},
                      {1, 1, 100, 3, "third"}, {9, 0, INT32_MAX, 2, "no date"},
                      {0, 1, 75, 2, "007"},    {5, 2, 200, 1, "last"}};
  for (const Row& row : rows)
    ASSERT_EQ(DB_Exec("insert into main.task_table_task (priority, status, note, summary, uuid, "
                      "alarm, due, end, categoryUid, revision) values (%d, %d, "
                      "get_null_varchar(), '%s', 'u', 0, %d, %d, %d, 7)",
                      row.priority, row.status, row.summary, row.due, row.due, row.category),
              DB_OK);
}

class Golden : public testing::TestWithParam<std::string> {};

struct Case {
  std::string parameters;
  std::string text;
};

Case readCase(const std::string& name) {
  const std::string input = contentOf(goldenDirectory / (name + ".in"));
  const std::string separator = "---\n";
  const std::size_t end = input.find(separator);
  Case result{input.substr(0, end), input.substr(end + separator.size())};
  if (!result.text.empty() && result.text.back() == '\n')
    result.text.pop_back();
  return result;
}

// Returns the output of DB_Explain for a case that runs on new tables.
std::string explain(const Case& input, int what) {
  const DataDirectory directory;
  EXPECT_EQ(DB_Open(1), DB_OK);
  createTaskTables();
  fillTaskTables();
  DB_PARAM block = DB_PARAM_Open(16);
  std::istringstream parameters(input.parameters);
  for (std::string line; std::getline(parameters, line);)
    bindLine(block, line);
  std::string seen;
  const int result = DB_Explain(
      input.text.c_str(), what, block,
      [](void* context, const char* line) {
        *static_cast<std::string*>(context) += line + std::string("\n");
      },
      &seen);
  DB_PARAM_Close(block);
  DB_Close();
  return seen + "result: " + std::to_string(result) + "\n";
}

TEST_P(Golden, MatchesExpectedFile) {
  const std::string seen = explain(readCase(GetParam()), DB_EXPLAIN_TOKENS | DB_EXPLAIN_TREE |
                                                             DB_EXPLAIN_SQL | DB_EXPLAIN_RUN);
  const fs::path expected = goldenDirectory / (GetParam() + ".expected");
  if (std::getenv("ULO_RENEW_GOLDEN") != nullptr)
    std::ofstream(expected, std::ios::binary) << seen;
  EXPECT_EQ(seen, contentOf(expected));
}

// Keeps the rows, the tag and the result, and removes the SQL.
std::string outcome(const std::string& explained) {
  std::string result;
  std::istringstream lines(explained);
  for (std::string line; std::getline(lines, line);)
    if (line.rfind("sql: ", 0) != 0 && line.rfind("  as: ", 0) != 0)
      result += line + "\n";
  return result;
}

TEST_P(Golden, HasSameResultWithoutPushDown) {
  const Case input = readCase(GetParam());
  ulo::odb::pushDownEnabled = false;
  const std::string walked = explain(input, DB_EXPLAIN_RUN);
  ulo::odb::pushDownEnabled = true;
  EXPECT_EQ(outcome(explain(input, DB_EXPLAIN_RUN)), outcome(walked));
}

// Otherwise the comparison above could run the same SQL twice.
TEST(PushDownSwitch, ChangesExecutedSql) {
  constexpr int enough = 5;
  int differ = 0;
  for (const std::string& name : caseNames()) {
    const Case input = readCase(name);
    ulo::odb::pushDownEnabled = false;
    const std::string walked = explain(input, DB_EXPLAIN_SQL | DB_EXPLAIN_RUN);
    ulo::odb::pushDownEnabled = true;
    differ += explain(input, DB_EXPLAIN_SQL | DB_EXPLAIN_RUN) != walked ? 1 : 0;
    if (differ == enough)
      break;
  }
  EXPECT_EQ(differ, enough);
}

INSTANTIATE_TEST_SUITE_P(Odb, Golden, testing::ValuesIn(caseNames()),
                         [](const auto& info) { return info.param; });

}  // namespace
