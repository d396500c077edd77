// Files that were handed to applications and are nobody's afterwards.
#pragma once

#include "data_directory.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace ulo {

// Notes such files in "temporary-files" of the state directory and removes them when they are a
// day old. Programs that do so at the same time don't lose each other's notes. A noted file that
// was replaced by another one is no longer ours and stays.
class TemporaryFiles {
public:
  struct Note {
    std::int64_t time;  // seconds since 1970
    // What tells a file from one that takes its place.
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t birth;  // nanoseconds; 0 where the file system doesn't tell
    QByteArray path;     // absolute
  };

  static constexpr char fileName[] = "temporary-files";
  static constexpr std::chrono::hours keptFor{24};
  // Bytes of the file of notes; room for some thousand. What is larger isn't ours.
  static constexpr std::int64_t largest = 1024L * 1024;

  explicit TemporaryFiles(std::string directory = userDirectory("XDG_STATE_HOME", ".local/state"),
                          std::int64_t now = std::time(nullptr))
      : directory_(std::move(directory)), now_(now) {}

  // Notes a regular file, in place of an earlier note of the same path. None, which is logged, for
  // anything else and when it can't be noted: the file stays then.
  [[nodiscard]] std::optional<Note> note(const QString& path);
  // Removes a file that is no longer needed, and its note.
  void remove(const Note& note);
  // Removes the files that were noted a day ago or earlier, and notes of files that are gone. A
  // note from the future is one of now.
  void removeOld();

private:
  class NoteFile;

  std::string directory_;
  std::int64_t now_;
};

}  // namespace ulo
