#pragma once

#include <string>

namespace ulo::odb {

// A file in the data directory, "tasks.reserve", that reserves disk space for a full disk: reading
// needs some for the files that SQLite shares between processes, and deleting for the pages that it
// changes.
class Reserve {
public:
  static constexpr char fileName[] = "tasks.reserve";

  explicit Reserve(const std::string& directory)
      : directory_(directory), path_(directory + '/' + fileName) {}

  // Creates the file if it is missing and the disk has plenty of space. Never fails.
  void keep() const noexcept;
  // Deletes the file to free its space. Returns true if it had any.
  bool release() noexcept;
  // If this object released the file, creates it again, with up to its full size as space permits.
  void restore() noexcept;
  // Returns true if the disk has less free space than the full size of the reserve.
  [[nodiscard]] bool isWanted() const noexcept;

private:
  std::string directory_;
  std::string path_;
  bool isReleased_ = false;
};

}  // namespace ulo::odb
