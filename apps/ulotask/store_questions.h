// Queries that the store's own operations do not offer, or only slowly.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <QString>

#include <map>
#include <optional>
#include <vector>

namespace ulotask {

// The database of the store, open for this thread while the object exists. The constructor throws a
// Failure if it cannot be opened. Requires: the store has been opened, so that its tables exist.
class StoreQuestions {
public:
  StoreQuestions();
  StoreQuestions(const StoreQuestions&) = delete;
  StoreQuestions& operator=(const StoreQuestions&) = delete;
  ~StoreQuestions();

  // Each throws a Failure if the database fails.

  // The UID of the first task in this order. The time does not depend on the number of tasks.
  [[nodiscard]] std::optional<unsigned int> firstTask(ZTASK_ENG_Model::TASK_SORT_FIELD sort) const;

  // Names of categories by their UIDs, as far as they were needed.
  using CategoryNames = std::map<unsigned int, QString>;
  // The first `count` tasks after the task `uid`, or of all tasks if that is 0, in the order of
  // their UIDs. Looks up names that are not in `names`, and adds them.
  [[nodiscard]] QValueList<ZTASK_ENG_Task> tasksAfter(unsigned int uid, int count,
                                                      CategoryNames& names) const;

  struct Category {
    unsigned int uid;
    QString name;     // null for the category of tasks without one
    bool isOriginal;  // created at the first start
    int tasks;
  };
  // All categories in the order of their UIDs.
  [[nodiscard]] std::vector<Category> categories() const;

  // The UIDs of tasks whose category was removed.
  [[nodiscard]] std::vector<unsigned int> tasksWithoutCategory() const;
};

}  // namespace ulotask
