#pragma once

#include "descriptor.h"

#include <QString>

// The file through which a text goes out. Its name can be guessed, in a directory where other users
// and other processes create files of the same name.
//
// The file is created, never opened: a planted link is not followed, and no file that existed is
// written to. The object locks the file (flock) for as long as it lives. A file of this user that
// nobody has locked was left behind by an earlier request and is replaced; while another process
// has it locked, or if it belongs to another user, a file with a random name takes its place.
class OutboundFile {
public:
  explicit OutboundFile(const QString& name) : wanted_(name), name_(name) {}
  OutboundFile(const OutboundFile&) = delete;
  OutboundFile& operator=(const OutboundFile&) = delete;
  // Removes a file with a random name; a file with the wanted name stays.
  ~OutboundFile();

  // Creates an empty file that only its owner can access. Returns false if something that cannot be
  // removed has the name. If the directory does not take files, it returns true, and `name` does
  // not exist.
  [[nodiscard]] bool make();
  [[nodiscard]] const QString& name() const { return name_; }
  // A name to open the file for writing. Opening it never reaches another file that has taken
  // `name`, provided that /proc is mounted.
  [[nodiscard]] QString nameForWriting() const;

  // Whether the descriptor refers to the file that was created.
  [[nodiscard]] bool isSame(int descriptor) const;
  // Whether it contains one calendar to its end.
  [[nodiscard]] bool isWhole() const;
  // Removes `name` if it still refers to the file that was created.
  void remove();

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
  ulo::Descriptor made_;
};
