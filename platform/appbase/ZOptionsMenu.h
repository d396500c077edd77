// The menu of a soft key, with sub-menus. Arrow keys, Enter and touch work as in any menu; F1
// activates the current item, F3 goes back.
#pragma once

#include "ZOptMenuParser.h"
#include "ulo/export.h"

#include <QHash>
#include <QMenu>

#include <memory>

class ULO_EXPORT ZOptionsMenu : public QMenu {
  Q_OBJECT

public:
  // The widget class of the options menus of screens.
  static constexpr int screenClass = 54;

  // Reads its items from `parser` and takes ownership of it. The widget class selects the look of a
  // menu; there is only one look.
  ZOptionsMenu(QWidget* parent, const char* name, unsigned int flags, int widgetClass,
               std::unique_ptr<ZOptMenuParser> parser, const QString& menu);
  ~ZOptionsMenu() override;

  // In display order.
  [[nodiscard]] QValueList<int> getAllItemIds() const;
  // Connects activation of the item to SLOT(member()). Returns false for an unknown ID.
  bool connectItem(int id, const QObject* receiver, const char* member);
  // Replaces the item's text. Returns false for an unknown ID.
  bool changeItem(int id, const QString& text);
  // The following functions ignore unknown IDs.
  void showItem(int id, bool shown);
  // A disabled item is grayed; `why`, unless empty, is shown below it.
  void enableItem(int id, bool enabled, const QString& why = {});
  // Makes the item checkable and checks or unchecks it.
  void checkItem(int id, bool checked);
  // Returns the item's action, which is the sub-menu's heading if the item has children, or null
  // for an unknown ID.
  [[nodiscard]] QAction* item(int id) const;

  // Shows the menu with its bottom edge at the top edge of `anchor`.
  void openAbove(const QWidget* anchor);

Q_SIGNALS:
  // Emitted before the menu is shown, to let its owner update the items.
  void opening();

private:
  [[nodiscard]] QMenu* menuUnder(int id);

  std::unique_ptr<ZOptMenuParser> parser_;
  QValueList<int> ids_;
  QHash<int, QAction*> items_;
  QHash<int, QAction*> reasons_;
};
