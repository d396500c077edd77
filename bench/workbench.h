// The stores that both sides work on: one filled store, and a copy of it for each side.
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
  // What was in the directory is removed. Nothing is filled yet.
  Workbench(std::filesystem::path directory, int size);
  Workbench(const Workbench&) = delete;
  Workbench& operator=(const Workbench&) = delete;
  // Removes the directory.
  ~Workbench();

  [[nodiscard]] int size() const { return size_; }
  [[nodiscard]] std::string directory(Side side) const;

  // Opened with the first call after `close`.
  OurStore& ours();
  HandStore& hand();
  // Both. A store that is opened then is a first open of its file.
  void close();

  // From here on an open of one side's store finds its files.
  void prepareOpen(Side side);

  // Gives the tasks with these UIDs the values back that they were filled with, and takes out
  // those that were added.
  void restore(Side side, const Uids& changed);
  // The same for all tasks; both stores are closed then.
  void restoreAll(Side side);

  // A task's row and its last journal entry, without what tells the time of the change.
  std::string stored(Side side, unsigned int uid);
  // How many tasks are stored, and how many removals the journal has.
  std::string removals(Side side);

private:
  void fill();
  [[nodiscard]] std::filesystem::path master() const { return directory_ / "filled"; }
  // The side's files, apart from the side's own connections.
  [[nodiscard]] Database tasksOf(Side side) const;
  std::string lines(Side side, const std::string& sql);

  std::filesystem::path directory_;
  int size_;
  bool isFilled_ = false;
  std::unique_ptr<OurStore> ours_;
  std::unique_ptr<HandStore> hand_;
};

}  // namespace bench
