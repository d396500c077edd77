// The task list as the user touches it.
#pragma once

#include <QBasicTimer>
#include <QListView>

#include <optional>
#include <utility>
#include <vector>

namespace tasks {

class TaskListModel;
class TaskRow;

// Enter or a touch opens a task, Space or a touch of its status checks it off. Keeps the current
// task and what is seen where they are when the model is reset; a touch goes on meanwhile. A key
// that is held does nothing again that changes a task.
class TaskListView : public QListView {
  Q_OBJECT

public:
  TaskListView(TaskListModel& tasks, QWidget* parent);

  void setChoosing(bool choosing);
  // -1 where there is none.
  [[nodiscard]] int currentRow() const { return currentIndex().row(); }
  // Makes the row current and shows it; does nothing for one that isn't there.
  void goTo(int row);

Q_SIGNALS:
  void opened(int row);
  void checked(int row);
  // Touched and held.
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
  // Where the list was.
  struct Place {
    int row = -1;
    unsigned int uid = 0;
    std::vector<unsigned int> seen;  // the tasks from the first visible row on
    int offset = 0;                  // pixels of that row that are not seen
    int scrolled = 0;
  };

  void notePlace();
  void takePlace();
  void letGo();
  // The first row that is seen, and the one after the last.
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
