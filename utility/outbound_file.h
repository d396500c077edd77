#pragma once

#include "ulo/descriptor.h"

#include <QByteArray>
#include <QFile>
#include <QString>

// The file for an outgoing text. Its name is predictable, and other users and processes can create
// files with this name in the same directory.
//
// The file is always created, never opened: a planted link is not followed, and no existing file is
// written to. The object keeps the file locked (flock). An existing file of this user without a
// lock is a remnant of an earlier request and is replaced. If another process has it locked, or if
// it belongs to another user, a file with a random name is used instead.
class OutboundFile {
public:
  explicit OutboundFile(const QString& name)
      : wanted_(name), name_(name), encodedName_(QFile::encodeName(name)) {}
  OutboundFile(const OutboundFile&) = delete;
  OutboundFile& operator=(const OutboundFile&) = delete;
  // Removes a file with a random name; a file with the wanted name stays.
  ~OutboundFile();

  // Creates an empty file that only its owner can access. Returns false if the name is taken by
  // something that cannot be removed. If no file can be created in the directory, returns true, and
  // `name` does not exist.
  [[nodiscard]] bool make();
  [[nodiscard]] const QString& name() const { return name_; }
  // A name to open the file for writing. Opening it never reaches another file that has taken
  // `name`, provided that /proc is mounted.
  [[nodiscard]] QString nameForWriting() const;

  // Whether the descriptor refers to the file that was created.
  [[nodiscard]] bool isSame(int descriptor) const;
  // Whether it contains one complete calendar.
  [[nodiscard]] bool isWhole() const;
  // Removes `name` if it still refers to the file that was created.
  void remove() noexcept;

private:
  enum class Attempt {
    made,
    again,    // the name was just freed
    inUse,    // by another process or another user
    blocked,  // by something that cannot be removed
  };
  [[nodiscard]] Attempt create();
  [[nodiscard]] Attempt clear() const;
  [[nodiscard]] bool makeOther();
  [[nodiscard]] bool hasName(int descriptor) const;

  QString wanted_;
  QString name_;
  QByteArray encodedName_;
  ulo::Descriptor made_;
};
