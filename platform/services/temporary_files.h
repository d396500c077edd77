// Deletes temporary files that were handed to other applications.
#pragma once

#include "ulo/data_directory.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace ulo {

// Records such files in "temporary-files" in the state directory and deletes them when they are a
// day old. A lock keeps concurrent programs from losing each other's records; a record added
// without the lock, after a timeout, may be lost. A file that has been replaced since is not
// deleted.
class TemporaryFiles {
public:
  struct Note {
    std::int64_t time;  // seconds since 1970
    // Identify the file, to detect a replacement.
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t birth;  // nanoseconds; 0 if the file system does not report it
    QByteArray path;     // absolute
  };

  static constexpr char fileName[] = "temporary-files";
  static constexpr std::chrono::hours keptFor{24};
  // Size limit of the record file in bytes, enough for a few thousand records. A larger file is not
  // used.
  static constexpr std::int64_t largest = 1024L * 1024;

  explicit TemporaryFiles(std::string directory = userDirectory("XDG_STATE_HOME", ".local/state"),
                          std::int64_t now = std::time(nullptr))
      : directory_(std::move(directory)), now_(now) {}

  // Records a regular file, replacing an earlier record of the same path. Returns nothing and logs
  // it if this is not a regular file or cannot be recorded; the file is then not deleted.
  [[nodiscard]] std::optional<Note> note(const QString& path);
  // Deletes a file that is no longer needed, and its record.
  void remove(const Note& note);
  // Deletes the files recorded a day or more ago, and the records of files that no longer exist. A
  // record with a time in the future is treated as one of now.
  void removeOld();

private:
  class NoteFile;

  std::string directory_;
  std::int64_t now_;
};

}  // namespace ulo
