// Questions to the store's database that the store's own operations answer only at a price.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QString>

#include <optional>
#include <vector>

namespace ulotask {

// The database of the store, open for this thread as long as the object lives. A Failure when it
// can't be opened. Requires: the store has been opened, so that its tables are there.
class StoreQuestions {
public:
  StoreQuestions();
  StoreQuestions(const StoreQuestions&) = delete;
  StoreQuestions& operator=(const StoreQuestions&) = delete;
  ~StoreQuestions();

  // Each is a Failure when the database refuses.

  // The UID of the task that comes first in this order, whatever the size of the store.
  [[nodiscard]] std::optional<unsigned int> firstTask(ZTASK_ENG_Model::TASK_SORT_FIELD sort) const;

  struct Category {
    unsigned int uid;
    QString name;     // null for the category of tasks without one
    bool isOriginal;  // made at the first start
    int tasks;
  };
  // All categories in the order of their UIDs.
  [[nodiscard]] std::vector<Category> categories() const;

  // Tasks that name a category which is gone.
  [[nodiscard]] std::vector<unsigned int> tasksWithoutCategory() const;
};

}  // namespace ulotask
