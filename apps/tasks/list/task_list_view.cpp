#include "list/task_list_view.h"

#include "list/task_list_model.h"
#include "list/task_row.h"
#include "ulo/look.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStyleHints>

#include <algorithm>

namespace tasks {

TaskListView::TaskListView(TaskListModel& tasks, QWidget* parent)
    : QListView(parent), tasks_(tasks), row_(new TaskRow(this)) {
  setFrameShape(NoFrame);
  setItemDelegate(row_);
  setUniformItemSizes(true);
  setSelectionMode(NoSelection);
  setEditTriggers(NoEditTriggers);
  setVerticalScrollMode(ScrollPerPixel);
  setContextMenuPolicy(Qt::PreventContextMenu);
  ulo::makeTouchable(this);
  setModel(&tasks);
  connect(&tasks, &QAbstractItemModel::modelAboutToBeReset, this, &TaskListView::notePlace);
  connect(&tasks, &QAbstractItemModel::modelReset, this, &TaskListView::takePlace);
}

void TaskListView::setChoosing(bool choosing) {
  row_->setChoosing(choosing);
  viewport()->update();
}

void TaskListView::goTo(int row) {
  if (row < 0 || row >= tasks_.rowCount())
    return;
  executeDelayedItemsLayout();
  setCurrentIndex(tasks_.index(row));
  scrollTo(currentIndex());
}

std::pair<int, int> TaskListView::visibleRows() const {
  const int height = TaskRow::heightOf(this);
  const int first = verticalScrollBar()->value() / height;
  return {first, std::min(tasks_.rowCount(), first + viewport()->height() / height + 1)};
}

// Tells screen readers which of the visible rows were selected or deselected.
void TaskListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                               const QList<int>& roles) {
  QListView::dataChanged(topLeft, bottomRight, roles);
  if (!QAccessible::isActive() || !roles.contains(Qt::CheckStateRole))
    return;
  const auto [first, last] = visibleRows();
  QAccessible::State changed;
  changed.checked = true;
  for (int row = std::max(first, topLeft.row()); row < std::min(last, bottomRight.row() + 1);
       ++row) {
    QAccessibleStateChangeEvent event(this, changed);
    event.setChild(row);
    QAccessible::updateAccessibility(&event);
  }
}

void TaskListView::notePlace() {
  place_ = {};
  place_.row = currentRow();
  if (place_.row >= 0)
    place_.uid = tasks_.uidAt(place_.row);
  place_.scrolled = verticalScrollBar()->value();
  place_.offset = place_.scrolled % TaskRow::heightOf(this);
  const auto [first, last] = visibleRows();
  for (int row = first; row < last; ++row)
    place_.seen.push_back(tasks_.uidAt(row));
}

// The first visible task that still exists keeps its position. If the current task is gone, the
// following one becomes current.
void TaskListView::takePlace() {
  executeDelayedItemsLayout();
  const int rows = tasks_.rowCount();
  int row = place_.row < 0 ? -1 : tasks_.rowOf(place_.uid);
  if (row < 0)
    row = std::min(std::max(place_.row, 0), rows - 1);
  setAutoScroll(false);
  setCurrentIndex(tasks_.index(row));
  setAutoScroll(true);
  int scrolled = place_.scrolled;
  for (std::size_t i = 0; i < place_.seen.size() && place_.scrolled > 0; ++i)
    if (const int same = tasks_.rowOf(place_.seen[i]); same >= 0) {
      scrolled = (same - static_cast<int>(i)) * TaskRow::heightOf(this) + place_.offset;
      break;
    }
  verticalScrollBar()->setValue(scrolled);
}

// Keyboard users see the current row.
void TaskListView::focusInEvent(QFocusEvent* event) {
  QListView::focusInEvent(event);
  if (!currentIndex().isValid() && tasks_.rowCount() > 0)
    setCurrentIndex(tasks_.index(0));
}

void TaskListView::keyPressEvent(QKeyEvent* event) {
  const int row = currentRow();
  const bool acts = row >= 0 && !event->isAutoRepeat();
  switch (event->key()) {
  case Qt::Key_Return:
  case Qt::Key_Enter:
  case Qt::Key_Select:
    if (acts)
      Q_EMIT opened(row);
    return;
  case Qt::Key_Space:
    if (acts)
      Q_EMIT checked(row);
    return;
  case Qt::Key_Delete:
  case Qt::Key_Backspace:
    if (acts)
      Q_EMIT removalAsked();
    return;
  case Qt::Key_Up:
  case Qt::Key_Down:
  case Qt::Key_PageUp:
  case Qt::Key_PageDown:
  case Qt::Key_Home:
  case Qt::Key_End:
    QListView::keyPressEvent(event);
    return;
  default:
    event->ignore();
  }
}

void TaskListView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton)
    return;
  pressedAt_ = event->position().toPoint();
  letGo();
  const QModelIndex index = indexAt(pressedAt_);
  if (!index.isValid())
    return;
  pressed_ = tasks_.uidAt(index.row());
  hold_.start(QApplication::styleHints()->mousePressAndHoldInterval(), this);
}

void TaskListView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint way = event->position().toPoint() - pressedAt_;
  if (way.manhattanLength() > QApplication::startDragDistance())
    letGo();
}

void TaskListView::mouseReleaseEvent(QMouseEvent* event) {
  const QPoint at = event->position().toPoint();
  const QModelIndex index = indexAt(at);
  const bool same = index.isValid() && pressed_ == tasks_.uidAt(index.row());
  letGo();
  if (!same)
    return;
  setCurrentIndex(index);
  if (TaskRow::statusZone(this, visualRect(index)).contains(at))
    Q_EMIT checked(index.row());
  else
    Q_EMIT opened(index.row());
}

void TaskListView::letGo() {
  hold_.stop();
  pressed_.reset();
}

void TaskListView::timerEvent(QTimerEvent* event) {
  if (event->timerId() != hold_.timerId()) {
    QListView::timerEvent(event);
    return;
  }
  const int row = pressed_ ? tasks_.rowOf(*pressed_) : -1;
  letGo();
  if (row >= 0) {
    setCurrentIndex(tasks_.index(row));
    Q_EMIT held(row);
  }
}

}  // namespace tasks
