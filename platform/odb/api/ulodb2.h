/* The embedded database: tables, statements and scripts in one file of the data directory.
 *
 * Texts come in two languages: SQL-like statements, and scripts, which begin with "sml:". Every
 * operation that takes a text takes either. A text is a printf template: %s puts a text in, %d,
 * %i, %u, %ld, %li and %lu a number (at most 32 bits of it), %% a percent sign; other conversions
 * are an error. ":0", ":1", ... are the parameters of the parameter block.
 *
 * Each statement and each script does all of its work or none. Within a transaction it joins it.
 * The database is one per thread: stores of one thread share it, threads have their own. A thread
 * that ends closes what it has opened; an open transaction is undone. Parameter blocks and cursors
 * belong to the thread that made them.
 *
 * A process must not fork while the database is open and go on in the child: there every call
 * fails with DB_NOT_OPEN, except DB_Close, which succeeds and leaves the parent's database and
 * locks alone. A child that runs another program is not affected; neither is a child of a process
 * that had closed the database in all of its threads.
 *
 * No operation throws. All that return int log why they fail, with these exceptions: DB_BeginRead,
 * DB_EndRead, DB_BeginWrite, DB_EndWrite and DB_CSC_MoveNext don't log, and DB_Explain passes the
 * reason to `line`.
 *
 * Each change of a row of the task table has one entry in the journal of changes
 * (change_journal.h), committed or discarded together with it.
 */
#pragma once

#include "export.h"

#if defined(__GNUC__)
#define DB_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define DB_PRINTF(text, first)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Results of all operations that return int and say nothing else. */
enum DB_Result {
  DB_OK = 0,
  DB_ERROR = 1,         /* none of the others */
  DB_BAD_ARGUMENT = 2,  /* a null pointer, an index out of range, an unknown mode or database */
  DB_SYNTAX = 3,        /* the text is not of the language; the log says where and why */
  DB_UNKNOWN_NAME = 4,  /* the text names a table, index or column that is not there */
  DB_BAD_PARAMETER = 5, /* a parameter of the text is not bound, or there is no block */
  DB_BAD_TYPE = 6,      /* a value of another type than its place wants */
  DB_CONSTRAINT = 7,    /* the table exists, a key is taken, the UIDs are used up */
  DB_BUSY = 8,          /* another process kept the database locked for longer than we wait */
  DB_IO = 9,            /* the file can't be read or written */
  DB_NO_MEMORY = 10,    /* memory of this process */
  DB_CORRUPT = 11,      /* the file is no database, or damaged */
  DB_FULL = 12,         /* the disk, the user's quota of it or the database is full */
  DB_NOT_OPEN = 13,     /* this thread has not opened the database, or the process was forked */
  DB_TRANSACTION = 14,  /* a transaction is open already, or none is */
  DB_LIMIT = 15,        /* one of the limits below was reached */
  DB_END = 16           /* there is no further row */
};

/* Limits. What goes beyond is refused with DB_LIMIT and leaves everything as it was. */
enum DB_Limit {
  DB_MAX_TEXT = 65536,          /* bytes of a text after formatting; numbers count as two each */
  DB_MAX_NESTING = 64,          /* blocks and parentheses inside one another */
  DB_MAX_PARAMETERS = 256,      /* parameters of a block */
  DB_MAX_COLUMNS = 64,          /* columns of a table or a buffer schema */
  DB_MAX_VARIABLES = 64,        /* variables of a script */
  DB_MAX_NAME = 128,            /* bytes of a name */
  DB_MAX_ROWS = 4194304,        /* rows of a result */
  DB_MAX_LOOP_PASSES = 16777216 /* passes through all loops of one run of a script; rows that the
                                   database leaves out, counts or deletes by itself are none */
};

typedef struct DB_ParamBlock* DB_PARAM;
typedef struct DB_ResultCursor* DB_CURSOR;

/* Opens database number `database` (1 is the store's) for this thread; each successful call wants
 * a DB_Close. On a database that nobody has filled yet it waits for, and holds, the right to fill
 * it until rows are committed: two programs that start at once don't both create its tables. Tables
 * without any row, left by a program that died in between, are dropped first. The transaction that
 * commits the first rows is all or nothing: if one of its texts fails, so does its commit, whether
 * or not the caller examined the text's result, and the database refuses to be written until it is
 * opened again. */
ULO_EXPORT int DB_Open(int database);
/* The last close ends an open transaction without keeping its changes. */
ULO_EXPORT int DB_Close(void);

/* Begins a transaction that may write. mode: 0. A transaction within a transaction is refused and
 * changes nothing. */
ULO_EXPORT int DB_BeginTransaction(int mode);
/* Unless it returns DB_OK, nothing is kept. Each script inside the transaction that changed
 * something has already written it to the disk and made room for the commit, so a full disk is
 * normally the script's result and not the commit's. Wakes programs that watch the file. */
ULO_EXPORT int DB_CommitTransaction(void);
/* Without a transaction: DB_TRANSACTION, and nothing else happens. */
ULO_EXPORT int DB_AbortTransaction(void);

/* Until the matching DB_EndRead all that this thread reads shows the database in one state, and
 * many short queries cost less. They nest; within a transaction they change nothing. Meanwhile
 * DB_BeginTransaction and texts that write are refused with DB_TRANSACTION. Nothing is logged. */
ULO_EXPORT int DB_BeginRead(void);
/* Without a DB_BeginRead: DB_TRANSACTION, and nothing else happens. */
ULO_EXPORT int DB_EndRead(void);

/* Until the matching DB_EndWrite no other program and no other thread writes, and what this thread
 * writes is one transaction. Blocks like DB_BeginTransaction. Calls nest: within a DB_BeginWrite or
 * DB_BeginTransaction the call joins the open transaction, whose end alone decides what is kept.
 * DB_CommitTransaction and DB_AbortTransaction do not end a transaction that DB_BeginWrite began.
 * Fails with DB_TRANSACTION between DB_BeginRead and DB_EndRead, and if the database has already
 * discarded the open transaction. Logs nothing. */
ULO_EXPORT int DB_BeginWrite(void);
/* The outermost call commits if `keep` is not 0, and otherwise discards what was written. Unless it
 * returns DB_OK, nothing is kept. An inner call with `keep` returns DB_TRANSACTION if the database
 * has already discarded the transaction. Without a DB_BeginWrite: DB_TRANSACTION. Logs nothing. */
ULO_EXPORT int DB_EndWrite(int keep);

/* Runs a text. What it puts into its result buffer is dropped. */
ULO_EXPORT int DB_Exec(const char* text, ...) DB_PRINTF(1, 2);
/* The same with parameters. A parameter that the text doesn't use is fine. A null block makes it
 * fail. */
ULO_EXPORT int DB_ExecWithParam(DB_PARAM block, const char* text, ...) DB_PRINTF(2, 3);
/* Runs a text and gives its result buffer, standing on the first row. On failure *cursor is null.
 */
ULO_EXPORT int DB_Query(DB_CURSOR* cursor, const char* text, ...) DB_PRINTF(2, 3);
ULO_EXPORT int DB_QueryWithParam(DB_CURSOR* cursor, DB_PARAM block, const char* text, ...)
    DB_PRINTF(3, 4);

/* This thread's tag: what its last successful script set with set_session_tag, or the UID of its
 * last successful insert that ended in returnuid. 0 at the start. */
ULO_EXPORT int DB_GetTag(void);

/* A block of `count` parameters, none bound. Null when `count` is not from 1 to DB_MAX_PARAMETERS,
 * or memory is short. */
ULO_EXPORT DB_PARAM DB_PARAM_Open(int count);
ULO_EXPORT int DB_PARAM_Close(DB_PARAM block);
ULO_EXPORT int DB_PARAM_BindInteger(DB_PARAM block, int index, int value);
/* Copies a zero-terminated text of 16-bit units whose two bytes are exchanged. Null binds the null
 * value. */
ULO_EXPORT int DB_PARAM_BindUnicode(DB_PARAM block, int index, const unsigned short* units);
/* Copies a zero-terminated text of bytes, meant to be UTF-8. Null binds the null value. */
ULO_EXPORT int DB_PARAM_BindChar(DB_PARAM block, int index, const char* utf8);

/* Fields of the current row, by the order of the columns in the buffer's schema. A row or column
 * that is not there, and a null, gives 0, false or null. So does a text whose conversion to the
 * other form finds no memory, which is logged. */
ULO_EXPORT int DB_CSC_GetFieldAsInteger(DB_CURSOR cursor, int column);
ULO_EXPORT int DB_CSC_GetFieldAsBool(DB_CURSOR cursor, int column);
/* Zero-terminated units in the machine's byte order. Valid until the cursor is closed. */
ULO_EXPORT const unsigned short* DB_CSC_GetFieldAsUnicode(DB_CURSOR cursor, int column);
/* Zero-terminated bytes. Valid until the cursor is closed. */
ULO_EXPORT const char* DB_CSC_GetFieldAsChar(DB_CURSOR cursor, int column);
/* DB_OK when the cursor stands on a row afterwards, DB_END when there was no further one. */
ULO_EXPORT int DB_CSC_MoveNext(DB_CURSOR cursor);
/* 1 behind the last row (at once on an empty buffer) and for a null cursor, else 0. */
ULO_EXPORT int DB_CSC_Eof(DB_CURSOR cursor);
/* Closing null does nothing. */
ULO_EXPORT int DB_CSC_Close(DB_CURSOR cursor);

/* Why the last operation of this thread that failed did so, for the user of a program. Never null;
 * empty if none failed. Valid until the next operation of the thread. */
ULO_EXPORT const char* DB_LastFailure(void);

/* Tools for people. A `line` that throws ends them with DB_ERROR: no further line follows, and what
 * was running is undone. */

enum DB_ExplainWhat {
  DB_EXPLAIN_TOKENS = 1, /* the words of the text with their places */
  DB_EXPLAIN_TREE = 2,   /* the checked tree */
  DB_EXPLAIN_SQL = 4,    /* the SQL that each cursor leads to */
  DB_EXPLAIN_RUN = 8     /* run it: the SQL as it happened, with its values, and the result rows */
};
/* Explains a text, taken as it stands and not as a template. Gives each line to `line`. What is
 * wrong with the text is a line too: "line L, column C: ...". Needs an open database. `block` may
 * be null where the text has no parameters or is not run. */
ULO_EXPORT int DB_Explain(const char* text, int what, DB_PARAM block,
                          void (*line)(void* context, const char* utf8), void* context);
/* Checks the file's structure. Gives each defect to `line`; none and DB_OK means it is sound. */
ULO_EXPORT int DB_CheckFile(void (*line)(void* context, const char* utf8), void* context);

#ifdef __cplusplus
}
#endif
