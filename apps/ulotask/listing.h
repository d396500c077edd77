// What the verbs list.
#pragma once

#include "ZTASK_ENG_Model.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ulotask {

class Session;

// The views of the list and the words that choose them.
struct View {
  ZTASK_ENG_Model::TASK_CATEGORY category;
  const char* word;
};
inline constexpr View views[] = {{ZTASK_ENG_Model::TASK_CATEGORY_ALL, "all"},
                                 {ZTASK_ENG_Model::TASK_CATEGORY_DUE, "due"},
                                 {ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE, "incomplete"},
                                 {ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED, "completed"}};

// The orders of the list and the words that choose them.
struct Sort {
  ZTASK_ENG_Model::TASK_SORT_FIELD field;
  const char* word;
};
inline constexpr Sort sorts[] = {{ZTASK_ENG_Model::TASK_SORT_DUE, "due"},
                                 {ZTASK_ENG_Model::TASK_SORT_PRIORITY, "priority"}};

struct Listing {
  ZTASK_ENG_Model::TASK_CATEGORY view = ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  ZTASK_ENG_Model::TASK_SORT_FIELD sort = ZTASK_ENG_Model::TASK_SORT_DUE;
  std::optional<QString> category;    // only tasks of this category; null for those without one
  std::optional<unsigned int> after;  // only tasks that follow this one, which may be in another
                                      // view or category
  std::optional<int> limit;           // the maximum number of tasks; positive
};

// Tasks of one page. More are never in memory at once, except for those of a category.
inline constexpr int pageSize = 500;

using Records = QValueList<ZTASK_ENG_Task>;
using PageVisitor = std::function<void(const Records& page)>;

// Calls `visit` with the tasks that match, page by page, all read in one state of the store. Fails
// with Exit::notFound if the category or the task `after` does not exist.
void forEachPage(Session& session, const Listing& listing, const PageVisitor& visit);
// The same for all tasks, in the order of their UIDs.
void forEachPageByUid(Session& session, const PageVisitor& visit);

}  // namespace ulotask
