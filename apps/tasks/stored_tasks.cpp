#include "stored_tasks.h"

#include "change_task.h"

#include <algorithm>

namespace tasks {

namespace {

// The store leaves out of a list what the page that starts there still shows, and the other way
// round: only what both agree on is taken.
unsigned int agreed(const Uids& uids, unsigned int from, const Records& page) {
  const unsigned int most = std::min(page.count(), uids.count() - from);
  unsigned int same = 0;
  while (same < most && page[same].getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID) == uids[from + same])
    ++same;
  return same;
}

}  // namespace

int readPage(ZTASK_ENG_Model& store, const Uids& uids, unsigned int from, int count,
             const ListOrder& order, Records& page) {
  page.clear();
  if (from >= uids.count())
    return TASK_ENG_NOT_FOUND;
  ZTASK_ENG_Task start;
  int code = store.getTask(uids[from], start);
  if (code == TASK_ENG_OK)
    code = store.getTasks(page, start, count, order.view, order.sort);
  const unsigned int same = agreed(uids, from, page);
  page.truncate(same);
  return code == TASK_ENG_OK && same == 0 ? static_cast<int>(TASK_ENG_NOT_FOUND) : code;
}

int setCompleted(ZTASK_ENG_Model& store, unsigned int uid, bool completed) {
  return ulo::changeTask(store, uid,
                         [=](ZTASK_ENG_Task& task) { task.setStatus(completed ? 0 : 1); });
}

}  // namespace tasks
