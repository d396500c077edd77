#include "choice_field.h"

#include "field_look.h"
#include "state_icon.h"
#include "task_texts.h"
#include "ulo/look.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QStylePainter>
#include <QStyledItemDelegate>

namespace tasks {

namespace {

bool isEnter(const QKeyEvent& event) {
  return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter ||
         event.key() == Qt::Key_Select;
}

}  // namespace

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

// Qt asks the open list whether Enter overrides a shortcut, and the list closes at that moment. If
// the key arrived at the window of this field, Qt delivers it to the field afterwards, which would
// open the list again. This happens if the key is faster than the window of the list, or if the
// display sends it no keys. With this filter, Enter chooses when it is delivered.
bool ChoiceField::eventFilter(QObject* watched, QEvent* event) {
  const bool asked = event->type() == QEvent::ShortcutOverride;
  if ((!asked && event->type() != QEvent::KeyPress) || !isEnter(*static_cast<QKeyEvent*>(event)))
    return QComboBox::eventFilter(watched, event);
  if (asked) {
    event->accept();
    return true;
  }
  const int chosen = view()->currentIndex().row();
  hidePopup();
  if (chosen >= 0) {
    setCurrentIndex(chosen);
    Q_EMIT activated(chosen);  // may delete this field
  }
  return true;
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
