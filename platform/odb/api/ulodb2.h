/* The embedded database: tables, statements and scripts in one file of the data directory.
 *
 * Texts are written in one of two languages: SQL-like statements, and scripts, which begin with
 * "sml:". Every function that accepts a text accepts both. A text is a printf template: %s inserts
 * a string; %d, %i, %u, %ld, %li and %lu insert a number, truncated to 32 bits; %% inserts a
 * percent sign. Any other conversion is an error. ":0", ":1", ... refer to the parameters of the
 * parameter block.
 *
 * %s inserts the string unchanged, also between quotes: quotes in it are not doubled. Use %s only
 * for strings that you control, such as names of tables, and pass all other values as parameters.
 *
 * Each statement and each script is atomic. Inside a transaction it becomes part of that
 * transaction. Each thread opens the database for itself, and all stores of a thread share that
 * connection. When a thread exits, everything it has opened is closed and an open transaction is
 * rolled back. Parameter blocks and cursors belong to the thread that created them.
 *
 * A process must not fork while the database is open and continue in the child. In the child every
 * call that uses the database fails with DB_NOT_OPEN, except DB_Close, which succeeds and does not
 * touch the parent's database and locks. A child that executes another program is not affected, nor
 * is a child of a process that had closed the database in all of its threads.
 *
 * No function throws. Functions that return int log the reason for a failure, with these
 * exceptions: DB_BeginRead, DB_EndRead, DB_BeginWrite, DB_BeginBulkWrite, DB_EndWrite and
 * DB_CSC_MoveNext do not log, and DB_Explain passes the reason to `line`.
 *
 * Each change of a row of the task table adds one entry to the journal of changes
 * (change_journal.h), which is committed or discarded together with the row.
 */
#pragma once

#include "ulo/export.h"
#include "ulodb2_codes.h"

#if defined(__GNUC__)
#define DB_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define DB_PRINTF(text, first)
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct DB_ParamBlock* DB_PARAM;
typedef struct DB_ResultCursor* DB_CURSOR;

/* Opens database number `database` for this thread. It must be 1, the store's; any other number
 * fails with DB_BAD_ARGUMENT. Each successful call must be matched by a DB_Close. Waits for other
 * programs that are opening or filling the database, currently up to 30 seconds, and then fails
 * with DB_BUSY.
 *
 * If the database has not been filled yet, the call waits for the exclusive right to fill it and
 * keeps that right until rows are committed, so that two programs started at the same time do not
 * both create its tables. Empty tables left by a program that died while creating them are dropped
 * first. The transaction that commits the first rows is all or nothing: if one of its texts fails,
 * so does its commit, whether or not the caller checked the text's result, and the database rejects
 * writes until it is reopened. */
ULO_EXPORT int DB_Open(int database);
/* Ends one DB_Open of this thread. The last one closes the database for the thread and rolls back
 * an open transaction. Cursors and parameter blocks remain valid. */
ULO_EXPORT int DB_Close(void);

/* Begins a write transaction. `mode` must be 0. Waits for other programs and threads that write,
 * currently up to 10 seconds, and then fails with DB_BUSY. Transactions do not nest: fails with
 * DB_TRANSACTION and changes nothing if one is open, or if a read snapshot is (DB_BeginRead). */
ULO_EXPORT int DB_BeginTransaction(int mode);
/* Commits the open transaction. Unless it returns DB_OK, nothing is kept. Each script of the
 * transaction has already written its changes to disk and reserved room for the commit, so a full
 * disk is normally reported by the script and not by the commit. Wakes programs that watch the
 * file. */
ULO_EXPORT int DB_CommitTransaction(void);
/* Rolls back the open transaction. Does nothing and returns DB_TRANSACTION if none is open, which
 * does not count as a failure. */
ULO_EXPORT int DB_AbortTransaction(void);

/* Begins a read snapshot: until the matching DB_EndRead, all reads of this thread see the same
 * state of the database, and many short queries are cheaper. Calls nest, and each needs its
 * DB_EndRead. A call within a transaction begins no snapshot. While a snapshot is open,
 * DB_BeginTransaction, DB_BeginWrite and texts that write fail with DB_TRANSACTION. Logs nothing.
 */
ULO_EXPORT int DB_BeginRead(void);
/* Ends a read snapshot. Returns DB_TRANSACTION if there is no matching DB_BeginRead. Logs nothing.
 */
ULO_EXPORT int DB_EndRead(void);

/* Until the matching DB_EndWrite no other program or thread can write, and everything this thread
 * writes is one transaction. Blocks like DB_BeginTransaction. Calls nest: within a DB_BeginWrite or
 * DB_BeginTransaction the call joins the open transaction, and only the outermost end decides what
 * is kept. DB_CommitTransaction and DB_AbortTransaction do not end a transaction that DB_BeginWrite
 * began. Fails with DB_TRANSACTION between DB_BeginRead and DB_EndRead, and if the database has
 * already discarded the open transaction. Logs nothing. */
ULO_EXPORT int DB_BeginWrite(void);
/* The same for thousands of small changes, such as an import. The data for undoing a single text
 * that fails is kept in memory, which is faster than the usual temporary file. A text that changes
 * many rows needs memory, and time, for them. An inner call is one of DB_BeginWrite. */
ULO_EXPORT int DB_BeginBulkWrite(void);
/* Ends a write. The outermost call commits if `keep` is not 0, and otherwise discards what was
 * written. Unless it returns DB_OK, nothing is kept. An inner call with `keep` returns
 * DB_TRANSACTION if the database has already discarded the transaction. Returns DB_TRANSACTION if
 * there is no matching DB_BeginWrite. Logs nothing. */
ULO_EXPORT int DB_EndWrite(int keep);

/* Runs a text and discards its result rows. */
ULO_EXPORT int DB_Exec(const char* text, ...) DB_PRINTF(1, 2);
/* Like DB_Exec, with parameters. Parameters that the text does not use are ignored. Fails with
 * DB_BAD_PARAMETER if `block` is null. */
ULO_EXPORT int DB_ExecWithParam(DB_PARAM block, const char* text, ...) DB_PRINTF(2, 3);
/* Runs a text and sets *cursor to a cursor on the first of its result rows. Sets *cursor to null on
 * failure. */
ULO_EXPORT int DB_Query(DB_CURSOR* cursor, const char* text, ...) DB_PRINTF(2, 3);
ULO_EXPORT int DB_QueryWithParam(DB_CURSOR* cursor, DB_PARAM block, const char* text, ...)
    DB_PRINTF(3, 4);

/* Returns this thread's tag: the value that its last successful script set with set_session_tag, or
 * the UID of its last successful insert with returnuid, whichever came last. Initially 0. */
ULO_EXPORT int DB_GetTag(void);

/* Sets the text that the task `uid` came with, in the same transaction as other changes of the
 * task; `size` 0 removes it. The text is `size` bytes of any value. When the task is removed, so is
 * its text, whichever program removes it. Writes no entry to the journal of changes. Fails with
 * DB_CONSTRAINT if the task is not stored and with DB_LIMIT if `size` exceeds DB_MAX_TASK_TEXT. */
ULO_EXPORT int DB_SetTaskText(int uid, const char* bytes, unsigned int size);
/* Sets *bytes and *size to the text of the task `uid`. *bytes is null if the task has no text or is
 * not stored; otherwise it is valid until this thread's next call of this function or DB_Close. */
ULO_EXPORT int DB_GetTaskText(int uid, const char** bytes, unsigned int* size);

/* Creates a block of `count` unbound parameters. Returns null if `count` is not in the range 1 to
 * DB_MAX_PARAMETERS, or if memory is exhausted. */
ULO_EXPORT DB_PARAM DB_PARAM_Open(int count);
/* Frees the block. Null is ignored. */
ULO_EXPORT int DB_PARAM_Close(DB_PARAM block);
/* Binds a value to parameter `index`, from 0. This function and the next two return
 * DB_BAD_ARGUMENT if the block is null or `index` is not in the range 0 to count - 1. */
ULO_EXPORT int DB_PARAM_BindInteger(DB_PARAM block, int index, int value);
/* Binds a copy of a zero-terminated text of 16-bit units, each with its two bytes exchanged, unlike
 * the result of DB_CSC_GetFieldAsUnicode. A null pointer binds the null value. */
ULO_EXPORT int DB_PARAM_BindUnicode(DB_PARAM block, int index, const unsigned short* units);
/* Binds a copy of a zero-terminated text of bytes, which should be UTF-8. A null pointer binds the
 * null value. */
ULO_EXPORT int DB_PARAM_BindChar(DB_PARAM block, int index, const char* utf8);

/* A cursor keeps its rows when the transaction ends and when the database is closed.
 *
 * Fields of the current row. `column` is the column's index in the buffer's schema. Return 0, false
 * or null if there is no such row or column and if the field is null. The text functions also
 * return null, and log it, if there is no memory to convert the text to the other form. */
ULO_EXPORT int DB_CSC_GetFieldAsInteger(DB_CURSOR cursor, int column);
ULO_EXPORT int DB_CSC_GetFieldAsBool(DB_CURSOR cursor, int column);
/* Returns zero-terminated 16-bit units in native byte order, valid until the cursor is closed. */
ULO_EXPORT const unsigned short* DB_CSC_GetFieldAsUnicode(DB_CURSOR cursor, int column);
/* Returns zero-terminated bytes, valid until the cursor is closed. */
ULO_EXPORT const char* DB_CSC_GetFieldAsChar(DB_CURSOR cursor, int column);
/* Moves to the next row. Returns DB_OK if there is one, DB_END if not, and DB_BAD_ARGUMENT for a
 * null cursor. */
ULO_EXPORT int DB_CSC_MoveNext(DB_CURSOR cursor);
/* Returns 1 if the cursor is past the last row, which an empty result is from the start, or is
 * null; otherwise 0. */
ULO_EXPORT int DB_CSC_Eof(DB_CURSOR cursor);
/* Frees the cursor. Null is ignored. */
ULO_EXPORT int DB_CSC_Close(DB_CURSOR cursor);

/* Returns the reason for this thread's most recent failure, as a message for the user. A success
 * does not reset it. Never null; empty if nothing has failed. Valid until the thread's next
 * operation. */
ULO_EXPORT const char* DB_LastFailure(void);
/* Returns the result of that failure; DB_OK if nothing has failed. */
ULO_EXPORT int DB_LastResult(void);
/* Returns how many operations of this thread have failed. Some operations of the store succeed
 * although a step has failed; ZTASK_ENG_Model lists them. To detect that, compare the count before
 * and after. */
ULO_EXPORT unsigned int DB_FailureCount(void);

/* Diagnostics. If `line` throws, the function stops calling it, rolls back what was running and
 * returns DB_ERROR. */

/* Explains a text, which is not treated as a template. `what` is a combination of DB_ExplainWhat.
 * Passes each line of output to `line`, including an error in the text ("line L, column C: ...").
 * Requires an open database. `block` may be null if the text has no parameters or is not run. */
ULO_EXPORT int DB_Explain(const char* text, int what, DB_PARAM block,
                          void (*line)(void* context, const char* utf8), void* context);
/* Checks the file's structure and passes each defect to `line`. The file is sound if the function
 * returns DB_OK without calling `line`. */
ULO_EXPORT int DB_CheckFile(void (*line)(void* context, const char* utf8), void* context);

#ifdef __cplusplus
}
#endif
