#pragma once

#include "descriptor.h"

#include <QString>

// The file through which a text goes out. Its name can be guessed, in a directory where anybody may
// put files: it is made anew, and found again as what was made.
class OutboundFile {
public:
  explicit OutboundFile(const QString& name) : name_(name) {}

  // Takes away what has the name, and makes an empty file of the owner's alone. False when
  // something is still there. Where no file can be made at all that is found out by writing.
  [[nodiscard]] bool make();
  // Whether the name stands for the file that was made, or for none.
  [[nodiscard]] bool isOwn() const;
  // Whether it holds one calendar to its end.
  [[nodiscard]] bool isWhole() const;

private:
  QString name_;
  ulo::Descriptor made_;
};
