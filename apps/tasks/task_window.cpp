#include "task_window.h"

#include "RES_ICON_Reader.h"
#include "TASK_UI_DetailView.h"
#include "ZApplication.h"
#include "list_screen.h"
#include "stored_tasks.h"

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QMimeData>

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

TaskWindow::TaskWindow(ZTASK_ENG_Model& store) : store_(store), list_(new ListScreen(store)) {
  setAcceptDrops(true);
  follow(*list_);
  addWidget(list_);
  setWindowTitle(list_->windowTitle());
  connect(list_, &ListScreen::exitAsked, this, &QWidget::close);
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

View* TaskWindow::makeForm(View::TASK_VIEW_TYPE, const ZTASK_ENG_Task*) {
  return list_;
}
void TaskWindow::import(const QStringList&) {}
void TaskWindow::openTask(unsigned int) {}

void TaskWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!localFiles(*event->mimeData()).isEmpty())
    event->acceptProposedAction();
}

void TaskWindow::dropEvent(QDropEvent* event) {
  import(localFiles(*event->mimeData()));
  event->acceptProposedAction();
}

void TaskWindow::closeEvent(QCloseEvent* event) {
  hide();
  list_->finish();
  event->accept();
}

}  // namespace tasks
