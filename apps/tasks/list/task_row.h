// How a row of the task list looks.
#pragma once

#include <QPixmap>
#include <QStyledItemDelegate>

#include <map>

namespace tasks {

// Status, title and priority; below the title due day and category. All rows are equally high. One
// line of text each, elided where it is too long.
class TaskRow : public QStyledItemDelegate {
public:
  explicit TaskRow(QObject* parent = nullptr);

  // Rows begin with the mark of a chosen task in place of the status.
  void setChoosing(bool choosing) { choosing_ = choosing; }

  // The part of a row that checks it off.
  [[nodiscard]] static QRect statusZone(const QWidget* widget, const QRect& row);
  [[nodiscard]] static int heightOf(const QWidget* widget);

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option,
                               const QModelIndex& index) const override;

private:
  struct Icons {
    QPixmap complete, incomplete, high, normal, low;
  };
  void paintTexts(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index,
                  const QRect& room) const;
  [[nodiscard]] const QPixmap& priorityIcon(int priority) const;

  Icons icons_;
  bool choosing_ = false;
};

}  // namespace tasks
