/* Maintenance of database files: check, backup, restore and rescue. Results are those of ulodb2.h.
 */
#pragma once

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Maintenance of the file of database number `database`. No thread of this process may have it
 * open. `line` receives texts for the user; the last one says why a function failed. `sample` names
 * the file of a sound database with the same tables. */

/* Checks the file without changing it: its structure, its tables, indexes and triggers compared
 * with those of `sample`, and that no UID is above the counter. Each defect is a line. Returns
 * DB_ERROR if there is one, another code if the file can't be examined at all, and DB_OK if there
 * is no file yet. */
ULO_EXPORT int DB_Inspect(int database, const char* sample,
                          void (*line)(void* context, const char* utf8), void* context);
/* Returns DB_CORRUPT, and says what is left, if the file is missing or empty although there was a
 * store: DB_Open fails then. */
ULO_EXPORT int DB_FindLost(int database, void (*line)(void* context, const char* utf8),
                           void* context);

/* Copies the database, in one state while other programs write, to `file`, which is readable by the
 * owner only. The file appears when it is complete, checked and on the disk. Returns DB_CONSTRAINT
 * if `file` exists and `overwrite` is 0. */
ULO_EXPORT int DB_Backup(int database, const char* file, int overwrite,
                         void (*line)(void* context, const char* utf8), void* context);
/* Replaces the database by a copy of `file`, which must be sound. The replaced file is kept beside
 * it under a name with the time, which is a line. Returns DB_BUSY if a program has the database
 * open, and DB_CORRUPT if `file` is not sound; both leave the database unchanged. */
ULO_EXPORT int DB_Restore(int database, const char* file, const char* sample,
                          void (*line)(void* context, const char* utf8), void* context);
/* Replaces a damaged database by a sound one with all rows that can be read, with their UIDs, and
 * counters that are not lower. The damaged file is kept like that of DB_Restore. Returns DB_CORRUPT
 * and changes nothing if no row can be read. */
ULO_EXPORT int DB_Rescue(int database, const char* sample,
                         void (*line)(void* context, const char* utf8), void* context);

#ifdef __cplusplus
}
#endif
