/* Result codes, limits and flags of the database; see ulodb2.h. */
#pragma once

/* Result codes of the functions that return int, unless documented otherwise. */
enum DB_Result {
  DB_OK = 0,
  DB_ERROR = 1,         /* any other failure */
  DB_BAD_ARGUMENT = 2,  /* a null pointer, an index out of range, an unknown mode or database */
  DB_SYNTAX = 3,        /* the text is malformed; the log says where and why */
  DB_UNKNOWN_NAME = 4,  /* the text names a table, index or column that does not exist */
  DB_BAD_PARAMETER = 5, /* a parameter of the text is not bound, or the block is missing */
  DB_BAD_TYPE = 6,      /* a value does not fit the type of its target */
  DB_CONSTRAINT = 7,    /* the table exists, a key is not unique, no UID is left, or the task of a
                           text is not stored */
  DB_BUSY = 8,          /* another process or thread held the lock for too long (now 10 seconds) */
  DB_IO = 9,            /* the file cannot be read or written, or a newer version wrote it */
  DB_NO_MEMORY = 10,    /* this process is out of memory */
  DB_CORRUPT = 11,      /* the file is damaged or not a database */
  DB_FULL = 12,         /* the disk, the user's disk quota or the database is full */
  DB_NOT_OPEN = 13,     /* this thread has not opened the database, or the process was forked */
  DB_TRANSACTION = 14,  /* a transaction or read snapshot is already open, or none is open */
  DB_LIMIT = 15,        /* one of the limits below was exceeded */
  DB_END = 16           /* there are no more rows */
};

/* Limits. An operation that exceeds one fails with DB_LIMIT and changes nothing. */
enum DB_Limit {
  DB_MAX_TEXT = 65536,     /* bytes of a formatted text; a number outside quotes counts as two */
  DB_MAX_NESTING = 64,     /* nesting depth of blocks and parentheses, and chained operators */
  DB_MAX_PARAMETERS = 256, /* parameters of a block */
  DB_MAX_COLUMNS = 64,     /* columns of a table or a buffer schema */
  DB_MAX_VARIABLES = 64,   /* variables of a script */
  DB_MAX_NAME = 128,       /* bytes of a name */
  DB_MAX_ROWS = 4194304,   /* rows of a result */
  DB_MAX_TASK_TEXT = 67108864,  /* bytes of the text of a task */
  DB_MAX_LOOP_PASSES = 16777216 /* loop passes of one run of a script, all loops together; rows
                                   that the database skips, counts or deletes itself do not count */
};

/* What DB_Explain lists. */
enum DB_ExplainWhat {
  DB_EXPLAIN_TOKENS = 1, /* the tokens of the text with their positions */
  DB_EXPLAIN_TREE = 2,   /* the syntax tree */
  DB_EXPLAIN_SQL = 4,    /* the SQL of each cursor, or of the statement */
  DB_EXPLAIN_RUN = 8     /* run the text: the SQL executed, with its values, and the result rows */
};
