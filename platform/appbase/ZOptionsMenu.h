// The menu behind a soft key, with sub-menus. Arrow keys, Enter and touch work as in every menu;
// F1 takes the current item, F3 goes back.
#pragma once

#include "ZOptMenuParser.h"
#include "export.h"

#include <QHash>
#include <QMenu>

#include <memory>

class ULO_EXPORT ZOptionsMenu : public QMenu {
  Q_OBJECT

public:
  // The widget class of the options menus of screens.
  static constexpr int screenClass = 54;

  // Takes its items from `parser`, which it keeps. The widget class numbers the look of a menu;
  // there is one look.
  ZOptionsMenu(QWidget* parent, const char* name, unsigned int flags, int widgetClass,
               std::unique_ptr<ZOptMenuParser> parser, const QString& menu);
  ~ZOptionsMenu() override;

  // In the order of the items.
  [[nodiscard]] QValueList<int> getAllItemIds() const;
  // Calls SLOT(member()) when the item is taken. False for an unknown id.
  bool connectItem(int id, const QObject* receiver, const char* member);
  // Replaces the text. False for an unknown id.
  bool changeItem(int id, const QString& text);
  // These do nothing for an unknown id.
  void showItem(int id, bool shown);
  // A greyed item can't be taken; `why` stands below it, or nothing when it is empty.
  void enableItem(int id, bool enabled, const QString& why = {});
  // Marks an item as one of which others can be taken in its place.
  void checkItem(int id, bool checked);
  // Null for an unknown id; the heading's own for an item that others stand under.
  [[nodiscard]] QAction* item(int id) const;

  // Shows the menu with its lower edge at the upper one of `anchor`.
  void openAbove(const QWidget* anchor);

Q_SIGNALS:
  // It is about to be shown: the time to bring its items up to date.
  void opening();

private:
  [[nodiscard]] QMenu* menuUnder(int id);

  std::unique_ptr<ZOptMenuParser> parser_;
  QValueList<int> ids_;
  QHash<int, QAction*> items_;
  QHash<int, QAction*> reasons_;
};
