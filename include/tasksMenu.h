// The options menus of the screens of the task list.
#pragma once

#include "ZOptMenuParser.h"
#include "ulo/export.h"

class ULO_EXPORT tasksMenu : public ZOptMenuParser {
public:
  tasksMenu();
  ~tasksMenu() override;

  // Supports the menus "listView", "detailedView" and "formView". The texts are English defaults.
  void fillItems(QValueList<ZOptMenuItem>& items, const QString& menu) override;
};
