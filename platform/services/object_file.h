#pragma once

#include <QByteArrayView>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace ulo {

// The file name under which an object called `name` is sent: `name` as it is, but for "/" and
// control characters, which become "_". Never ".", ".." or empty. At most 255 bytes of UTF-8, what
// any Linux file system takes: a longer name loses the end of its stem, whole characters of it,
// and keeps its extension.
[[nodiscard]] QString objectFileName(const QString& name);

// An object as a file that is read by name, alone in a directory that no other user can enter.
// Both are gone with this.
class ObjectFile {
public:
  // In $XDG_RUNTIME_DIR, which is kept in memory, else where temporary files are.
  ObjectFile(const QString& name, QByteArrayView content);

  // Empty when it could not be written, which is logged.
  [[nodiscard]] const QString& path() const { return path_; }

private:
  std::unique_ptr<QTemporaryDir> directory_;
  QString path_;
};

}  // namespace ulo
