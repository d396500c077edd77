// Cached programs: repeated calls, and stores that are opened again.

#include "base/failure.h"
#include "machine/lru_cache.h"
#include "machine/text_cache.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace {

using ulo::odb::Failure;
using ulo::odb::LruCache;
using ulo::odb::TextCache;

// Returns the first column of the first row of a query.
template <typename... Arguments> int numberOf(const char* text, Arguments... arguments) {
  DB_CURSOR cursor = nullptr;
  EXPECT_EQ(DB_Query(&cursor, text, arguments...), DB_OK);
  const int result = DB_CSC_GetFieldAsInteger(cursor, 0);
  DB_CSC_Close(cursor);
  return result;
}

std::string textOf(const char* text, int number) {
  DB_CURSOR cursor = nullptr;
  EXPECT_EQ(DB_Query(&cursor, text, number), DB_OK);
  const std::string result = DB_CSC_GetFieldAsChar(cursor, 0);
  DB_CSC_Close(cursor);
  return result;
}

class ProgramCache : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
  }
  void TearDown() override { DB_Close(); }

  DataDirectory directory_;
};

TEST(Lru, KeepsMostRecentlyUsed) {
  LruCache<std::string, int> cache(2);
  cache.add("a", 1);
  cache.add("b", 2);
  ASSERT_NE(cache.find("a"), nullptr);
  EXPECT_EQ(cache.add("c", 3), 3);
  EXPECT_EQ(cache.find("b"), nullptr);
  EXPECT_EQ(*cache.find("a"), 1);
  EXPECT_EQ(*cache.find("c"), 3);
  cache.clear();
  EXPECT_EQ(cache.find("a"), nullptr);
}

// The caller's buffer may contain another template at the next call.
TEST_F(ProgramCache, IdentifiesTemplateByContentToo) {
  char text[] = "sml:declare schema s (a integer);declare buffer schema s;buffer_put(a, 10+%d);";
  char& digit = std::strchr(text, '+')[-2];
  EXPECT_EQ(numberOf(text, 5), 15);
  digit = '2';
  EXPECT_EQ(numberOf(text, 5), 25);
  digit = '1';
  EXPECT_EQ(numberOf(text, 7), 17);
}

TEST_F(ProgramCache, TextArgumentsBelongToTheirCall) {
  const char* text = "sml:declare schema s (a integer);declare buffer schema s;"
                     "buffer_put(a, %s);";
  for (int round = 0; round < 2; ++round)
    for (int i = 0; i < 9; ++i)
      EXPECT_EQ(numberOf(text, std::to_string(i).c_str()), i);
}

TEST_F(ProgramCache, SeparatesTextArguments) {
  const char* text = "sml:declare schema s (a integer);declare buffer schema s;"
                     "buffer_put(a, %s - %s);";
  EXPECT_EQ(numberOf(text, "12", "3"), 9);
  EXPECT_EQ(numberOf(text, "1", "23"), -22);
}

// Its value is then part of the text.
TEST_F(ProgramCache, NumberInQuotesBelongsToItsCall) {
  const char* text = "sml:declare schema s (a varchar);declare buffer schema s;"
                     "buffer_put(a, 'number %d');";
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(textOf(text, i), "number " + std::to_string(i));
}

// Quotes in a text argument determine whether the number after it is quoted.
TEST_F(ProgramCache, TextArgumentMayOpenQuotesAroundNumber) {
  const char* text = "sml:declare schema s (a varchar);declare buffer schema s;"
                     "buffer_put(a, %s%d');";
  DB_CURSOR cursor = nullptr;
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(DB_Query(&cursor, text, "'n", i), DB_OK);
    EXPECT_EQ(DB_CSC_GetFieldAsChar(cursor, 0), "n" + std::to_string(i));
    DB_CSC_Close(cursor);
  }
}

TEST_F(ProgramCache, RunsMoreTemplatesThanItKeeps) {
  std::vector<std::string> texts;
  for (int i = 0; i < 600; ++i)
    texts.push_back("sml:declare schema s (a integer);declare buffer schema s;buffer_put(a, " +
                    std::to_string(i) + " + %d);");
  for (int round = 0; round < 2; ++round)
    for (int i = 0; i < 600; ++i)
      ASSERT_EQ(numberOf(texts[static_cast<std::size_t>(i)].c_str(), round), i + round);
}

TEST_F(ProgramCache, InvalidTemplateFailsAtEachCall) {
  // Not a literal, because the compiler would reject it.
  const std::string text = "sml:%s";
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(DB_Exec("sml:%f", 1.0), DB_SYNTAX);
    EXPECT_EQ(DB_Exec(text.c_str(), static_cast<const char*>(nullptr)), DB_BAD_ARGUMENT);
    EXPECT_EQ(DB_Exec("sml:buffer_put(a, %d);", 1), DB_UNKNOWN_NAME);
  }
}

TEST_F(ProgramCache, SeesNewAndChangedTables) {
  const char* count = "sml:declare schema s (n integer);declare buffer schema s;"
                      "table $t=open_table('later');buffer_put(n, $t->get_record_number());";
  EXPECT_EQ(DB_Exec(count), DB_UNKNOWN_NAME);
  ASSERT_EQ(DB_Exec("create table later (UID integer auto, a integer)"), DB_OK);
  EXPECT_EQ(numberOf(count), 0);
  ASSERT_EQ(DB_Exec("insert into later (a) values (1)"), DB_OK);
  EXPECT_EQ(numberOf(count), 1);
}

TEST_F(ProgramCache, SeesTableChangedByAnotherProgram) {
  ASSERT_EQ(DB_Exec("create table later (UID integer auto, a integer)"), DB_OK);
  const char* read = "sml:cursor $c=open_cursor('later');int $i = 0;"
                     "while($c->move_next()){$i = $c->get_field('a');};";
  EXPECT_EQ(DB_Exec(read), DB_OK);
  sqlite3* other = nullptr;
  sqlite3_open((directory_.path() / "tasks.db").c_str(), &other);
  EXPECT_EQ(
      sqlite3_exec(other, "ALTER TABLE later RENAME COLUMN a TO b", nullptr, nullptr, nullptr),
      SQLITE_OK);
  sqlite3_close(other);
  EXPECT_EQ(DB_Exec(read), DB_UNKNOWN_NAME);
}

// Two separate databases in one process.
class Databases {
public:
  explicit Databases(const std::string& sql) {
    for (sqlite3*& database : databases) {
      sqlite3_open(":memory:", &database);
      sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
    }
  }
  Databases(const Databases&) = delete;
  Databases& operator=(const Databases&) = delete;
  ~Databases() {
    for (sqlite3* database : databases)
      sqlite3_close(database);
  }
  sqlite3* databases[2] = {};
};

constexpr char notes[] = "CREATE TABLE \"notes\" (\"UID\" INTEGER PRIMARY KEY AUTOINCREMENT)";
const std::string countNotes = "sml:table $t=open_table('notes');";

TEST(Programs, AreSharedByDatabasesWithSameTables) {
  const Databases both(notes);
  const auto first = TextCache::Programs::of(both.databases[0]);
  EXPECT_EQ(TextCache::Programs::of(both.databases[1]), first);
  const auto program = first->program(countNotes);
  EXPECT_EQ(TextCache::Programs::of(both.databases[1])->program(countNotes), program);

  sqlite3_exec(both.databases[1], "CREATE TABLE more (x)", nullptr, nullptr, nullptr);
  EXPECT_NE(TextCache::Programs::of(both.databases[1]), first);
  EXPECT_EQ(TextCache::Programs::of(both.databases[0]), first);
}

TEST(Programs, AreNotKeptForMissingTables) {
  const Databases both("");
  EXPECT_THROW(static_cast<void>(TextCache::Programs::of(both.databases[0])->program(countNotes)),
               Failure);
  sqlite3_exec(both.databases[0], notes, nullptr, nullptr, nullptr);
  EXPECT_NE(TextCache::Programs::of(both.databases[0])->program(countNotes), nullptr);
}

TEST(Programs, CanBeRequestedBySeveralThreads) {
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread)
    threads.emplace_back([&] {
      const Databases own(notes);
      for (int i = 0; i < 500; ++i) {
        const std::string text = "sml:int $i = " + std::to_string(i % 200) + ";";
        const auto program = TextCache::Programs::of(own.databases[i % 2])->program(text);
        const auto& value = *program->script->body->operands[0]->operands[0];
        wrong += value.number == i % 200 ? 0 : 1;
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
