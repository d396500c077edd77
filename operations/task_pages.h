// The task list, read in pages.
#pragma once

#include "ZTASK_ENG_Model.h"

namespace ulo {

using Uids = QValueList<unsigned int>;
using Records = QValueList<ZTASK_ENG_Task>;

// The tasks of a list, and their order.
struct ListOrder {
  ZTASK_ENG_Model::TASK_CATEGORY view = ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  ZTASK_ENG_Model::TASK_SORT_FIELD sort = ZTASK_ENG_Model::TASK_SORT_DUE;

  bool operator==(const ListOrder&) const = default;
};

// Sets `page` to the tasks of the list from the task `start` on, at most `count`, all read in one
// state of the store. The page begins with `start` if the view shows it. Returns TASK_ENG_OK, with
// an empty page if nothing from there on is shown; TASK_ENG_NOT_FOUND if `start` is not stored;
// otherwise another code of the store.
int readPage(ZTASK_ENG_Model& store, unsigned int start, int count, const ListOrder& order,
             Records& page);

// A walk over a list in pages.
//
// open() reads the UIDs of the list once; they are the places of the walk and do not change
// afterwards. The records are read page by page, in their current state. A place whose task has
// since been removed, or is no longer at this position of the list, has no record.
class TaskPages {
public:
  // Reads the list and returns to its beginning. Returns a code of getAllIDs; the list is empty
  // unless that is TASK_ENG_OK.
  int open(ZTASK_ENG_Model& store, const ListOrder& order);

  [[nodiscard]] const Uids& uids() const { return uids_; }
  // The number of places that have been passed.
  [[nodiscard]] unsigned int position() const { return position_; }
  [[nodiscard]] bool isAtEnd() const { return position_ >= uids_.count(); }
  void skipToEnd() { position_ = uids_.count(); }

  // Sets `page` to the records of up to `count` places from `place` on, up to the first place
  // without a record. Returns TASK_ENG_NOT_FOUND if `place` itself has none, otherwise a code of
  // the store. Does not move the walk.
  int read(ZTASK_ENG_Model& store, unsigned int place, int count, Records& page) const;
  // Reads from position() on and moves past the page. A place without a record is passed with an
  // empty page. Returns a code of the store; the walk stays where it is unless that is TASK_ENG_OK.
  int next(ZTASK_ENG_Model& store, int count, Records& page);

private:
  Uids uids_;
  ListOrder order_;
  unsigned int position_ = 0;
};

}  // namespace ulo
