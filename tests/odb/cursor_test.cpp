// Compares cursors with a simple model, a sorted vector of rows: every walk from every position.

#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Cell = std::optional<int>;

struct Row {
  int uid = 0;
  Cell a;
  Cell b;
};

struct KeyPart {
  int column;  // 0 uid, 1 a, 2 b
  bool descending;
};

struct IndexUnderTest {
  const char* name;
  const char* statement;  // null for the table itself
  std::vector<KeyPart> key;
};

const std::vector<IndexUnderTest> indexes = {
    {"t", nullptr, {{0, false}}},
    {"ia", "create index ia on t (a)", {{1, false}}},
    {"iad", "create index iad on t (a desc)", {{1, true}}},
    {"iab", "create index iab on t (a, b)", {{1, false}, {2, false}}},
    {"iabd", "create index iabd on t (a desc, b)", {{1, true}, {2, false}}},
    {"iabu", "create index iabu on t (a, b desc, UID desc)", {{1, false}, {2, true}, {0, true}}},
    {"iu", "create index iu on t (b, UID)", {{2, false}, {0, false}}},
};

Cell cellOf(const Row& row, int column) {
  return column == 0 ? Cell(row.uid) : column == 1 ? row.a : row.b;
}

// Nulls come first, or last with "desc". Rows with the same key are ordered by UID.
bool before(const Row& left, const Row& right, const std::vector<KeyPart>& key) {
  for (const KeyPart& part : key) {
    const Cell x = cellOf(left, part.column);
    const Cell y = cellOf(right, part.column);
    if (x != y)
      return part.descending ? y < x : x < y;
  }
  return left.uid < right.uid;
}

bool sameKey(const Row& left, const Row& right, const std::vector<KeyPart>& key) {
  return std::all_of(key.begin(), key.end(), [&](const KeyPart& part) {
    return cellOf(left, part.column) == cellOf(right, part.column);
  });
}

std::string literal(const Cell& cell) {
  return cell ? std::to_string(*cell) : "get_null_varchar()";
}

std::vector<std::string> uidsOf(const std::vector<Row>& rows) {
  std::vector<std::string> uids;
  for (const Row& row : rows)
    uids.push_back(std::to_string(row.uid));
  return uids;
}

const std::string schema = "sml:declare schema s (uid integer);declare buffer schema s;";
const std::string putUid = "buffer_put(uid, $c->get_field('UID'));buffer_move_next();";

// Returns a script that prepares a find with the first `fields` key columns of `row`.
std::string findText(const IndexUnderTest& index, const Row& row, std::size_t fields) {
  std::string text = schema + "cursor $c=open_cursor('" + index.name +
                     "');tuple $k=$c->new_empty_key_tuple();bool $t=true;";
  for (std::size_t i = 0; i < fields; ++i)
    text += "$k->set_field(" + std::to_string(i) + ", " +
            literal(cellOf(row, index.key[i].column)) + ");";
  return text;
}

class CursorModel : public testing::TestWithParam<int> {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    ASSERT_EQ(DB_Exec("create table t (UID integer auto, a integer, b integer)"), DB_OK);
    for (const IndexUnderTest& index : indexes)
      if (index.statement != nullptr) {
        ASSERT_EQ(DB_Exec("%s", index.statement), DB_OK);
      }
    std::mt19937 random(static_cast<unsigned>(GetParam()));
    const auto cell = [&]() -> Cell {
      const auto value = static_cast<int>(random() % 4);
      return value == 0 ? Cell() : Cell(value);
    };
    for (int i = 0; i < 14; ++i) {
      Row row;
      row.a = cell();
      row.b = cell();
      ASSERT_EQ(DB_Exec("insert into t (a, b) values (%s, %s) returnuid", literal(row.a).c_str(),
                        literal(row.b).c_str()),
                DB_OK);
      row.uid = DB_GetTag();
      rows_.push_back(row);
    }
  }
  void TearDown() override { DB_Close(); }

  [[nodiscard]] std::vector<Row> sorted(const IndexUnderTest& index) const {
    std::vector<Row> result = rows_;
    std::sort(result.begin(), result.end(),
              [&](const Row& x, const Row& y) { return before(x, y, index.key); });
    return result;
  }

  DataDirectory directory_;
  std::vector<Row> rows_;
};

TEST_P(CursorModel, WalksInOrder) {
  for (const IndexUnderTest& index : indexes)
    EXPECT_THAT(rowsOf(schema + "cursor $c=open_cursor('" + index.name +
                           "');while($c->move_next()){" + putUid + "};",
                       1),
                ElementsAreArray(uidsOf(sorted(index))))
        << index.name;
}

TEST_P(CursorModel, ContinuesFromFoundRow) {
  for (const IndexUnderTest& index : indexes)
    for (const Row& start : rows_)
      for (std::size_t fields = 0; fields <= index.key.size(); ++fields) {
        const std::vector<KeyPart> part(index.key.begin(),
                                        index.key.begin() + static_cast<std::ptrdiff_t>(fields));
        std::vector<Row> expected = sorted(index);
        expected.erase(expected.begin(),
                       std::find_if(expected.begin(), expected.end(),
                                    [&](const Row& row) { return sameKey(row, start, part); }));
        EXPECT_THAT(rowsOf(findText(index, start, fields) + "if($c->find($k)){while($t){" + putUid +
                               "$t=$c->move_next();};};",
                           1),
                    ElementsAreArray(uidsOf(expected)))
            << index.name << " from " << start.uid << " by " << fields;
      }
}

TEST_P(CursorModel, StaysWithinKey) {
  for (const IndexUnderTest& index : indexes)
    for (const Row& start : rows_) {
      std::vector<Row> expected;
      for (const Row& row : sorted(index))
        if (sameKey(row, start, index.key))
          expected.push_back(row);
      EXPECT_THAT(rowsOf(findText(index, start, index.key.size()) + "if($c->find($k)){while($t){" +
                             putUid + "$t=$c->move_next_in_dup();};};",
                         1),
                  ElementsAreArray(uidsOf(expected)))
          << index.name << " from " << start.uid;
    }
}

TEST_P(CursorModel, ContinuesAfterKey) {
  // First all rows of the key, then, with move_next, all rows after it.
  for (const IndexUnderTest& index : indexes)
    for (const Row& start : rows_) {
      std::vector<Row> expected = sorted(index);
      expected.erase(expected.begin(),
                     std::find_if(expected.begin(), expected.end(),
                                  [&](const Row& row) { return sameKey(row, start, index.key); }));
      EXPECT_THAT(rowsOf(findText(index, start, index.key.size()) + "if($c->find($k)){while($t){" +
                             putUid + "$t=$c->move_next_in_dup();};while($c->move_next()){" +
                             putUid + "};};",
                         1),
                  ElementsAreArray(uidsOf(expected)))
          << index.name << " from " << start.uid;
    }
}

TEST_P(CursorModel, VisitsDuplicatesOfEachKey) {
  // move_next to the first row of a key, move_next_in_dup through the rest, and so on.
  for (const IndexUnderTest& index : indexes)
    EXPECT_THAT(rowsOf(schema + "cursor $c=open_cursor('" + index.name +
                           "');while($c->move_next()){" + putUid +
                           "while($c->move_next_in_dup()){" + putUid + "};};",
                       1),
                ElementsAreArray(uidsOf(sorted(index))))
        << index.name;
}

TEST_P(CursorModel, ContinuesAfterDeletion) {
  for (const IndexUnderTest& index : indexes)
    for (const Row& start : rows_)
      for (const char* step : {"move_next", "move_next_in_dup"})
        for (const std::size_t fields : {index.key.size(), index.key.size() - 1}) {
          ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
          const std::string forward = std::string("$t=$c->") + step + "();";
          const std::string text =
              findText(index, start, fields) + "if($c->find($k)){while($t){" + putUid;
          const auto kept = rowsOf(text + forward + "};};", 1);
          EXPECT_THAT(rowsOf(text + "$c->del();" + forward + "};};", 1), ElementsAreArray(kept))
              << index.name << " from " << start.uid << " with " << step;
          const auto left = rowsOf(
              schema + "cursor $c=open_cursor('t');while($c->move_next()){" + putUid + "};", 1);
          EXPECT_EQ(left.size() + kept.size(), rows_.size());
          ASSERT_EQ(DB_AbortTransaction(), DB_OK);
        }
}

TEST_P(CursorModel, DeletingWalkVisitsEachRowOnce) {
  for (const IndexUnderTest& index : indexes) {
    ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
    EXPECT_THAT(rowsOf(schema + "cursor $c=open_cursor('" + index.name +
                           "');while($c->move_next()){" + putUid + "$c->del();};",
                       1),
                ElementsAreArray(uidsOf(sorted(index))));
    ASSERT_EQ(DB_AbortTransaction(), DB_OK);
  }
}

TEST_P(CursorModel, WalkThatMovesRowsVisitsEachOnce) {
  // Every update moves the row to a position after the current one.
  for (const IndexUnderTest& index : indexes) {
    ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
    EXPECT_THAT(rowsOf(schema + "int $n=100;cursor $c=open_cursor('" + index.name +
                           "');while($c->move_next()){" + putUid +
                           "tuple $d=$c->get_data_tuple();$d->set_field('a', $n);"
                           "$d->set_field('b', $n);$c->update($d);$n=$n+1;};",
                       1),
                ElementsAreArray(uidsOf(sorted(index))))
        << index.name;
    ASSERT_EQ(DB_AbortTransaction(), DB_OK);
  }
}

INSTANTIATE_TEST_SUITE_P(Odb, CursorModel, testing::Range(1, 7));

class Cursors : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    ASSERT_EQ(DB_Exec("create table t (UID integer auto, a integer, b integer)"), DB_OK);
    ASSERT_EQ(DB_Exec("create index ia on t (a)"), DB_OK);
    for (const int a : {1, 2, 2, 3})
      ASSERT_EQ(DB_Exec("insert into t (a) values (%d)", a), DB_OK);
  }
  void TearDown() override { DB_Close(); }

  DataDirectory directory_;
};

TEST_F(Cursors, StartBeforeFirstRow) {
  EXPECT_THAT(rowsOf(schema + "cursor $c=open_cursor('t');" + putUid +
                         "bool $t=$c->move_next_in_dup();if($t){" + putUid + "};",
                     1),
              ElementsAre("0"))
      << "before the first row, fields are null and there is no key to stay within";
}

TEST_F(Cursors, HaveNoRowAfterFailedFind) {
  EXPECT_THAT(rowsOf(schema +
                         "cursor $c=open_cursor('ia');tuple $k=$c->new_empty_key_tuple();"
                         "$k->set_field(0, 9);$c->move_next();$c->find($k);" +
                         putUid + "while($c->move_next()){" + putUid + "};",
                     1),
              ElementsAre("0"));
}

TEST_F(Cursors, StartOverWhenReopened) {
  EXPECT_THAT(rowsOf(schema + "int $n=0;while($n<2){cursor $c=open_cursor('t');$c->move_next();" +
                         putUid + "$n=$n+1;};",
                     1),
              ElementsAre("1", "1"));
}

TEST_F(Cursors, NewTupleIsAlwaysEmpty) {
  // Without any fields, find returns the first row in order.
  EXPECT_THAT(rowsOf(schema +
                         "int $n=0;cursor $c=open_cursor('ia');while($n<2){"
                         "tuple $k=$c->new_empty_key_tuple();if($n==0){$k->set_field(0, 3);};"
                         "if($c->find($k)){" +
                         putUid + "};$n=$n+1;};",
                     1),
              ElementsAre("4", "1"));
}

TEST_F(Cursors, UpdateWritesAndShowsOnlySetFields) {
  ASSERT_EQ(DB_Exec("sml:cursor $c=open_cursor('t');$c->move_next();"
                    "tuple $d=$c->get_data_tuple();$d->set_field('b', 5);$c->update($d);"),
            DB_OK);
  const std::string both = "sml:declare schema s (a integer, b integer);declare buffer schema s;"
                           "cursor $c=open_cursor('t');$c->move_next();";
  const std::string put = "buffer_put(a, $c->get_field('a'));buffer_put(b, $c->get_field('b'));";
  EXPECT_THAT(rowsOf(both + put, 2), ElementsAre("1|5"));
  EXPECT_THAT(
      rowsOf(both + "tuple $d=$c->get_data_tuple();$d->set_field('a', 8);$c->update($d);" + put, 2),
      ElementsAre("8|5"));
  EXPECT_THAT(rowsOf(both + "tuple $d=$c->get_data_tuple();$c->update($d);" + put, 2),
              ElementsAre("8|5"))
      << "without set fields, nothing is written";
}

TEST_F(Cursors, SeeEachOthersDeletions) {
  EXPECT_THAT(rowsOf(schema +
                         "cursor $c=open_cursor('ia');cursor $d=open_cursor('t');"
                         "while($c->move_next()){" +
                         putUid + "if($d->move_next()){$d->move_next();$d->del();};};",
                     1),
              ElementsAre("1", "3"));
}

TEST_F(Cursors, RecordNumberIsCurrent) {
  EXPECT_THAT(rowsOf("sml:declare schema s (n integer);declare buffer schema s;"
                     "table $t=open_table('main.t');cursor $c=open_cursor('t');"
                     "buffer_put(n, $t->get_record_number());$c->move_next();$c->del();"
                     "buffer_put(n, $t->get_record_number());",
                     1),
              ElementsAre("4", "3"));
}

TEST_F(Cursors, NullParameterFindsNull) {
  ASSERT_EQ(DB_Exec("insert into t (b) values (1)"), DB_OK);
  DB_PARAM block = DB_PARAM_Open(1);
  ASSERT_EQ(DB_PARAM_BindChar(block, 0, nullptr), DB_OK);
  EXPECT_THAT(rowsOf(schema +
                         "cursor $c=open_cursor('ia');tuple $k=$c->new_empty_key_tuple();"
                         "$k->set_field('a', :0);if($c->find($k)){" +
                         putUid + "};",
                     1, block),
              ElementsAre("5"));
  DB_PARAM_Close(block);
}

}  // namespace
