/* Maintenance of database files: check, backup, restore and rescue. Result codes are those of
 * ulodb2.h.
 */
#pragma once

#include "ulo/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* All functions operate on the file of database number `database` (1), which no thread of this
 * process may have open. Only DB_Restore and DB_Rescue detect that; they return DB_BUSY.
 *
 * `line` receives messages for the user, in UTF-8 and valid during the call, in the caller's
 * thread. It must not throw. If it is null, the functions return DB_BAD_ARGUMENT. If a function
 * fails, the last message is the reason; DB_LastFailure does not return it.
 *
 * `file` and `sample` are paths in the encoding of the file system. `sample` names the file of a
 * sound database with the same tables. To make one, create a ZTASK_ENG_Model while ULO_DATA_DIR
 * names an empty directory; its file is tasks.db in there. */

/* Checks the file without changing it: its structure, that its tables, indexes and triggers match
 * those of `sample`, and that no UID exceeds the UID counter. Passes each defect to `line`. Returns
 * DB_ERROR if there are any, another code if the file cannot be examined at all, and DB_OK if the
 * file is sound or does not exist yet. (DB_CheckFile also returns DB_OK if it finds defects.) */
ULO_EXPORT int DB_Inspect(int database, const char* sample,
                          void (*line)(void* context, const char* utf8), void* context);
/* Detects a lost store. Returns DB_CORRUPT if the file is too short to be a database, or if it is
 * missing or empty although other files show that there was a store, and passes the reason with
 * their names to `line`. DB_Open fails with DB_CORRUPT in these cases. Returns DB_OK if nothing is
 * lost. */
ULO_EXPORT int DB_FindLost(int database, void (*line)(void* context, const char* utf8),
                           void* context);

/* Copies the database to `file`, which only its owner can read. The copy is a consistent snapshot
 * even while other programs write. The file appears only when it is complete, checked and flushed
 * to disk. Returns DB_CONSTRAINT if `file` exists and `overwrite` is 0, and DB_BAD_ARGUMENT if it
 * is the database itself. */
ULO_EXPORT int DB_Backup(int database, const char* file, int overwrite,
                         void (*line)(void* context, const char* utf8), void* context);
/* Replaces the database with a copy of `file`, which must be sound. Keeps the replaced file in the
 * same directory under a name that contains the time, and passes that name to `line`. Returns
 * DB_BAD_ARGUMENT if `file` is the database itself, DB_BUSY if a program has the database open, and
 * DB_CORRUPT if `file` is not sound; these leave the database unchanged. */
ULO_EXPORT int DB_Restore(int database, const char* file, const char* sample,
                          void (*line)(void* context, const char* utf8), void* context);
/* Replaces a damaged database with a sound one that holds all readable rows with their UIDs. The
 * UID counters are not lower than before if they can be read; otherwise they are 10000 above the
 * highest UID found. Keeps the damaged file as DB_Restore does. Does not check whether the database
 * is sound: call DB_Inspect first. Returns DB_BUSY if a program has the database open, and
 * DB_CORRUPT if no row can be read; both leave the database unchanged. */
ULO_EXPORT int DB_Rescue(int database, const char* sample,
                         void (*line)(void* context, const char* utf8), void* context);

#ifdef __cplusplus
}
#endif
