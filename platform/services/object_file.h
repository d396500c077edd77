#pragma once

#include <QByteArrayView>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace ulo {

// Returns the file name under which an object called `name` is sent: `name` with "/" and control
// characters replaced by "_". Never ".", ".." or empty. At most 255 bytes of UTF-8, the limit of
// Linux file systems: a longer name keeps its extension and loses whole characters from the end of
// its stem.
[[nodiscard]] QString objectFileName(const QString& name);

// Stores an object in a file, alone in a directory that no other user can access. The destructor
// deletes both.
class ObjectFile {
public:
  // Uses $XDG_RUNTIME_DIR, which is in memory, or else the directory for temporary files.
  ObjectFile(const QString& name, QByteArrayView content);

  // Empty if the file could not be written, which is logged.
  [[nodiscard]] const QString& path() const { return path_; }

private:
  std::unique_ptr<QTemporaryDir> directory_;
  QString path_;
};

}  // namespace ulo
