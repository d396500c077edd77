#pragma once

#include <string>

namespace ulo::odb {

// A file of the data directory, "tasks.reserve", that holds room of the disk for the day when
// there is none: reading needs some for the files that SQLite shares between processes, removing
// for the pages that it changes.
class Reserve {
public:
  static constexpr char fileName[] = "tasks.reserve";

  explicit Reserve(const std::string& directory)
      : directory_(directory), path_(directory + '/' + fileName) {}

  // Makes it when it is missing and the disk has plenty of room. Never fails.
  void keep() const noexcept;
  // Gives its room back to the disk. Whether there was any.
  bool release() noexcept;
  // When this object has released it: makes it again, as large as the room that is left.
  void restore() noexcept;
  // Whether the disk has less room than the reserve holds.
  [[nodiscard]] bool isWanted() const noexcept;

private:
  std::string directory_;
  std::string path_;
  bool isReleased_ = false;
};

}  // namespace ulo::odb
