#include "task_pages.h"

#include "database.h"

#include <algorithm>

namespace ulo {

int readPage(ZTASK_ENG_Model& store, unsigned int start, int count, const ListOrder& order,
             Records& page) {
  page.clear();
  // The store finds the page by the due date and priority of `start`, which another program could
  // change between the two reads.
  const ReadSnapshot snapshot;
  ZTASK_ENG_Task first;
  if (const int code = store.getTask(start, first); code != TASK_ENG_OK)
    return code;
  const int code = store.getTasks(page, first, count, order.view, order.sort);
  return code == TASK_ENG_NOT_FOUND ? static_cast<int>(TASK_ENG_OK) : code;
}

int TaskPages::open(ZTASK_ENG_Model& store, const ListOrder& order) {
  uids_.clear();
  order_ = order;
  position_ = 0;
  const int code = store.getAllIDs(uids_, order.view, order.sort);
  if (code != TASK_ENG_OK)
    uids_.clear();
  return code;
}

int TaskPages::read(ZTASK_ENG_Model& store, unsigned int place, int count, Records& page) const {
  page.clear();
  if (place >= uids_.count())
    return TASK_ENG_NOT_FOUND;
  if (const int code = readPage(store, uids_[place], count, order_, page); code != TASK_ENG_OK)
    return code;
  const unsigned int most = std::min(page.count(), uids_.count() - place);
  unsigned int same = 0;
  while (same < most && page[same].getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID) == uids_[place + same])
    ++same;
  page.truncate(same);
  return same == 0 ? TASK_ENG_NOT_FOUND : TASK_ENG_OK;
}

int TaskPages::next(ZTASK_ENG_Model& store, int count, Records& page) {
  const int code = read(store, position_, count, page);
  if (code != TASK_ENG_OK && code != TASK_ENG_NOT_FOUND)
    return code;
  position_ = std::min(position_ + std::max(page.count(), 1U), uids_.count());
  return TASK_ENG_OK;
}

}  // namespace ulo
