#include "task_window.h"

#include "RES_ICON_Reader.h"
#include "TASK_UI_DetailView.h"
#include "ZApplication.h"
#include "form_screen.h"
#include "list_screen.h"
#include "messages.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTimer>

namespace tasks {

namespace {

using View = TASK_UI_View;

// In the order that the detail view takes them.
QValueList<QPixmap> stateIcons() {
  QValueList<QPixmap> icons;
  for (const char* name : {"complete", "incomplete", "hi_pri", "normal_pri", "lo_pri"})
    icons.append(
        RES_ICON_Reader::getIcon(QStringLiteral("todo_task_%1_small.gif").arg(name), true));
  return icons;
}

QStringList localFiles(const QMimeData& data) {
  QStringList paths;
  for (const QUrl& url : data.urls())
    if (url.isLocalFile())
      paths.append(url.toLocalFile());
  return paths;
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
  connect(&alarms_, &Alarms::opened, this, &TaskWindow::openTask);
  // Once the list is seen.
  QTimer::singleShot(0, &alarms_, &Alarms::look);
  if (const auto* application = qobject_cast<ZApplication*>(qApp))
    connect(application, &ZApplication::askReturnToIdle, this, &QWidget::close);
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
    screens_[type] = screen;
    addWidget(screen);
  }
  setCurrentWidget(screen);
  setWindowTitle(screen->windowTitle());
  screen->setFocus();
}

void TaskWindow::changeView(View::TASK_VIEW_TYPE from, View::TASK_VIEW_TYPE to,
                            ZTASK_ENG_Task* task) {
  switch (to) {
  case View::TASK_LIST_VIEW:
    list_->refresh();
    if (task != nullptr)
      list_->goTo(task->getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID));
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

// After the event that it is sent from.
void TaskWindow::disposeView(View::TASK_VIEW_TYPE type) {
  const auto found = screens_.find(type);
  if (found == screens_.end())
    return;
  View* screen = found->second;
  screens_.erase(found);
  removeWidget(screen);
  screen->hide();
  screen->deleteLater();
}

View* TaskWindow::makeDetailView(ZTASK_ENG_Task& task) {
  auto* screen = new TASK_UI_DetailView(this, "detail", 0);
  screen->setEngine(&store_);
  QValueList<QPixmap> icons = stateIcons();
  screen->loadPixmap(icons);
  screen->openView(&task);
  follow(*screen);
  return screen;
}

View* TaskWindow::makeForm(View::TASK_VIEW_TYPE from, const ZTASK_ENG_Task* task) {
  auto* screen = new FormScreen(this);
  screen->setEngine(&store_);
  screen->openTask(task, from);
  follow(*screen);
  return screen;
}

// Null where nothing is being edited.
FormScreen* TaskWindow::form() const {
  const auto found = screens_.find(View::TASK_FORM_VIEW);
  return found == screens_.end() ? nullptr : static_cast<FormScreen*>(found->second);
}

void TaskWindow::openTask(unsigned int uid) {
  ZTASK_ENG_Task task;
  if (store_.getTask(uid, task) != TASK_ENG_OK || (form() != nullptr && !form()->save()))
    return;
  // What was saved just now may be this task.
  static_cast<void>(store_.getTask(uid, task));
  showScreen(View::TASK_DETAIL_VIEW, makeDetailView(task));
  disposeView(View::TASK_FORM_VIEW);
  showNormal();
  raise();
  activateWindow();
}

void TaskWindow::import(const QStringList& paths) {
  if (!paths.isEmpty())
    import_.add(paths);
}

void TaskWindow::importEnded(const ImportResult& result) {
  list_->refresh();
  if (result.imported > 0)
    list_->goTo(result.lastUid);
  list_->tell(importText(result));
  if (result.storeFull)
    tellNotStored(TASK_ENG_MEMORY_FULL, this);
}

void TaskWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!localFiles(*event->mimeData()).isEmpty())
    event->acceptProposedAction();
}

void TaskWindow::dropEvent(QDropEvent* event) {
  import(localFiles(*event->mimeData()));
  event->acceptProposedAction();
}

// What was typed is kept; the window stays where it can't be.
void TaskWindow::closeEvent(QCloseEvent* event) {
  if (form() != nullptr && !form()->save()) {
    event->ignore();
    return;
  }
  hide();
  import_.finish();
  list_->finish();
  event->accept();
}

}  // namespace tasks
