// The items of an options menu.
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <QString>

struct ZOptMenuItem {
  QString text;    // the English default
  int id = 0;      // unique within the menu
  int parent = 0;  // 0, or the ID of the parent item
  int reserved = 0;

  bool operator==(const ZOptMenuItem&) const = default;
};

class ULO_EXPORT ZOptMenuParser {
public:
  ZOptMenuParser() = default;
  ZOptMenuParser(const ZOptMenuParser&) = delete;
  ZOptMenuParser& operator=(const ZOptMenuParser&) = delete;
  virtual ~ZOptMenuParser();

  // Appends the items of the menu with this name in display order, each after its parent item.
  // Appends nothing if the name is unknown.
  virtual void fillItems(QValueList<ZOptMenuItem>& items, const QString& menu) = 0;
};
