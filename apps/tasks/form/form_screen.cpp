#include "form/form_screen.h"

#include "RES_ICON_Reader.h"
#include "ZMessageDlg.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "form/category_field.h"
#include "form/date_field.h"
#include "form/form_rows.h"
#include "form/line_field.h"
#include "form/note_field.h"
#include "menu_items.h"
#include "messages.h"
#include "modal.h"
#include "tasksMenu.h"
#include "ulo/texts.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QKeyEvent>
#include <QShortcut>

namespace tasks {

namespace {

using Task = ZTASK_ENG_Task;

QString cancelText() {
  return ulo::text("TXT_RID_OPTION_CANCEL_EDIT", "Cancel Edit");
}

DateField* newDueField() {
  return new DateField(DateDialog::Kind::day,
                       {ulo::text("TXT_RID_HEADER_DUE_DATE", "Due Date"),
                        ulo::text("TXT_RID_STANDARD_NO_DUE_DATE", "No Due Date")});
}

DateField* newAlarmField() {
  return new DateField(DateDialog::Kind::dayAndTime,
                       {ulo::text("TXT_RID_HEADER_ALARM", "Alarm"),
                        ulo::text("TXT_RID_STANDARD_NO_ALARM", "No Alarm")});
}

template <typename Code> void choose(ChoiceField& field, Code code) {
  field.setCurrentIndex(field.findData(codeOf(code)));
}

template <typename Code> Code chosen(const ChoiceField& field) {
  return static_cast<Code>(field.currentData().toInt());
}

std::optional<QDate> dayOf(const std::optional<QDateTime>& date) {
  return date ? std::optional(date->date()) : std::nullopt;
}

}  // namespace

FormScreen::FormScreen(QWidget* parent) : TASK_UI_View(parent, nullptr, 0) {
  addRows();
  followFields();
  addKeys();
  auto* saving = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_S), this);
  saving->setContext(Qt::WidgetWithChildrenShortcut);
  connect(saving, &QShortcut::activated, this, &FormScreen::finish);
}

void FormScreen::addRows() {
  auto* rows = new FormRows(this);
  setContentWidget(rows);
  const auto add = [rows](const QString& label, QWidget* field, bool grows = false) {
    field->setAccessibleName(QString(label).remove(u':'));
    rows->addRow(label, field, grows);
  };
  add(ulo::text("TXT_RID_LABEL_FORMITEM_TITLE", "Title:"),
      title_ = new LineField(Task::summaryLimit));
  rows->addRow(ulo::text("TXT_RID_LABEL_FORMITEM_DUE_DATE", "Due Date:"), due_ = newDueField());
  rows->addRow(ulo::text("TXT_RID_LABEL_FORMITEM_ALARM", "Alarm:"), alarm_ = newAlarmField());
  add(ulo::text("TXT_RID_LABEL_FORMITEM_STATUS", "Status:"), status_ = newStatusField(nullptr));
  add(ulo::text("TXT_RID_LABEL_FORMITEM_PRIORITY", "Priority:"),
      priority_ = newPriorityField(nullptr));
  add(ulo::text("TXT_RID_LABEL_FORMITEM_CATEGORY", "Category:"), category_ = new CategoryField);
  const QString notes = ulo::text("TXT_RID_LABEL_FORMITEM_NOTES", "Notes:");
  add(notes, note_ = new NoteField(Task::noteLimit), true);
  note_->edit()->setAccessibleName(QString(notes).remove(u':'));
  setFocusProxy(title_);
}

void FormScreen::addKeys() {
  auto* keys = new ZSoftKey(QStringLiteral("CST_3"), this);
  auto* menu = new ZOptionsMenu(keys, nullptr, 0, ZOptionsMenu::screenClass,
                                std::make_unique<tasksMenu>(), QStringLiteral("formView"));
  menu->changeItem(ulo::formMenu::cancelEdit, cancelText());
  menu->connectItem(ulo::formMenu::cancelEdit, this, SLOT(cancelEdit()));
  keys->setText(ZSoftKey::left, ulo::text("TXT_RID_SOFTKEY_OPTIONS", "Options"));
  keys->setOptMenu(ZSoftKey::left, menu);
  keys->setText(ZSoftKey::middle, ulo::text("TXT_RID_SOFTKEY_SAVE", "Save"));
  keys->setClickedSlot(ZSoftKey::middle, this, SLOT(finish()));
  keys->setText(ZSoftKey::right, ulo::text("TXT_RID_SOFTKEY_BACK", "Back"));
  keys->setClickedSlot(ZSoftKey::right, this, SLOT(finish()));
  setCSTWidget(keys);
}

void FormScreen::openTask(const ZTASK_ENG_Task* task, TASK_UI_View::TASK_VIEW_TYPE from) {
  from_ = from;
  draft_ = task == nullptr ? TaskDraft() : TaskDraft(*task);
  setAppTitle(draft_.isNew() ? ulo::text("TXT_RID_HEADER_NEW_TASK", "New Task")
                             : ulo::text("TXT_RID_HEADER_EDIT_TASK", "Edit Task"));
  showDraft();
  title_->setFocus();
}

void FormScreen::showDraft() {
  const Task& task = draft_.task();
  title_->setStored(task.getString(Task::TASK_FIELD_SUMMARY));
  const std::optional<QDate> due = draft_.due();
  due_->setDate(due ? std::optional(due->startOfDay()) : std::nullopt);
  alarm_->setDate(draft_.alarm());
  choose(*status_, ulo::isCompleted(task) ? ulo::Status::completed : ulo::Status::needsAction);
  choose(*priority_, ulo::priorityOf(task));
  category_->setStored(*engine(), task.getString(Task::TASK_FIELD_CATEGORY));
  note_->setStored(task.getString(Task::TASK_FIELD_NOTE));
}

// Applies each edit to the draft.
void FormScreen::followFields() {
  connect(title_, &QLineEdit::textEdited, this, [this] { draft_.setSummary(title_->value()); });
  connect(due_, &DateField::chosen, this, [this] { draft_.setDue(dayOf(due_->date())); });
  connect(alarm_, &DateField::chosen, this, [this] { draft_.setAlarm(alarm_->date()); });
  connect(status_, &QComboBox::activated, this,
          [this] { draft_.setStatus(chosen<ulo::Status>(*status_)); });
  connect(priority_, &QComboBox::activated, this,
          [this] { draft_.setPriority(chosen<ulo::Priority>(*priority_)); });
  connect(category_, &CategoryField::chosen, this,
          [this] { draft_.setCategory(category_->category()); });
  connect(note_, &NoteField::edited, this, [this] { draft_.setNote(note_->value()); });
}

bool FormScreen::save() {
  // Includes text that an input method has not committed yet.
  QGuiApplication::inputMethod()->commit();
  const int code = draft_.save(*engine());
  if (code != TASK_ENG_OK)
    tellNotStored(code, this);
  return code == TASK_ENG_OK;
}

void FormScreen::finish() {
  if (save())
    leave();
}

void FormScreen::cancelEdit() {
  if (!isChanged() || mayDiscard())
    leave();
}

void FormScreen::leave() {
  Task task = draft_.original();
  const bool gone = draft_.isNew() || engine()->getTask(task.getUINT32(Task::TASK_FIELD_UID),
                                                        task) == TASK_ENG_NOT_FOUND;
  const bool toDetails = from_ == TASK_DETAIL_VIEW && !gone;
  Q_EMIT changeView(TASK_FORM_VIEW, toDetails ? TASK_DETAIL_VIEW : TASK_LIST_VIEW,
                    gone ? nullptr : &task);
  Q_EMIT disposeView(TASK_FORM_VIEW);
}

bool FormScreen::mayDiscard() {
  ulo::Modal<ZMessageDlg> question(
      cancelText(), ulo::text("TXT_RID_INSTRUCTIONALTXT_DISCARD_CHANGES", "Discard the changes?"),
      ZMessageDlg::question, this);
  return question.exec();
}

void FormScreen::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape)
    cancelEdit();
  else if (event->key() == Qt::Key_Back)
    finish();
  else
    TASK_UI_View::keyPressEvent(event);
}

}  // namespace tasks
