// The C interface: results, tags, parameters, buffers, transactions, texts.

#include "log_capture.h"
#include "task_tables.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <cstdint>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Units = std::vector<unsigned short>;

const std::string allUids = "sml:declare schema s (uid integer);declare buffer schema s;"
                            "cursor $c=open_cursor('task_table_task');while($c->move_next()){"
                            "buffer_put(uid, $c->get_field('UID'));buffer_move_next();};";
const std::string oneRow = "sml:declare schema s (a integer, b bool, c varchar);"
                           "declare buffer schema s;";

class Odb : public testing::Test {
protected:
  void SetUp() override {
    ASSERT_EQ(DB_Open(1), DB_OK);
    createTaskTables();
  }
  void TearDown() override { DB_Close(); }

  // Adds a row with this priority. Returns its UID, or 0 on failure.
  static int add(int priority) {
    return DB_Exec("insert into task_table_task (priority) values (%d) returnuid", priority) ==
                   DB_OK
               ? DB_GetTag()
               : 0;
  }

  DataDirectory directory_;
};

// Results, tags, numbers

TEST_F(Odb, UidsAreNeverReused) {
  EXPECT_EQ(add(1), 1);
  EXPECT_EQ(add(1), 2);
  ASSERT_EQ(
      DB_Exec("sml:cursor $c=open_cursor('task_table_task');while($c->move_next()){$c->del();};"),
      DB_OK);
  EXPECT_EQ(add(1), 3);
  ASSERT_EQ(
      DB_Exec("sml:cursor $c=open_cursor('task_table_task');while($c->move_next()){$c->del();};"),
      DB_OK);
  DB_Close();
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(add(1), 4);
}

TEST_F(Odb, TagChangesOnlyOnSuccess) {
  ASSERT_EQ(DB_Exec("sml:set_session_tag(42);"), DB_OK);
  EXPECT_EQ(DB_GetTag(), 42);
  ASSERT_EQ(DB_Exec("insert into task_table_task (priority) values (1)"), DB_OK);
  EXPECT_EQ(DB_GetTag(), 42) << "an insert without returnuid must not change it";
  EXPECT_EQ(DB_Exec("sml:set_session_tag(7); cursor $c=open_cursor('task_table_task'); $c->del();"),
            DB_ERROR);
  EXPECT_EQ(DB_GetTag(), 42) << "a failed script must not change it";
  EXPECT_EQ(add(1), 2);
  EXPECT_EQ(DB_GetTag(), 2);
}

TEST_F(Odb, TemplateNumbersAreNotPartOfProgram) {
  const char* text = "sml:declare schema s (a integer, b integer);declare buffer schema s;"
                     "buffer_put(a, %d);buffer_put(b, %u);";
  for (const int number : {1, -5, INT32_MAX}) {
    DB_CURSOR cursor = nullptr;
    ASSERT_EQ(DB_Query(&cursor, text, number, 0xFFFFFFFFU), DB_OK);
    EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, 0), number);
    EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, 1), -1) << "the 32 bits must not change";
    DB_CSC_Close(cursor);
  }
}

TEST_F(Odb, ConvertsTemplateArguments) {
  const char* text = "sml:declare schema s (a integer, c varchar);declare buffer schema s;"
                     "buffer_put(a, %ld);buffer_put(c, '%s %d %lu %%');";
  DB_CURSOR cursor = nullptr;
  ASSERT_EQ(DB_Query(&cursor, text, -7L, "it''s", -3, 8UL), DB_OK);
  EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, 0), -7);
  EXPECT_STREQ(DB_CSC_GetFieldAsChar(cursor, 1), "it's -3 8 %");
  DB_CSC_Close(cursor);
}

TEST_F(Odb, RejectsUnknownConversions) {
  LogCapture log;
  EXPECT_EQ(DB_Exec("sml:int $i = %x;", 5), DB_SYNTAX);
  // Not literals, because the compiler would reject these two.
  const std::string unfinished = "sml:int $i = 5;%";
  EXPECT_EQ(DB_Exec(unfinished.c_str(), 0), DB_SYNTAX);
  const std::string text = "%s";
  EXPECT_EQ(DB_Exec(text.c_str(), static_cast<const char*>(nullptr)), DB_BAD_ARGUMENT);
  EXPECT_THAT(log.text(), HasSubstr("a conversion other than"));
}

TEST_F(Odb, CompileErrorsAreLoggedWithPosition) {
  LogCapture log;
  EXPECT_EQ(DB_Exec("sml:\n  $c->del();"), DB_UNKNOWN_NAME);
  EXPECT_EQ(log.withoutLines(),
            "(platform/odb/api/ulodb2.cpp)line 2, column 3: no variable $c is declared here");
}

TEST_F(Odb, RuntimeErrorsAreLoggedWithPosition) {
  LogCapture log;
  EXPECT_EQ(DB_Exec("sml:cursor $c=open_cursor('task_table_task');\nif (true) {\n  $c->del();\n}"),
            DB_ERROR);
  EXPECT_THAT(log.text(), HasSubstr("line 3, column 7: del wants a current row"));
}

// Parameters

TEST_F(Odb, OnlyUsedParametersMustBeBound) {
  DB_PARAM block = DB_PARAM_Open(3);
  ASSERT_EQ(DB_PARAM_BindInteger(block, 0, 5), DB_OK);
  ASSERT_EQ(DB_PARAM_BindInteger(block, 2, 9), DB_OK);
  EXPECT_THAT(rowsOf(oneRow + "buffer_put(a, :0);", 1, block), ElementsAre("5"));
  EXPECT_THAT(rowsOf(oneRow + "buffer_put(a, :1);", 1, block), ElementsAre("error 5"));
  EXPECT_THAT(rowsOf(oneRow + "buffer_put(a, :3);", 1, block), ElementsAre("error 5"));
  EXPECT_EQ(DB_PARAM_Close(block), DB_OK);
}

TEST_F(Odb, BindingRejectsInvalidIndexAndNullBlock) {
  DB_PARAM block = DB_PARAM_Open(1);
  EXPECT_EQ(DB_PARAM_BindInteger(block, 1, 5), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_PARAM_BindInteger(block, -1, 5), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_PARAM_BindInteger(nullptr, 0, 5), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_PARAM_BindUnicode(nullptr, 0, nullptr), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_PARAM_BindChar(nullptr, 0, "x"), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_PARAM_Close(block), DB_OK);
  EXPECT_EQ(DB_PARAM_Close(nullptr), DB_OK);
}

TEST_F(Odb, TextFailsWithNullBlock) {
  DB_CURSOR cursor = nullptr;
  EXPECT_EQ(DB_QueryWithParam(&cursor, nullptr, "%s", allUids.c_str()), DB_BAD_PARAMETER);
  EXPECT_EQ(cursor, nullptr);
  EXPECT_EQ(DB_ExecWithParam(nullptr, "insert into task_table_task (priority) values (1)"),
            DB_BAD_PARAMETER);
  EXPECT_THAT(rowsOf(allUids, 1), IsEmpty());
}

// Cursors over results

TEST_F(Odb, FailedQueryReturnsNullCursor) {
  auto* cursor = reinterpret_cast<DB_CURSOR>(&directory_);
  EXPECT_EQ(DB_Query(&cursor, "sml:nonsense"), DB_SYNTAX);
  EXPECT_EQ(cursor, nullptr);
  EXPECT_EQ(DB_CSC_Close(cursor), DB_OK);
  EXPECT_EQ(DB_CSC_Eof(nullptr), 1);
  EXPECT_EQ(DB_CSC_GetFieldAsInteger(nullptr, 0), 0);
  EXPECT_EQ(DB_Query(nullptr, "%s", allUids.c_str()), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_Exec(nullptr), DB_BAD_ARGUMENT);
}

TEST_F(Odb, EmptyBufferStartsAtEnd) {
  DB_CURSOR cursor = nullptr;
  ASSERT_EQ(DB_Query(&cursor, "%s", oneRow.c_str()), DB_OK);
  EXPECT_EQ(DB_CSC_Eof(cursor), 1);
  EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, 0), 0);
  EXPECT_EQ(DB_CSC_GetFieldAsBool(cursor, 1), 0);
  EXPECT_EQ(DB_CSC_GetFieldAsChar(cursor, 2), nullptr);
  EXPECT_EQ(DB_CSC_GetFieldAsUnicode(cursor, 2), nullptr);
  EXPECT_EQ(DB_CSC_MoveNext(cursor), DB_END);
  DB_CSC_Close(cursor);
}

TEST_F(Odb, SplitsValuesIntoRows) {
  // Putting a column again starts the next row. Ending a row without values does nothing. A row
  // that is still open at the end counts.
  EXPECT_THAT(rowsOf(oneRow + "buffer_move_next();buffer_put(a, 1);buffer_put(b, true);"
                              "buffer_put(a, 2);buffer_move_next();buffer_move_next();"
                              "buffer_put(b, true);",
                     2),
              ElementsAre("1|1", "2|0", "0|1"));
}

TEST_F(Odb, MovingPastLastRowReturnsEnd) {
  DB_CURSOR cursor = nullptr;
  ASSERT_EQ(DB_Query(&cursor, "%sbuffer_put(a, 1);buffer_put(a, 2);", oneRow.c_str()), DB_OK);
  EXPECT_EQ(DB_CSC_MoveNext(cursor), DB_OK);
  EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, 0), 2);
  EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, 3), 0) << "a column that does not exist";
  EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, -1), 0);
  EXPECT_EQ(DB_CSC_MoveNext(cursor), DB_END);
  EXPECT_EQ(DB_CSC_Eof(cursor), 1);
  EXPECT_EQ(DB_CSC_MoveNext(cursor), DB_END);
  DB_CSC_Close(cursor);
}

TEST_F(Odb, TextsAreAvailableInBothEncodings) {
  DB_CURSOR cursor = nullptr;
  ASSERT_EQ(DB_Query(&cursor, "%sbuffer_put(c, 'Käse');buffer_put(a, 3);", oneRow.c_str()), DB_OK);
  EXPECT_STREQ(DB_CSC_GetFieldAsChar(cursor, 2), "Käse");
  const unsigned short* units = DB_CSC_GetFieldAsUnicode(cursor, 2);
  EXPECT_EQ(Units(units, units + 5), (Units{'K', 0xE4, 's', 'e', 0}));
  EXPECT_EQ(DB_CSC_GetFieldAsChar(cursor, 0), nullptr) << "a number is not a text";
  EXPECT_EQ(DB_CSC_GetFieldAsInteger(cursor, 2), 0) << "a text is not a number";
  DB_CSC_Close(cursor);
}

// Languages

TEST_F(Odb, AllFourOperationsAcceptBothLanguages) {
  const char* insert = "insert into task_table_task (priority) values (1)";
  DB_PARAM block = DB_PARAM_Open(1);
  DB_CURSOR cursor = nullptr;
  EXPECT_EQ(DB_Exec("%s", insert), DB_OK);
  EXPECT_EQ(DB_ExecWithParam(block, "%s", insert), DB_OK);
  EXPECT_EQ(DB_Query(&cursor, "%s", insert), DB_OK);
  EXPECT_EQ(DB_CSC_Eof(cursor), 1);
  DB_CSC_Close(cursor);
  EXPECT_EQ(DB_QueryWithParam(&cursor, block, "%s", insert), DB_OK);
  DB_CSC_Close(cursor);
  EXPECT_EQ(DB_Exec("%s", allUids.c_str()), DB_OK);
  EXPECT_EQ(DB_ExecWithParam(block, "%s", allUids.c_str()), DB_OK);
  EXPECT_THAT(rowsOf(allUids, 1), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(rowsOf(allUids, 1, block), ElementsAre("1", "2", "3", "4"));
  DB_PARAM_Close(block);
}

TEST_F(Odb, TableExistenceIsCheckedAtRunTime) {
  const std::string text = "sml:declare schema s (there bool);declare buffer schema s;"
                           "buffer_put(there, check_table_exist('main.later'));";
  EXPECT_THAT(rowsOf(text, 1), ElementsAre("0"));
  ASSERT_EQ(DB_Exec("create table later (UID integer auto)"), DB_OK);
  EXPECT_THAT(rowsOf(text, 1), ElementsAre("1"));
}

// Transactions

TEST_F(Odb, TransactionsDoNotNest) {
  EXPECT_EQ(DB_AbortTransaction(), DB_TRANSACTION);
  EXPECT_EQ(DB_CommitTransaction(), DB_TRANSACTION);
  EXPECT_EQ(DB_BeginTransaction(1), DB_BAD_ARGUMENT);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  add(1);
  EXPECT_EQ(DB_BeginTransaction(0), DB_TRANSACTION);
  EXPECT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_THAT(rowsOf(allUids, 1), ElementsAre("1"));
}

TEST_F(Odb, AbortWithoutTransactionKeepsReasonOfLastFailure) {
  ASSERT_EQ(DB_Exec("nonsense"), DB_SYNTAX);
  const std::string reason = DB_LastFailure();
  const unsigned int failures = DB_FailureCount();
  EXPECT_EQ(DB_AbortTransaction(), DB_TRANSACTION);
  EXPECT_EQ(DB_LastFailure(), reason);
  EXPECT_EQ(DB_LastResult(), DB_SYNTAX);
  EXPECT_EQ(DB_FailureCount(), failures);
}

TEST_F(Odb, AbortRollsBackRowsAndTables) {
  add(1);
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  add(2);
  ASSERT_EQ(DB_Exec("create table other (UID integer auto)"), DB_OK);
  ASSERT_EQ(DB_Exec("sml:cursor $c=open_cursor('other');"), DB_OK);
  EXPECT_EQ(DB_AbortTransaction(), DB_OK);
  EXPECT_THAT(rowsOf(allUids, 1), ElementsAre("1"));
  EXPECT_EQ(DB_Exec("sml:cursor $c=open_cursor('other');"), DB_UNKNOWN_NAME);
}

TEST_F(Odb, CloseRollsBackTransaction) {
  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  add(1);
  ASSERT_EQ(DB_Close(), DB_OK);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_THAT(rowsOf(allUids, 1), IsEmpty());
  EXPECT_EQ(DB_AbortTransaction(), DB_TRANSACTION);
}

TEST_F(Odb, FailedScriptChangesNothing) {
  add(1);
  add(2);
  const std::string text = "sml:cursor $c=open_cursor('task_table_task');"
                           "while($c->move_next()){$c->del();};$c->del();";
  EXPECT_EQ(DB_Exec("%s", text.c_str()), DB_ERROR);
  EXPECT_THAT(rowsOf(allUids, 1), ElementsAre("1", "2"));

  ASSERT_EQ(DB_BeginTransaction(0), DB_OK);
  add(3);
  EXPECT_EQ(DB_Exec("%s", text.c_str()), DB_ERROR);
  EXPECT_EQ(DB_CommitTransaction(), DB_OK);
  EXPECT_THAT(rowsOf(allUids, 1), ElementsAre("1", "2", "3")) << "the transaction must continue";
}

TEST(OdbOpening, AllOperationsNeedOpenDatabase) {
  const DataDirectory directory;
  DB_CURSOR cursor = nullptr;
  EXPECT_EQ(DB_Exec("sml:"), DB_NOT_OPEN);
  EXPECT_EQ(DB_Query(&cursor, "sml:"), DB_NOT_OPEN);
  EXPECT_EQ(DB_BeginTransaction(0), DB_NOT_OPEN);
  EXPECT_EQ(DB_AbortTransaction(), DB_NOT_OPEN);
  EXPECT_EQ(DB_CommitTransaction(), DB_NOT_OPEN);
  EXPECT_EQ(DB_Close(), DB_NOT_OPEN);
  EXPECT_EQ(DB_Open(2), DB_BAD_ARGUMENT);
}

TEST(OdbOpening, OpensAreCounted) {
  const DataDirectory directory;
  ASSERT_EQ(DB_Open(1), DB_OK);
  ASSERT_EQ(DB_Open(1), DB_OK);
  EXPECT_EQ(DB_Open(2), DB_BAD_ARGUMENT);
  EXPECT_EQ(DB_Close(), DB_OK);
  EXPECT_EQ(DB_Exec("sml:"), DB_OK);
  EXPECT_EQ(DB_Close(), DB_OK);
  EXPECT_EQ(DB_Exec("sml:"), DB_NOT_OPEN);
}

// Texts are stored and read unit by unit or byte by byte.

class OdbUnits : public Odb, public testing::WithParamInterface<Units> {};

TEST_P(OdbUnits, AreReadBackUnchanged) {
  Units exchanged;
  for (const unsigned short unit : GetParam())
    exchanged.push_back(static_cast<unsigned short>((unit >> 8U) | (unit << 8U)));
  exchanged.push_back(0);
  DB_PARAM block = DB_PARAM_Open(1);
  ASSERT_EQ(DB_PARAM_BindUnicode(block, 0, exchanged.data()), DB_OK);
  ASSERT_EQ(DB_ExecWithParam(block, "insert into task_table_task (summary) values (:0)"), DB_OK);
  DB_PARAM_Close(block);
  DB_CURSOR cursor = nullptr;
  ASSERT_EQ(DB_Query(&cursor, "sml:declare schema s (t unicode);declare buffer schema s;"
                              "cursor $c=open_cursor('task_table_task');$c->move_next();"
                              "buffer_put(t, $c->get_field('summary'));"),
            DB_OK);
  const unsigned short* units = DB_CSC_GetFieldAsUnicode(cursor, 0);
  ASSERT_NE(units, nullptr);
  Units read;
  for (; *units != 0; ++units)
    read.push_back(*units);
  EXPECT_EQ(read, GetParam());
  DB_CSC_Close(cursor);
}

INSTANTIATE_TEST_SUITE_P(Texts, OdbUnits,
                         testing::Values(Units{}, Units{'0', '0', '7'}, Units{'1', 'e', '5'},
                                         Units{' ', 'x', ' '}, Units{0xD83D, 0xDE00}, Units{0xD83D},
                                         Units{0xDE00, 'a'}, Units{'a', 0xD83D}, Units{0xFEFF},
                                         Units{0xFEFF, 'a'}, Units{0xFFFE, 'a'}, Units{0xFFFE},
                                         Units{'a', 0xFEFF, 0xFFFE, 0xFFFF}, Units{0xFFFF},
                                         Units{0x4E2D, 0x6587}, Units{1, 2, 3}, Units(4002, 0x4E2D),
                                         Units(512, 0xDC00)));

class OdbBytes : public Odb, public testing::WithParamInterface<std::string> {};

TEST_P(OdbBytes, AreFoundAndReadBackUnchanged) {
  DB_PARAM block = DB_PARAM_Open(1);
  ASSERT_EQ(DB_PARAM_BindChar(block, 0, GetParam().c_str()), DB_OK);
  ASSERT_EQ(DB_ExecWithParam(block, "insert into task_table_category (name, flag) values (:0, 1)"),
            DB_OK);
  EXPECT_THAT(rowsOf("sml:declare schema s (t varchar);declare buffer schema s;"
                     "cursor $c=open_cursor('task_index_category');"
                     "tuple $k=$c->new_empty_key_tuple();$k->set_field(0, :0);"
                     "if($c->find($k)){buffer_put(t, $c->get_field('name'));};",
                     1, block),
              ElementsAre(GetParam()));
  DB_PARAM_Close(block);
}

INSTANTIATE_TEST_SUITE_P(Texts, OdbBytes,
                         testing::Values("", "007", "K\xC3\xA4se", "\xEF\xBB\xBFx", "\xEF\xBF\xBE",
                                         "\xEF\xBF\xBF", "\xF0\x9F\x98\x80", "\xFF\xFE", "a\xC3",
                                         "\xED\xA0\x80", "\xC0\x80", "\xF4\x90\x80\x80"));

TEST_F(Odb, NullIsNotEmptyText) {
  DB_PARAM block = DB_PARAM_Open(2);
  const unsigned short empty = 0;
  ASSERT_EQ(DB_PARAM_BindUnicode(block, 0, nullptr), DB_OK);
  ASSERT_EQ(DB_PARAM_BindUnicode(block, 1, &empty), DB_OK);
  ASSERT_EQ(DB_ExecWithParam(block, "insert into task_table_task (note, summary) values (:0, :1)"),
            DB_OK);
  DB_PARAM_Close(block);
  DB_CURSOR cursor = nullptr;
  ASSERT_EQ(DB_Query(&cursor, "sml:declare schema s (n unicode, t unicode);declare buffer schema s;"
                              "cursor $c=open_cursor('task_table_task');$c->move_next();"
                              "buffer_put(n, $c->get_field('note'));"
                              "buffer_put(t, $c->get_field('summary'));"),
            DB_OK);
  EXPECT_EQ(DB_CSC_GetFieldAsUnicode(cursor, 0), nullptr);
  ASSERT_NE(DB_CSC_GetFieldAsUnicode(cursor, 1), nullptr);
  EXPECT_EQ(*DB_CSC_GetFieldAsUnicode(cursor, 1), 0);
  DB_CSC_Close(cursor);
}

}  // namespace
