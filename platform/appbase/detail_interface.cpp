#include "detail_interface.h"

#include "ZDetailView.h"

#include <QAccessibleWidget>

namespace ulo {

namespace {

class DetailItemInterface : public QAccessibleWidget {
public:
  explicit DetailItemInterface(ZDetailItem* item)
      : QAccessibleWidget(item, QAccessible::ListItem), item_(item) {}

  [[nodiscard]] QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.focusable = true;
    state.selectable = true;
    state.focused = item_->isCurrent();
    state.selected = item_->isCurrent();
    return state;
  }
  // The view, not its scrolling widgets.
  [[nodiscard]] QAccessibleInterface* parent() const override {
    for (QWidget* above = item_->parentWidget(); above != nullptr; above = above->parentWidget())
      if (qobject_cast<ZDetailView*>(above) != nullptr)
        return QAccessible::queryAccessibleInterface(above);
    return QAccessibleWidget::parent();
  }

private:
  ZDetailItem* item_;
};

class DetailViewInterface : public QAccessibleWidget {
public:
  explicit DetailViewInterface(ZDetailView* view)
      : QAccessibleWidget(view, QAccessible::List), view_(view) {}

  [[nodiscard]] int childCount() const override { return view_->count(); }
  [[nodiscard]] QAccessibleInterface* child(int index) const override {
    return QAccessible::queryAccessibleInterface(view_->item(index));
  }
  int indexOfChild(const QAccessibleInterface* child) const override {
    for (int row = 0; row < view_->count(); ++row)
      if (child->object() == view_->item(row))
        return row;
    return -1;
  }
  [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
    for (int row = 0; row < view_->count(); ++row)
      if (QAccessibleInterface* found = child(row); found->rect().contains(x, y))
        return found;
    return nullptr;
  }
  [[nodiscard]] QAccessibleInterface* focusChild() const override {
    return view_->hasFocus() ? child(view_->currentRow()) : QAccessibleWidget::focusChild();
  }

private:
  ZDetailView* view_;
};

QAccessibleInterface* interfaceOf(const QString&, QObject* object) {
  if (auto* view = qobject_cast<ZDetailView*>(object))
    return new DetailViewInterface(view);
  if (auto* item = qobject_cast<ZDetailItem*>(object))
    return new DetailItemInterface(item);
  return nullptr;
}

}  // namespace

void describeDetailViews() {
  QAccessible::installFactory(interfaceOf);
}

}  // namespace ulo
