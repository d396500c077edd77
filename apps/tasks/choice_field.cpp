#include "choice_field.h"

#include "field_look.h"
#include "state_icon.h"
#include "task_texts.h"
#include "ulo/look.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QStylePainter>
#include <QStyledItemDelegate>

#include <utility>

namespace tasks {

ChoiceField::ChoiceField(QWidget* parent) : QComboBox(parent) {
  setMinimumHeight(ulo::touchHeight(this));
  setIconSize(QSize(ulo::iconSize(this), ulo::iconSize(this)));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
  // The style sheet sets the height of the rows.
  setItemDelegate(new QStyledItemDelegate(this));
}

// Longer choices are elided.
QSize ChoiceField::minimumSizeHint() const {
  return {2 * ulo::touchHeight(this), ulo::touchHeight(this)};
}

void ChoiceField::showPopup() {
  QComboBox::showPopup();
  view()->installEventFilter(this);
}

// Before Qt delivers a key, it announces it to the open list, which closes on Enter. If the key has
// arrived at the window of this field, the field gets it then and would open the list again. This
// happens to keys that are faster than the window of the list, and to all keys on a display where
// the list gets none.
bool ChoiceField::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride)
    announced_ = static_cast<QKeyEvent*>(event)->timestamp();
  else if (event->type() == QEvent::KeyPress)
    announced_ = 0;
  return QComboBox::eventFilter(watched, event);
}

bool ChoiceField::event(QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const quint64 announced = std::exchange(announced_, 0);
    if (announced != 0 && static_cast<QKeyEvent*>(event)->timestamp() == announced)
      return true;
  }
  return QComboBox::event(event);
}

void ChoiceField::keyPressEvent(QKeyEvent* event) {
  const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
  switch (plain ? event->key() : Qt::Key_unknown) {
  case Qt::Key_Up:
  case Qt::Key_Down:
    focusNextPrevChild(event->key() == Qt::Key_Down);
    break;
  case Qt::Key_Return:
  case Qt::Key_Enter:
  case Qt::Key_Select:
    showPopup();
    break;
  default:
    QComboBox::keyPressEvent(event);
  }
}

void ChoiceField::wheelEvent(QWheelEvent* event) {
  event->ignore();
}

void ChoiceField::paintEvent(QPaintEvent*) {
  QStylePainter painter(this);
  QStyleOptionComboBox option;
  initStyleOption(&option);
  painter.drawComplexControl(QStyle::CC_ComboBox, option);
  int room = style()
                 ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this)
                 .width();
  if (!option.currentIcon.isNull())
    room -= option.iconSize.width() + ulo::gap(this);
  option.currentText = option.fontMetrics.elidedText(option.currentText, Qt::ElideRight, room);
  painter.drawControl(QStyle::CE_ComboBoxLabel, option);
  const QRect arrow =
      style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this);
  drawArrow(painter, arrow, Qt::DownArrow, this);
}

namespace {

void add(ChoiceField& field, int code, const ulo::ShownAs& shown) {
  field.addItem(stateIcon(shown), shownText(shown), code);
}

}  // namespace

ChoiceField* newStatusField(QWidget* parent) {
  auto* field = new ChoiceField(parent);
  add(*field, codeOf(ulo::Status::needsAction), ulo::shownState(false));
  add(*field, codeOf(ulo::Status::completed), ulo::shownState(true));
  return field;
}

ChoiceField* newPriorityField(QWidget* parent) {
  auto* field = new ChoiceField(parent);
  for (const ulo::PriorityEntry& entry : ulo::priorities)
    add(*field, codeOf(entry.priority), entry.shown);
  return field;
}

}  // namespace tasks
