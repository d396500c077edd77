// What an options menu holds.
#pragma once

#include "export.h"
#include "qt2.h"

#include <QString>

struct ZOptMenuItem {
  QString text;    // the English default
  int id = 0;      // of its own within the menu
  int parent = 0;  // 0, or the id of the item under which it stands
  int reserved = 0;

  bool operator==(const ZOptMenuItem&) const = default;
};

class ULO_EXPORT ZOptMenuParser {
public:
  ZOptMenuParser() = default;
  ZOptMenuParser(const ZOptMenuParser&) = delete;
  ZOptMenuParser& operator=(const ZOptMenuParser&) = delete;
  virtual ~ZOptMenuParser();

  // Appends the items of the menu of this name, in the order in which they are shown, each behind
  // the item under which it stands. Appends nothing for a name that it doesn't know.
  virtual void fillItems(QValueList<ZOptMenuItem>& items, const QString& menu) = 0;
};
