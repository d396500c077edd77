// Random scripts on random tables return the same rows whether their loops pass the conditions to
// SQLite or walk.

#include "machine/executable.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <random>

namespace {

class PushDown : public testing::TestWithParam<int> {
protected:
  void SetUp() override {
    random_.seed(static_cast<unsigned>(GetParam()));
    ASSERT_EQ(DB_Open(1), DB_OK);
    for (const char* statement :
         {"create table t (UID integer auto, a integer, b integer, f bool, name varchar, "
          "title unicode)",
          "create index ia on t (a)", "create index iab on t (a, b, UID desc)",
          "create index ibd on t (b desc)"})
      ASSERT_EQ(DB_Exec("%s", statement), DB_OK);
    const auto rows = static_cast<int>(random_() % 40);
    for (int i = 0; i < rows; ++i)
      ASSERT_EQ(DB_Exec("insert into t (a, b, f, name, title) values (%s, %s, %s, 'n%d', %s)",
                        value().c_str(), value().c_str(), random_() % 2 == 0 ? "true" : "false", i,
                        any(titles).c_str()),
                DB_OK);
    block_ = DB_PARAM_Open(6);
    DB_PARAM_BindInteger(block_, 0, 2);
    DB_PARAM_BindInteger(block_, 1, -1);
    DB_PARAM_BindChar(block_, 2, nullptr);
    DB_PARAM_BindChar(block_, 3, "2");  // a text, which cannot be compared with numbers
    const unsigned short mark[] = {0xFFFE, 0x6100, 0};  // U+FEFF and "a"
    DB_PARAM_BindUnicode(block_, 4, mark);
    DB_PARAM_BindChar(block_, 5, "b");
  }
  void TearDown() override {
    ulo::odb::pushDownEnabled = true;
    DB_PARAM_Close(block_);
    DB_Close();
  }

  std::string any(const std::vector<std::string>& of) { return of[random_() % of.size()]; }
  std::string value() { return any({"get_null_varchar()", "1", "2", "3", "4"}); }

  // The first begins with what SQLite takes for a byte order mark.
  const std::vector<std::string> titles = {
      "'\uFEFFab'", "'ab'", "'ba'", "'\u00C4b'", "''", "get_null_varchar()", "'\u6162\u6364'"};

  std::string containment() {
    const std::string text = "$c->get_field('" + any({"title", "title", "title", "name"}) + "')";
    // With its bytes in another order, the last is part of the last title.
    const std::string part = any({"'b'", "'a'", "'ab'", "''", "'n1'", ":2", ":3", ":4", ":5",
                                  random_() % 20 == 0 ? ":0" : "'\u00C4'", "$c->get_field('title')",
                                  "'\u6463'", "'\u6461'"});
    return random_() % 8 == 0 ? "contains(" + part + ", " + text + ")"
                              : "contains(" + text + ", " + part + ")";
  }
  std::string comparison() {
    if (random_() % 3 == 0)
      return containment();
    const std::string field = "$c->get_field('" + any({"a", "b", "UID", "f"}) + "')";
    const std::string constant = any(
        {"1", "2", "3", ":0", ":0", ":1", ":2", "true", "$v", random_() % 20 == 0 ? ":3" : "4"});
    const std::string op = any({" == ", " != ", " < ", " <= ", " > ", " >= "});
    return random_() % 4 == 0 ? constant + op + field : field + op + constant;
  }
  std::string condition() {
    std::string text = comparison();
    const auto more = random_() % 3;
    for (unsigned i = 0; i < more; ++i) {
      text += any({" && ", " && ", " || "}) + comparison();
      if (random_() % 4 == 0)
        text = "(" + text + ")";
    }
    return text;
  }
  std::string puts() {
    std::string text;
    for (const char* column : {"a", "b", "UID"})
      if (random_() % 4 != 0)
        text += std::string("buffer_put(") + (column == std::string("UID") ? "u" : column) +
                ", $c->get_field('" + column + "'));";
    return text + any({"buffer_move_next();", "buffer_put(n, $n);buffer_move_next();"});
  }

  // Returns a script with one or two typical loops.
  std::string script() {
    std::string text = "sml:declare schema s (a integer, b integer, u integer, n integer);"
                       "declare buffer schema s;int $n = 0;int $v = 2;bool $t = true;cursor $c = "
                       "open_cursor('" +
                       any({"t", "ia", "iab", "ibd"}) + "');";
    const std::string count = "$n = $n + 1;";
    switch (random_() % 6) {
    case 5:  // a condition on another cursor's row
      text += "cursor $d = open_cursor('t');$d->move_next();while($c->move_next()){if("
              "$d->get_field('a') == " +
              value() + any({"", " && " + comparison()}) + "){" + puts() + "$d->move_next();};};";
      break;
    case 0:
      text += "while($c->move_next()){if(" + condition() + "){" +
              any({count, puts(), puts() + count}) + "};};";
      break;
    case 1:
      text += "while($c->move_next()){" + any({count, puts(), puts() + count}) + "};";
      break;
    case 2:  // part of the rows before the loop
      text += "$c->move_next();while($c->move_next()){if(" + condition() + "){" + puts() + "};};";
      break;
    default:  // a page
      text += "tuple $k = $c->new_empty_key_tuple();$k->set_field(0, " + value() +
              ");if($c->find($k)){while($t && $n < " + any({"1", "3", "100"}) + "){if(" +
              condition() + "){" + puts() + count + "};$t = $c->move_next();};};";
      text += any({"", "if($t){buffer_put(n, 77);};", "buffer_put(a, $c->get_field('a'));",
                   "if($c->find($k) == false){buffer_put(n, 5);};"});
    }
    return text + "buffer_put(n, $n);";
  }

  std::mt19937 random_;
  DB_PARAM block_ = nullptr;
  DataDirectory directory_;
};

TEST_P(PushDown, ReturnsSameRows) {
  constexpr int scripts = 60;
  int succeeded = 0;
  for (int i = 0; i < scripts; ++i) {
    const std::string text = script();
    ulo::odb::pushDownEnabled = false;
    const std::vector<std::string> walked = rowsOf(text, 4, block_);
    ulo::odb::pushDownEnabled = true;
    EXPECT_EQ(rowsOf(text, 4, block_), walked) << text;
    succeeded += !walked.empty() && walked[0].rfind("error ", 0) != 0 ? 1 : 0;
  }
  // Scripts that fail both ways prove nothing.
  EXPECT_GT(succeeded, scripts / 2);
}

INSTANTIATE_TEST_SUITE_P(Odb, PushDown, testing::Range(1, 41));

}  // namespace
