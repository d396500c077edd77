#include "list/task_row.h"

#include "list/task_list_model.h"
#include "state_icon.h"
#include "ulo/look.h"

#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace tasks {

namespace {

// Cuts off the part of `room` where lines start, or end.
QRect takeStart(QRect& room, int width, Qt::LayoutDirection direction) {
  QRect part = room;
  if (direction == Qt::RightToLeft) {
    part.setLeft(room.right() + 1 - width);
    room.setRight(room.right() - width);
  } else {
    part.setWidth(width);
    room.setLeft(room.left() + width);
  }
  return part;
}

QRect takeEnd(QRect& room, int width, Qt::LayoutDirection direction) {
  return takeStart(room, width, direction == Qt::RightToLeft ? Qt::LeftToRight : Qt::RightToLeft);
}

void paintIcon(QPainter* painter, const QRect& place, const QPixmap& icon) {
  const QSize size = icon.deviceIndependentSize().toSize();
  painter->drawPixmap(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, place).topLeft(),
                      icon);
}

// A disc with a check mark, or a ring.
void paintMark(QPainter* painter, const QStyleOptionViewItem& option, const QRect& place,
               bool chosen) {
  const int side = ulo::iconSize(option.widget);
  QRectF circle = QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, QSize(side, side), place);
  circle.adjust(1, 1, -1, -1);
  painter->setRenderHint(QPainter::Antialiasing);
  painter->setPen(QPen(option.palette.color(chosen ? QPalette::Link : QPalette::Mid), 2));
  painter->setBrush(chosen ? option.palette.brush(QPalette::Link) : QBrush(Qt::NoBrush));
  painter->drawEllipse(circle);
  if (chosen) {
    painter->setPen(QPen(option.palette.color(QPalette::Base), 2));
    const auto at = [&](double x, double y) {
      return QPointF(circle.left() + x * circle.width(), circle.top() + y * circle.height());
    };
    painter->drawPolyline(QPolygonF({at(0.25, 0.52), at(0.44, 0.70), at(0.76, 0.32)}));
  }
  painter->setRenderHint(QPainter::Antialiasing, false);
}

// The red that is legible on this background.
QColor overdueColor(const QPalette& palette) {
  return palette.color(QPalette::Base).lightness() < 128 ? QColor(0xff, 0x8a, 0x80)
                                                         : QColor(0xc9, 0x2a, 0x2a);
}

void paintLine(QPainter* painter, const QStyleOptionViewItem& option, const QRect& place,
               const QString& text) {
  const Qt::Alignment side = QStyle::visualAlignment(option.direction, Qt::AlignLeft);
  painter->drawText(place, static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine,
                    painter->fontMetrics().elidedText(text, Qt::ElideRight, place.width()));
}

}  // namespace

TaskRow::TaskRow(QObject* parent)
    : QStyledItemDelegate(parent), completed_(stateIcon(ulo::shownState(true))),
      incomplete_(stateIcon(ulo::shownState(false))) {
  for (const ulo::PriorityEntry& entry : ulo::priorities)
    priorities_[entry.priority] = stateIcon(entry.shown);
}

QRect TaskRow::statusZone(const QWidget* widget, const QRect& row) {
  QRect room = row;
  return takeStart(room, ulo::iconSize(widget) + 2 * ulo::gap(widget), widget->layoutDirection());
}

int TaskRow::heightOf(const QWidget* widget) {
  return std::max(ulo::touchHeight(widget),
                  2 * widget->fontMetrics().height() + 2 * ulo::gap(widget));
}

QSize TaskRow::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
  return {0, heightOf(option.widget)};
}

void TaskRow::paint(QPainter* painter, const QStyleOptionViewItem& option,
                    const QModelIndex& index) const {
  painter->save();
  // Letters with many combining marks are higher than a line.
  painter->setClipRect(option.rect);
  const bool current = (option.state & QStyle::State_HasFocus) != 0;
  const bool chosen = choosing_ && index.data(TaskListModel::ChosenRole).toBool();
  const QPalette& palette = option.palette;
  painter->fillRect(option.rect,
                    palette.color(current || chosen ? QPalette::Highlight : QPalette::Base));
  QRect room = option.rect;
  painter->setPen(palette.color(QPalette::Button));
  painter->drawLine(room.bottomLeft(), room.bottomRight());
  const int gap = ulo::gap(option.widget);
  if (current) {
    QRect bar = option.rect;
    painter->fillRect(takeStart(bar, gap / 2, option.direction), palette.color(QPalette::Link));
  }
  const QRect status = takeStart(room, ulo::iconSize(option.widget) + 2 * gap, option.direction);
  if (choosing_)
    paintMark(painter, option, status, chosen);
  else
    paintIcon(painter, status,
              index.data(TaskListModel::CompletedRole).toBool() ? completed_ : incomplete_);
  // A row without a task has no priority.
  if (const QVariant priority = index.data(TaskListModel::PriorityRole); priority.isValid())
    paintIcon(painter, takeEnd(room, ulo::iconSize(option.widget) + 2 * gap, option.direction),
              priorities_.at(static_cast<ulo::Priority>(priority.toInt())));
  paintTexts(painter, option, index, room);
  painter->restore();
}

void TaskRow::paintTexts(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index, const QRect& room) const {
  const QPalette& palette = option.palette;
  const bool completed = index.data(TaskListModel::CompletedRole).toBool();
  QString due = index.data(TaskListModel::DueRole).toString();
  const QString category = index.data(TaskListModel::CategoryRole).toString();
  const int line = option.fontMetrics.height();
  const bool twoLines = !due.isEmpty() || !category.isEmpty();
  QRect place = room;
  place.setTop(room.top() + (room.height() - (twoLines ? 2 : 1) * line) / 2);
  place.setHeight(line);

  QFont font = option.font;
  font.setStrikeOut(completed);
  painter->setFont(font);
  painter->setPen(palette.color(completed ? QPalette::PlaceholderText : QPalette::Text));
  paintLine(painter, option, place, index.data(Qt::DisplayRole).toString());
  if (!twoLines)
    return;

  place.translate(0, line);
  font.setStrikeOut(false);
  if (!due.isEmpty()) {
    const bool overdue = index.data(TaskListModel::OverdueRole).toBool();
    font.setBold(overdue);
    painter->setFont(font);
    painter->setPen(overdue ? overdueColor(palette) : palette.color(QPalette::PlaceholderText));
    const int width = std::min(QFontMetrics(font).horizontalAdvance(due) + 1, place.width());
    paintLine(painter, option, takeStart(place, width, option.direction), due);
    takeStart(place, std::min(2 * ulo::gap(option.widget), place.width()), option.direction);
  }
  font.setBold(false);
  painter->setFont(font);
  painter->setPen(palette.color(QPalette::PlaceholderText));
  paintLine(painter, option, place, category);
}

}  // namespace tasks
