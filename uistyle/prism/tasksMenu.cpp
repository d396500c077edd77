#include "tasksMenu.h"

#include "menu_items.h"

#include <span>

namespace {

namespace listMenu = ulo::listMenu;
namespace detailMenu = ulo::detailMenu;
namespace formMenu = ulo::formMenu;
using ulo::topLevel;

struct Item {
  int id;
  int parent;
  const char* text;
};

constexpr Item listView[] = {
    {listMenu::selectAll, topLevel, "Select All"},
    {listMenu::unselectAll, topLevel, "Unselect All"},
    {listMenu::viewBy, topLevel, "View by"},
    {listMenu::viewAll, listMenu::viewBy, "All Tasks"},
    {listMenu::viewDue, listMenu::viewBy, "Due Tasks"},
    {listMenu::viewIncomplete, listMenu::viewBy, "Incomplete Tasks"},
    {listMenu::viewCompleted, listMenu::viewBy, "Completed Tasks"},
    {listMenu::createTask, topLevel, "Create New Task"},
    {listMenu::edit, topLevel, "Edit"},
    {listMenu::share, topLevel, "Share Task via"},
    {listMenu::bluetooth, listMenu::share, "Bluetooth"},
    {listMenu::message, listMenu::share, "Message"},
    {listMenu::synchronize, topLevel, "Synchronize"},
    {listMenu::remove, topLevel, "Delete"},
    {listMenu::selectMultiple, topLevel, "Select Multiple"},
    {listMenu::sortBy, topLevel, "Sort by"},
    {listMenu::sortByDue, listMenu::sortBy, "Due Date"},
    {listMenu::sortByPriority, listMenu::sortBy, "Priority"},
};
constexpr Item detailedView[] = {
    {detailMenu::edit, topLevel, "Edit"},
    {detailMenu::share, topLevel, "Share Task via"},
    {detailMenu::bluetooth, detailMenu::share, "Bluetooth"},
    {detailMenu::message, detailMenu::share, "Message"},
    {detailMenu::remove, topLevel, "Delete"},
};
constexpr Item formView[] = {{formMenu::cancelEdit, topLevel, "Cancel Edit"}};

struct Menu {
  const char* name;
  std::span<const Item> items;
};
constexpr Menu menus[] = {
    {"listView", listView}, {"detailedView", detailedView}, {"formView", formView}};

}  // namespace

tasksMenu::tasksMenu() = default;
tasksMenu::~tasksMenu() = default;

void tasksMenu::fillItems(QValueList<ZOptMenuItem>& items, const QString& menu) {
  for (const Menu& known : menus) {
    if (menu != QLatin1String(known.name))
      continue;
    for (const Item& item : known.items)
      items.append({QString::fromLatin1(item.text), item.id, item.parent, 0});
  }
}
