// The look of a row of the task list.
#pragma once

#include "task_words.h"

#include <QPixmap>
#include <QStyledItemDelegate>

#include <map>

namespace tasks {

// Paints status, title and priority, and below the title the due day and the category. All rows
// have the same height. Texts are on one line and elided.
class TaskRow : public QStyledItemDelegate {
public:
  explicit TaskRow(QObject* parent = nullptr);

  // In selection mode rows start with a selection mark in place of the status.
  void setChoosing(bool choosing) { choosing_ = choosing; }

  // The part of a row that completes the task when touched.
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
