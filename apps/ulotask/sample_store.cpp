#include "sample_store.h"

#include "ZTASK_ENG_Model.h"
#include "exit_codes.h"
#include "session.h"

#include <cstdlib>
#include <optional>

namespace ulotask {
namespace {

constexpr const char* directoryVariable = "ULO_DATA_DIR";

// Changes the data directory while the object exists. Requires: the program has one thread.
class DataDirectoryElsewhere {
public:
  explicit DataDirectoryElsewhere(const char* path) {
    if (const char* value = std::getenv(directoryVariable))
      before_ = value;
    setenv(directoryVariable, path, 1);
  }
  DataDirectoryElsewhere(const DataDirectoryElsewhere&) = delete;
  DataDirectoryElsewhere& operator=(const DataDirectoryElsewhere&) = delete;
  ~DataDirectoryElsewhere() {
    if (before_)
      setenv(directoryVariable, before_->c_str(), 1);
    else
      unsetenv(directoryVariable);
  }

private:
  std::optional<std::string> before_;
};

}  // namespace

SampleStore::SampleStore() {
  const std::string& path = directory_.path();
  if (path.empty())
    throw Failure(Exit::failed, "cannot create a temporary directory: " + directory_.error());
  const DataDirectoryElsewhere elsewhere(path.c_str());
  ZTASK_ENG_Model store;
  int count = 0;
  if (store.getCount(count) != TASK_ENG_OK)
    throw Failure(Exit::failed,
                  std::string("cannot create a store in a temporary directory") + databaseReason());
  file_ = path + "/tasks.db";
}

}  // namespace ulotask
