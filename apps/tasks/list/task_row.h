// How a row of the task list looks.
#pragma once

#include "task_words.h"

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
  void paintTexts(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index,
                  const QRect& room) const;

  QPixmap completed_;
  QPixmap incomplete_;
  std::map<ulo::Priority, QPixmap> priorities_;
  bool choosing_ = false;
};

}  // namespace tasks
