// The view of the task list, with touch and keys.
#pragma once

#include <QBasicTimer>
#include <QListView>

#include <optional>
#include <utility>
#include <vector>

namespace tasks {

class TaskListModel;
class TaskRow;

// Enter or a touch opens a task; Space or a touch of its status completes it. When the model is
// reset, keeps the current task and the scroll position, and a touch continues. Auto-repeated keys
// do not change tasks.
class TaskListView : public QListView {
  Q_OBJECT

public:
  TaskListView(TaskListModel& tasks, QWidget* parent);

  void setChoosing(bool choosing);
  // -1 if there is none.
  [[nodiscard]] int currentRow() const { return currentIndex().row(); }
  // Makes the row current and visible. Does nothing if it does not exist.
  void goTo(int row);

Q_SIGNALS:
  void opened(int row);
  void checked(int row);
  // Emitted when the user touches and holds a row.
  void held(int row);
  void removalAsked();

protected:
  void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                   const QList<int>& roles) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

private:
  // The scroll position.
  struct Place {
    int row = -1;
    unsigned int uid = 0;
    std::vector<unsigned int> seen;  // the tasks of the visible rows
    int offset = 0;                  // hidden pixels of the first one
    int scrolled = 0;
  };

  void notePlace();
  void takePlace();
  void letGo();
  // The first visible row, and the one after the last.
  [[nodiscard]] std::pair<int, int> visibleRows() const;

  TaskListModel& tasks_;
  TaskRow* row_;
  Place place_;
  QBasicTimer hold_;
  // The task that is touched; none once the touch has become a drag.
  std::optional<unsigned int> pressed_;
  QPoint pressedAt_;
};

}  // namespace tasks
