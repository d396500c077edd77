// The stores for both sides: a filled store, and a copy of it for each side.
#pragma once

#include "hand_store.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace bench {

enum class Side { ours, hand };

// The store with its protected operations.
class OurStore : public ZTASK_ENG_Model {
public:
  using ZTASK_ENG_Model::removeAll;
};

class Workbench {
public:
  // Deletes the content of the directory. Does not fill the store yet.
  Workbench(std::filesystem::path directory, int size);
  Workbench(const Workbench&) = delete;
  Workbench& operator=(const Workbench&) = delete;
  // Removes the directory.
  ~Workbench();

  [[nodiscard]] int size() const { return size_; }
  [[nodiscard]] std::string directory(Side side) const;

  // Opens the store at the first call after `close`.
  OurStore& ours();
  HandStore& hand();
  // Closes both sides, so that the next open is the first open of the file.
  void close();

  // Makes later opens of one side's store find its files.
  void prepareOpen(Side side);

  // Restores the tasks with these UIDs to their initial values, and removes added tasks.
  void restore(Side side, const Uids& changed);
  // The same for all tasks. Closes both stores.
  void restoreAll(Side side);

  // Returns a task's row and its last journal entry, without the times of the change.
  std::string stored(Side side, unsigned int uid);
  // Returns the number of stored tasks and of removals in the journal.
  std::string removals(Side side);

private:
  void fill();
  [[nodiscard]] std::filesystem::path master() const { return directory_ / "filled"; }
  // Opens the side's file with a separate connection.
  [[nodiscard]] Database tasksOf(Side side) const;
  std::string lines(Side side, const std::string& sql);

  std::filesystem::path directory_;
  int size_;
  bool isFilled_ = false;
  std::unique_ptr<OurStore> ours_;
  std::unique_ptr<HandStore> hand_;
};

}  // namespace bench
