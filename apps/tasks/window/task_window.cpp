#include "window/task_window.h"

#include "TASK_UI_DetailView.h"
#include "ZApplication.h"
#include "ZDetailView.h"
#include "form/form_screen.h"
#include "list/list_screen.h"
#include "messages.h"
#include "state_icon.h"
#include "stored_text.h"
#include "task_texts.h"
#include "ulo/texts.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QThread>

namespace tasks {

namespace {

using View = TASK_UI_View;

// In the order of TASK_UI_DetailView::loadPixmap.
QValueList<QPixmap> stateIcons() {
  QValueList<QPixmap> icons;
  for (const ulo::StateEntry& entry : ulo::states)
    icons.append(stateIcon(entry.shown));
  for (const ulo::PriorityEntry& entry : ulo::priorities)
    icons.append(stateIcon(entry.shown));
  return icons;
}

unsigned int uidOf(const ZTASK_ENG_Task& task) {
  return task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
}

// Whether the details of both tasks look the same.
bool areAlike(const ZTASK_ENG_Task& left, const ZTASK_ENG_Task& right) {
  const auto isSame = [&](ZTASK_ENG_Task::TASK_FIELD_T text) {
    return left.getString(text) == right.getString(text);
  };
  return isSame(ZTASK_ENG_Task::TASK_FIELD_SUMMARY) && isSame(ZTASK_ENG_Task::TASK_FIELD_NOTE) &&
         isSame(ZTASK_ENG_Task::TASK_FIELD_CATEGORY) &&
         ulo::isCompleted(left) == ulo::isCompleted(right) &&
         ulo::priorityOf(left) == ulo::priorityOf(right) &&
         left.getInstant(ZTASK_ENG_Task::TASK_FIELD_DUE) ==
             right.getInstant(ZTASK_ENG_Task::TASK_FIELD_DUE);
}

QStringList localFiles(const QMimeData& data) {
  QStringList paths;
  for (const QUrl& url : data.urls())
    if (url.isLocalFile())
      paths.append(url.toLocalFile());
  return paths;
}

// Adds a row to the details of a task that repeats, after the due date.
void addRepetition(TASK_UI_DetailView& details, unsigned int uid) {
  constexpr int repetitionRow = 2;
  ulo::Repetition repetition;
  if (ulo::readRepetition(uid, repetition) != TASK_ENG_OK)
    return;
  const QString text = repetitionText(repetition);
  auto* rows = details.findChild<ZDetailView*>();
  if (text.isEmpty() || rows == nullptr)
    return;
  auto* row =
      new ZDetailItem(ZDetailItem::text, ulo::text("TXT_RID_LABEL_FORMITEM_REPEATS", "Repeats:"));
  row->appendTextIconRow(text);
  rows->insertItem(repetitionRow, row);
}

}  // namespace

TaskWindow::TaskWindow(ZTASK_ENG_Model& store)
    : store_(store), changes_(this), alarms_(store, this), import_(store),
      list_(new ListScreen(store)) {
  setAcceptDrops(true);
  follow(*list_);
  addWidget(list_);
  setWindowTitle(list_->windowTitle());
  connect(list_, &ListScreen::exitAsked, this, &QWidget::close);
  connect(&changes_, &StoreChanges::changed, list_, &ListScreen::refresh);
  connect(&changes_, &StoreChanges::changed, &alarms_, &Alarms::look);
  connect(&import_, &Import::ended, this, &TaskWindow::importEnded);
  connect(&import_, &Import::progressed, list_,
          [this](unsigned int stored, unsigned int all) { list_->tell(importText(stored, all)); });
  connect(&changes_, &StoreChanges::changed, this, &TaskWindow::renewDetails);
  tidying_.setSingleShot(true);
  tidying_.setInterval(std::chrono::milliseconds(100));
  connect(&tidying_, &QTimer::timeout, this, &TaskWindow::tidy);
  connect(&alarms_, &Alarms::opened, this, &TaskWindow::openTask);
  connect(&alarms_, &Alarms::notCompleted, this, &TaskWindow::tellNotCompleted);
  // After the list has been shown.
  QTimer::singleShot(0, &alarms_, SLOT(look()));
  ulo::connectReturnToIdle(this, SLOT(close()));
}

void TaskWindow::follow(View& screen) {
  connect(&screen, &View::changeView, this, &TaskWindow::changeView);
  connect(&screen, &View::disposeView, this, &TaskWindow::disposeView);
  connect(&screen, &QWidget::windowTitleChanged, this, [this, &screen](const QString& title) {
    if (currentWidget() == &screen)
      setWindowTitle(title);
  });
}

void TaskWindow::showScreen(View::TASK_VIEW_TYPE type, View* screen) {
  if (screen != list_) {
    disposeView(type);
    screens_[type] = {screen, QThread::currentThread()->loopLevel()};
    addWidget(screen);
  }
  setCurrentWidget(screen);
  setWindowTitle(screen->windowTitle());
  screen->setFocus();
}

void TaskWindow::showInList(unsigned int uid) {
  list_->goTo(uid);
  if (list_->leavesOut(uid))
    list_->tell(ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_SAVED_NOT_SHOWN",
                          "Saved. This view does not show the task."));
}

void TaskWindow::changeView(View::TASK_VIEW_TYPE from, View::TASK_VIEW_TYPE to,
                            ZTASK_ENG_Task* task) {
  switch (to) {
  case View::TASK_LIST_VIEW:
    list_->refresh();
    if (task != nullptr)
      showInList(uidOf(*task));
    showScreen(to, list_);
    break;
  case View::TASK_FORM_VIEW:
    showScreen(to, makeForm(from, task));
    break;
  case View::TASK_DETAIL_VIEW:
    if (task != nullptr)
      showScreen(to, makeDetailView(*task));
    break;
  }
}

// Closes the dialogs of the screen first: the code that opened one, and the menu from which it was
// opened, are still running.
void TaskWindow::disposeView(View::TASK_VIEW_TYPE type) {
  const auto found = screens_.find(type);
  if (found == screens_.end())
    return;
  const Screen screen = found->second;
  screens_.erase(found);
  removeWidget(screen.view);
  screen.view->hide();
  left_.push_back(screen);
  for (QDialog* dialog : screen.view->findChildren<QDialog*>())
    dialog->reject();
  dropLeft();
}

// A screen is deleted after the event in which it was disposed of, and never while an event loop
// runs that it started.
void TaskWindow::dropLeft() {
  std::erase_if(left_, [](const Screen& screen) {
    const bool isFree = QThread::currentThread()->loopLevel() <= screen.loops;
    if (isFree)
      screen.view->deleteLater();
    return isFree;
  });
  if (!left_.empty())
    tidying_.start();
}

// Not while a menu or a dialog is open, which belong to the task that was shown when they were
// opened.
void TaskWindow::renewDetails() {
  const auto found = screens_.find(View::TASK_DETAIL_VIEW);
  QWidget* modal = QApplication::activeModalWidget();
  // The message of an alarm does not belong to the task, and may stay open for long.
  if (qobject_cast<AlarmMessage*>(modal) != nullptr)
    modal = nullptr;
  detailsAreOld_ =
      found != screens_.end() && (QApplication::activePopupWidget() != nullptr || modal != nullptr);
  if (detailsAreOld_)
    tidying_.start();
  if (detailsAreOld_ || found == screens_.end())
    return;
  ZTASK_ENG_Task task;
  const int code = store_.getTask(uidOf(details_), task);
  if (code == TASK_ENG_NOT_FOUND) {
    list_->tell(
        ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_WAS_DELETED", "The task has been deleted."));
    changeView(View::TASK_DETAIL_VIEW, View::TASK_LIST_VIEW, nullptr);
    disposeView(View::TASK_DETAIL_VIEW);
  } else if (code == TASK_ENG_OK && !areAlike(task, details_)) {
    showScreen(View::TASK_DETAIL_VIEW, makeDetailView(task));
  }
}

void TaskWindow::tidy() {
  dropLeft();
  if (detailsAreOld_)
    renewDetails();
}

View* TaskWindow::makeDetailView(ZTASK_ENG_Task& task) {
  auto* screen = new TASK_UI_DetailView(this, "detail", 0);
  screen->setEngine(&store_);
  QValueList<QPixmap> icons = stateIcons();
  screen->loadPixmap(icons);
  screen->openView(&task);
  addRepetition(*screen, uidOf(task));
  details_ = task;
  follow(*screen);
  return screen;
}

View* TaskWindow::makeForm(View::TASK_VIEW_TYPE from, const ZTASK_ENG_Task* task) {
  auto* screen = new FormScreen(this);
  screen->setEngine(&store_);
  // The task may have changed since it was shown.
  ZTASK_ENG_Task stored;
  const bool isStored = task != nullptr && store_.getTask(uidOf(*task), stored) == TASK_ENG_OK;
  screen->openTask(isStored ? &stored : task, from);
  follow(*screen);
  return screen;
}

// Null if nothing is being edited.
FormScreen* TaskWindow::form() const {
  const auto found = screens_.find(View::TASK_FORM_VIEW);
  return found == screens_.end() ? nullptr : static_cast<FormScreen*>(found->second.view);
}

void TaskWindow::openTask(unsigned int uid) {
  ZTASK_ENG_Task task;
  if (store_.getTask(uid, task) != TASK_ENG_OK || (form() != nullptr && !form()->save()))
    return;
  list_->keep(uid);
  // The form may just have saved this task.
  static_cast<void>(store_.getTask(uid, task));
  showScreen(View::TASK_DETAIL_VIEW, makeDetailView(task));
  disposeView(View::TASK_FORM_VIEW);
  setWindowState(windowState() & ~Qt::WindowMinimized);
  show();
  raise();
  activateWindow();
}

// The user acted on the desktop, where other windows may cover this one.
void TaskWindow::tellNotCompleted(int code) {
  list_->tell(
      code == TASK_ENG_NOT_FOUND
          ? ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_WAS_DELETED", "The task has been deleted.")
          : ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_NOT_SAVED", "The task could not be saved."));
  QApplication::alert(this);
}

void TaskWindow::import(const QStringList& paths) {
  if (!paths.isEmpty())
    import_.add(paths);
}

void TaskWindow::importEnded(const ImportResult& result) {
  list_->refresh();
  const bool hasTask = result.lastUid != ZTASK_ENG_Task::notStored;
  if (hasTask)
    list_->goTo(result.lastUid);
  const bool isShown = !hasTask || !list_->leavesOut(result.lastUid);
  list_->tell(importText(result, isShown));
  if (result.storeFull)
    tellNotStored(TASK_ENG_MEMORY_FULL, this);
}

void TaskWindow::keyPressEvent(QKeyEvent* event) {
  auto* details = qobject_cast<TASK_UI_DetailView*>(currentWidget());
  if (details != nullptr && (event->key() == Qt::Key_Escape || event->key() == Qt::Key_Back))
    details->slotBack();
  else
    QStackedWidget::keyPressEvent(event);
}

void TaskWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!localFiles(*event->mimeData()).isEmpty())
    event->acceptProposedAction();
}

void TaskWindow::dropEvent(QDropEvent* event) {
  import(localFiles(*event->mimeData()));
  event->acceptProposedAction();
}

// Saves the open form, and stays open if that fails. Closes all dialogs.
void TaskWindow::closeEvent(QCloseEvent* event) {
  if (form() != nullptr && !form()->save()) {
    event->ignore();
    return;
  }
  for (QDialog* dialog : findChildren<QDialog*>())
    dialog->reject();
  hide();
  import_.finish();
  list_->finish();
  event->accept();
}

}  // namespace tasks
