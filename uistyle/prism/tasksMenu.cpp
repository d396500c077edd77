#include "tasksMenu.h"

#include <span>

namespace {

struct Item {
  int id;
  int parent;
  const char* text;
};

constexpr Item listView[] = {
    {15, 0, "Select All"},     {16, 0, "Unselect All"},   {1, 0, "View by"},
    {2, 1, "All Tasks"},       {3, 1, "Due Tasks"},       {4, 1, "Incomplete Tasks"},
    {5, 1, "Completed Tasks"}, {6, 0, "Create New Task"}, {7, 0, "Edit"},
    {8, 0, "Share Task via"},  {9, 8, "Bluetooth"},       {10, 8, "Message"},
    {18, 0, "Synchronize"},    {17, 0, "Delete"},         {11, 0, "Select Multiple"},
    {12, 0, "Sort by"},        {13, 12, "Due Date"},      {14, 12, "Priority"},
};
constexpr Item detailedView[] = {
    {1, 0, "Edit"},    {2, 0, "Share Task via"}, {3, 2, "Bluetooth"},
    {4, 2, "Message"}, {5, 0, "Delete"},
};
constexpr Item formView[] = {{1, 0, "Cancel Edit"}};

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
