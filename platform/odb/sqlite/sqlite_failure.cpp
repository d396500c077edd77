#include "sqlite_failure.h"

#include <cerrno>

namespace ulo::odb {
namespace {

int lastErrorOf(sqlite3_file* file) {
  int error = 0;
  if (file != nullptr && file->pMethods != nullptr)
    file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &error);
  return error;
}

// Returns the system error of a failed file operation on this connection. SQLite asks for it when
// it reports the failure, but by then the rollback may have replaced it; each file keeps its own.
int systemErrorOf(sqlite3* database) {
  sqlite3_file* log = nullptr;
  sqlite3_file* file = nullptr;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
  sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  for (sqlite3_file* each : {log, file})
    if (const int error = lastErrorOf(each); isFull(error))
      return error;
  return sqlite3_system_errno(database);
}

DB_Result resultOf(sqlite3* database, int code) {
  constexpr int primary = 0xFF;
  switch (code & primary) {
  case SQLITE_FULL:
    return DB_FULL;
  case SQLITE_BUSY:
  case SQLITE_LOCKED:
    return DB_BUSY;
  case SQLITE_IOERR:
  case SQLITE_CANTOPEN:
    // A full disk also appears here when SQLite sizes its shared memory or creates a file.
    return isFull(systemErrorOf(database)) ? DB_FULL : DB_IO;
  case SQLITE_READONLY:
  case SQLITE_PERM:
    return DB_IO;
  case SQLITE_NOMEM:
    return DB_NO_MEMORY;
  case SQLITE_CORRUPT:
  case SQLITE_NOTADB:
    return DB_CORRUPT;
  case SQLITE_CONSTRAINT:
    return DB_CONSTRAINT;
  default:
    return DB_ERROR;
  }
}

Failure sqliteFailure(sqlite3* database, int error, const std::string& what, const char* message) {
  const DB_Result result = resultOf(database, error);
  const char* file = sqlite3_db_filename(database, "main");
  const std::string reason = result == DB_FULL
                                 ? fullReason(file == nullptr ? "" : file, systemErrorOf(database))
                                 : message;
  return {result, what + ": " + reason, reason};
}

}  // namespace

bool isFull(int systemError) {
  return systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
}

std::string fullReason(const std::string& file, int systemError) {
  if (systemError == EFBIG)
    return "the process may not write files as large as " + file;
  if (systemError == EDQUOT)
    return "the disk quota of " + file + " is used up";
  return "the file system of " + file + " is full";
}

Failure sqliteFailure(sqlite3* database, const std::string& what) {
  return sqliteFailure(database, sqlite3_errcode(database), what, sqlite3_errmsg(database));
}

Failure sqliteFailure(sqlite3* database, int result, const std::string& what) {
  return sqliteFailure(database, result, what, sqlite3_errstr(result));
}

}  // namespace ulo::odb
