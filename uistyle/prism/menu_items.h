// The IDs of the items of the options menus (tasksMenu). They are fixed.
#pragma once

namespace ulo {

// The menu "listView".
namespace listMenu {
enum Item : int {
  viewBy = 1,
  viewAll = 2,
  viewDue = 3,
  viewIncomplete = 4,
  viewCompleted = 5,
  createTask = 6,
  edit = 7,
  share = 8,
  bluetooth = 9,
  message = 10,
  selectMultiple = 11,
  sortBy = 12,
  sortByDue = 13,
  sortByPriority = 14,
  selectAll = 15,
  unselectAll = 16,
  remove = 17,
  synchronize = 18,
};
}  // namespace listMenu

// The menu "detailedView".
namespace detailMenu {
enum Item : int { edit = 1, share = 2, bluetooth = 3, message = 4, remove = 5 };
}  // namespace detailMenu

// The menu "formView".
namespace formMenu {
enum Item : int { cancelEdit = 1 };
}  // namespace formMenu

// The parent of the items that are in no submenu.
inline constexpr int topLevel = 0;

}  // namespace ulo
