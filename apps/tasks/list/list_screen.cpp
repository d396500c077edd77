#include "list/list_screen.h"

#include "TASK_UI_DetailView.h"
#include "ZOptionsMenu.h"
#include "ZSoftKey.h"
#include "change_task.h"
#include "list/filter_bar.h"
#include "list/list_settings.h"
#include "list/notice_bar.h"
#include "list/share_task.h"
#include "list/synchronizer.h"
#include "list/task_list_view.h"
#include "menu_items.h"
#include "messages.h"
#include "task_texts.h"
#include "tasksMenu.h"
#include "ulo/look.h"
#include "ulo/texts.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QScrollArea>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tasks {

namespace {

using Task = ZTASK_ENG_Task;

namespace listMenu = ulo::listMenu;

struct ViewTitle {
  ZTASK_ENG_Model::TASK_CATEGORY view;
  listMenu::Item menuItem;
  const char* id;
  const char* english;
  // The text for an empty view.
  const char* emptyId;
  const char* emptyEnglish;
};
constexpr ViewTitle viewTitles[] = {
    {ZTASK_ENG_Model::TASK_CATEGORY_ALL, listMenu::viewAll, "TXT_RID_OPTION_ALL_TASKS", "All Tasks",
     "TXT_RID_INSTRUCTIONALTXT_NO_TASKS_YET",
     "There are no tasks yet.\n\nPress New to write one down, or drop a calendar file here."},
    {ZTASK_ENG_Model::TASK_CATEGORY_DUE, listMenu::viewDue, "TXT_RID_OPTION_DUE_TASKS", "Due Tasks",
     "TXT_RID_INSTRUCTIONALTXT_NO_DUE_TASKS",
     "Nothing is due today.\n\nOptions, View by shows the other tasks."},
    {ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE, listMenu::viewIncomplete,
     "TXT_RID_OPTION_INCOMPLETE_TASKS", "Incomplete Tasks",
     "TXT_RID_INSTRUCTIONALTXT_NO_INCOMPLETE_TASKS",
     "Nothing is left to do.\n\nPress New to write a task down."},
    {ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED, listMenu::viewCompleted,
     "TXT_RID_OPTION_COMPLETED_TASKS", "Completed Tasks",
     "TXT_RID_INSTRUCTIONALTXT_NO_COMPLETED_TASKS",
     "No task is completed yet.\n\nTouch the box of a task, or press Space, to check it off."},
};

const ViewTitle& titleOf(ZTASK_ENG_Model::TASK_CATEGORY view) {
  return *std::find_if(std::begin(viewTitles), std::end(viewTitles),
                       [&](const ViewTitle& title) { return title.view == view; });
}

struct MenuItem {
  int id;
  const char* slot;  // null for a heading
  const char* textId;
  const char* english;
};

}  // namespace

ListScreen::ListScreen(ZTASK_ENG_Model& store, QWidget* parent)
    : TASK_UI_View(parent, "list", 0), store_(store), today_(QDate::currentDate()),
      model_(store, [this] { return today_; }), removal_(store, undoTime) {
  setEngine(&store);
  buildContent();
  followContent();
  buildKeys();
  connect(&model_, &TaskListModel::stateChanged, this, &ListScreen::updateState);
  connect(&removal_, &PendingRemoval::changed, this, &ListScreen::removalChanged);
  connect(&removal_, &PendingRemoval::failed, this, [this] {
    syncWanted_ = false;
    tell(
        ulo::text("TXT_RID_INSTRUCTIONALTXT_TASKS_NOT_DELETED", "Not all tasks could be deleted."));
  });
  day_.setObjectName(QStringLiteral("day"));
  connect(&day_, &QTimer::timeout, this, [this] {
    if (today_ != QDate::currentDate())
      refresh();
  });
  day_.start(std::chrono::minutes(1));
  showOrder(readListOrder());
}

ListScreen::~ListScreen() = default;

void ListScreen::buildContent() {
  auto* content = new QWidget;
  content->setBackgroundRole(QPalette::Base);
  content->setAutoFillBackground(true);
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  filter_ = new FilterBar(content);
  list_ = new TaskListView(model_, content);
  empty_ = new QLabel;
  notice_ = new NoticeBar(content);
  empty_->setTextFormat(Qt::PlainText);
  empty_->setWordWrap(true);
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setMargin(2 * ulo::gap(this));
  empty_->setForegroundRole(QPalette::PlaceholderText);
  emptyPage_ = new QScrollArea(content);
  emptyPage_->setFrameShape(QFrame::NoFrame);
  emptyPage_->setWidgetResizable(true);
  emptyPage_->setWidget(empty_);
  ulo::makeTouchable(emptyPage_);
  pages_ = new QStackedLayout;
  pages_->addWidget(list_);
  pages_->addWidget(emptyPage_);
  column->addWidget(filter_);
  column->addLayout(pages_, 1);
  column->addWidget(notice_);
  setContentWidget(content);
  setFocusProxy(list_);
}

void ListScreen::followContent() {
  connect(filter_, &FilterBar::changed, this, [this] { model_.setFilter(filter_->filter()); });
  connect(filter_, &FilterBar::left, this, [this] { focusProxy()->setFocus(); });
  connect(list_, &TaskListView::opened, this, &ListScreen::openTask);
  connect(list_, &TaskListView::checked, this, &ListScreen::checkTask);
  connect(list_, &TaskListView::removalAsked, this, &ListScreen::removeTasks);
  connect(list_, &TaskListView::held, this, [this](int row) {
    if (!choosing_)
      setChoosing(true);
    model_.setChosen(row, true);
  });
  connect(notice_, &NoticeBar::undoAsked, this, &ListScreen::undoRemoval);
}

void ListScreen::buildKeys() {
  auto* keys = new ZSoftKey(QStringLiteral("CST_3"), this);
  setCSTWidget(keys);
  keys->setText(ZSoftKey::left, ulo::text("TXT_RID_SOFTKEY_OPTIONS", "Options"));
  keys->setClickedSlot(ZSoftKey::right, this, SLOT(rightKey()));
  buildMenu();
  updateKeys();
}

void ListScreen::buildMenu() {
  const MenuItem items[] = {
      {listMenu::selectAll, SLOT(selectAll()), "TXT_RID_OPTION_SELECT_ALL", "Select All"},
      {listMenu::unselectAll, SLOT(unselectAll()), "TXT_RID_OPTION_UNSELECT_ALL", "Unselect All"},
      {listMenu::viewBy, nullptr, "TXT_RID_OPTION_VIEW_BY", "View by"},
      {listMenu::viewAll, SLOT(viewAll()), "TXT_RID_OPTION_ALL_TASKS", "All Tasks"},
      {listMenu::viewDue, SLOT(viewDue()), "TXT_RID_OPTION_DUE_TASKS", "Due Tasks"},
      {listMenu::viewIncomplete, SLOT(viewIncomplete()), "TXT_RID_OPTION_INCOMPLETE_TASKS",
       "Incomplete Tasks"},
      {listMenu::viewCompleted, SLOT(viewCompleted()), "TXT_RID_OPTION_COMPLETED_TASKS",
       "Completed Tasks"},
      {listMenu::createTask, SLOT(createTask()), "TXT_RID_OPTION_CREATE_NEW_TASK",
       "Create New Task"},
      {listMenu::edit, SLOT(editTask()), "TXT_RID_OPTION_EDIT", "Edit"},
      {listMenu::share, nullptr, "TXT_RID_OPTION_SHARE_TASK_VIA", "Share Task via"},
      {listMenu::bluetooth, SLOT(shareByBluetooth()), "TXT_RID_OPTION_BLUETOOTH", "Bluetooth"},
      {listMenu::message, SLOT(shareByMessage()), "TXT_RID_OPTION_MESSAGE", "Message"},
      {listMenu::synchronize, SLOT(synchronize()), "TXT_RID_OPTION_SYNCHRONIZE", "Synchronize"},
      {listMenu::remove, SLOT(removeMenuTasks()), "TXT_RID_OPTION_DELETE", "Delete"},
      {listMenu::selectMultiple, SLOT(selectMultiple()), "TXT_RID_OPTION_SELECT_MULTIPLE",
       "Select Multiple"},
      {listMenu::sortBy, nullptr, "TXT_RID_OPTION_SORT_BY", "Sort by"},
      {listMenu::sortByDue, SLOT(sortByDue()), "TXT_RID_OPTION_SORT_DUE_DATE", "Due Date"},
      {listMenu::sortByPriority, SLOT(sortByPriority()), "TXT_RID_OPTION_SORT_PRIORITY",
       "Priority"},
  };
  menu_ = new ZOptionsMenu(cstWidget(), nullptr, 0, ZOptionsMenu::screenClass,
                           std::make_unique<tasksMenu>(), QStringLiteral("listView"));
  for (const MenuItem& item : items) {
    menu_->changeItem(item.id, ulo::text(item.textId, item.english));
    if (item.slot != nullptr)
      menu_->connectItem(item.id, this, item.slot);
  }
  connect(menu_, &ZOptionsMenu::opening, this, &ListScreen::updateMenu);
  cstWidget()->setOptMenu(ZSoftKey::left, menu_);
}

void ListScreen::updateMenu() {
  menuTargets_ = targets();
  const std::size_t count = menuTargets_.size();
  const bool any = model_.rowCount() > 0;
  for (const int item : {listMenu::selectAll, listMenu::unselectAll})
    menu_->showItem(item, choosing_);
  for (const int item : {listMenu::viewBy, listMenu::createTask, listMenu::synchronize,
                         listMenu::selectMultiple, listMenu::sortBy})
    menu_->showItem(item, !choosing_);
  menu_->enableItem(listMenu::selectAll,
                    any && !model_.isChoosingAll() &&
                        model_.chosenCount() < static_cast<unsigned int>(model_.rowCount()));
  menu_->enableItem(listMenu::unselectAll, model_.chosenCount() > 0);
  menu_->enableItem(listMenu::edit, count == 1);
  menu_->enableItem(listMenu::share, count == 1);
  menu_->enableItem(listMenu::remove, count > 0);
  menu_->enableItem(listMenu::selectMultiple, any);
  menu_->enableItem(listMenu::sortBy, any);
  menu_->enableItem(listMenu::synchronize, Synchronizer::isSetUp(),
                    ulo::text("TXT_RID_STANDARD_NO_SYNC_PARTNER", "No sync partner"));
  for (const ViewTitle& title : viewTitles)
    menu_->checkItem(title.menuItem, title.view == model_.order().view);
  menu_->checkItem(listMenu::sortByDue, model_.order().sort == ZTASK_ENG_Model::TASK_SORT_DUE);
  menu_->checkItem(listMenu::sortByPriority,
                   model_.order().sort == ZTASK_ENG_Model::TASK_SORT_PRIORITY);
}

void ListScreen::updateKeys() {
  ZSoftKey* keys = cstWidget();
  if (choosing_) {
    keys->setText(ZSoftKey::middle, ulo::text("TXT_RID_OPTION_DELETE", "Delete"));
    keys->setClickedSlot(ZSoftKey::middle, this, SLOT(removeTasks()));
    keys->setText(ZSoftKey::right, ulo::text("TXT_RID_SOFTKEY_DONE", "Done"));
    keys->setKeyEnabled(ZSoftKey::middle, model_.chosenCount() > 0 && !model_.isChoosingAll());
  } else {
    keys->setText(ZSoftKey::middle, ulo::text("TXT_RID_SOFTKEY_NEW", "New"));
    keys->setClickedSlot(ZSoftKey::middle, this, SLOT(createTask()));
    keys->setText(ZSoftKey::right, ulo::text("TXT_RID_SOFTKEY_EXIT", "Exit"));
  }
}

void ListScreen::updateTitle() {
  const ViewTitle& title = titleOf(model_.order().view);
  setAppTitle(choosing_
                  ? ulo::text("FMT_RID_HEADER_1_SELECTED", "%1 Selected").arg(model_.chosenCount())
                  : ulo::text(title.id, title.english));
}

void ListScreen::updateState() {
  QWidget* page = model_.rowCount() == 0 ? static_cast<QWidget*>(emptyPage_) : list_;
  const bool hadFocus = list_->hasFocus() || emptyPage_->hasFocus();
  empty_->setText(emptyText());
  pages_->setCurrentWidget(page);
  // Also delivers keys to the screen if the list is empty.
  setFocusProxy(page);
  if (hadFocus)
    page->setFocus();
  updateTitle();
  updateKeys();
}

QString ListScreen::emptyText() const {
  if (model_.storeCode() != TASK_ENG_OK)
    return ulo::text("TXT_RID_INSTRUCTIONALTXT_TASKS_NOT_READ",
                     "The tasks can't be read.\n\nThe log says why.");
  if (model_.isReading())
    return ulo::text("TXT_RID_INSTRUCTIONALTXT_SEARCHING", "Searching\xe2\x80\xa6");
  if (model_.filter().isSet())
    return ulo::text("TXT_RID_INSTRUCTIONALTXT_NO_TASK_FOUND",
                     "No task matches.\n\nEmpty the search line and choose all categories to see "
                     "more.");
  const ViewTitle& title = titleOf(model_.order().view);
  return ulo::text(title.emptyId, title.emptyEnglish);
}

void ListScreen::setView(ZTASK_ENG_Model::TASK_CATEGORY view) {
  setOrder({view, model_.order().sort});
}

void ListScreen::setSort(ZTASK_ENG_Model::TASK_SORT_FIELD sort) {
  setOrder({model_.order().view, sort});
}

void ListScreen::setOrder(const ulo::ListOrder& order) {
  writeListOrder(order);
  showOrder(order);
}

void ListScreen::showOrder(const ulo::ListOrder& order) {
  today_ = QDate::currentDate();
  readCategories();
  model_.setOrder(order);
  list_->goTo(0);
  list_->scrollToTop();
}

void ListScreen::refresh() {
  today_ = QDate::currentDate();
  readCategories();
  model_.refresh();
}

void ListScreen::readCategories() {
  QValueList<QString> names;
  store_.getAllCategories(names);
  filter_->setCategories(names);
}

void ListScreen::goTo(unsigned int uid) {
  list_->goTo(model_.rowOf(uid));
}

bool ListScreen::leavesOut(unsigned int uid) const {
  return !model_.isReading() && model_.rowOf(uid) < 0;
}

void ListScreen::tell(const QString& message) {
  notice_->showMessage(message);
}

std::vector<unsigned int> ListScreen::targets() const {
  // Never only a part of the selection.
  if (choosing_)
    return model_.isChoosingAll() ? std::vector<unsigned int>() : model_.chosen();
  if (list_->currentRow() < 0)
    return {};
  return {model_.uidAt(list_->currentRow())};
}

bool ListScreen::readMenuTask(ZTASK_ENG_Task& task) {
  if (menuTargets_.size() != 1)
    return false;
  const int code = store_.getTask(menuTargets_.front(), task);
  if (code == TASK_ENG_OK)
    return true;
  tell(code == TASK_ENG_NOT_FOUND
           ? ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_WAS_DELETED", "The task has been deleted.")
           : ulo::text("TXT_RID_INSTRUCTIONALTXT_TASKS_NOT_READ",
                       "The tasks can't be read.\n\nThe log says why.")
                 .simplified());
  refresh();
  return false;
}

void ListScreen::openTask(int row) {
  if (choosing_) {
    checkTask(row);
    return;
  }
  Task task;
  if (store_.getTask(model_.uidAt(row), task) == TASK_ENG_OK)
    Q_EMIT changeView(TASK_LIST_VIEW, TASK_DETAIL_VIEW, &task);
  else
    refresh();
}

void ListScreen::checkTask(int row) {
  const unsigned int uid = model_.uidAt(row);
  if (choosing_) {
    model_.setChosen(row, !model_.index(row).data(TaskListModel::ChosenRole).toBool());
    return;
  }
  const bool wasCompleted = model_.index(row).data(TaskListModel::CompletedRole).toBool();
  ulo::ChangeReport report;
  const int code = ulo::setCompleted(store_, uid, !wasCompleted, &report);
  if (code != TASK_ENG_OK && code != TASK_ENG_NOT_FOUND)
    tell(ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_NOT_SAVED", "The task could not be saved."));
  else if (report.next)
    tell(nextDateText(*report.next, report.task, QDate::currentDate()));
  refresh();
}

void ListScreen::createTask() {
  Q_EMIT changeView(TASK_LIST_VIEW, TASK_FORM_VIEW, nullptr);
}

void ListScreen::editTask() {
  Task task;
  if (readMenuTask(task))
    Q_EMIT changeView(TASK_LIST_VIEW, TASK_FORM_VIEW, &task);
}

void ListScreen::shareByBluetooth() {
  share(ShareBy::bluetooth);
}

void ListScreen::shareByMessage() {
  share(ShareBy::message);
}

void ListScreen::share(ShareBy way) {
  Task task;
  if (readMenuTask(task) && !shareTask(store_, task, way))
    tell(ulo::text("TXT_RID_INSTRUCTIONALTXT_SENDING_NEEDS_LIBICAL",
                   "The task can't be sent: libical (libical3) is not installed."));
}

// Starts after the deferred deletions, so that the partner receives them; not if one of them fails.
void ListScreen::synchronize() {
  syncWanted_ = true;
  removal_.hasten();
}

void ListScreen::startSynchronizing() {
  tell(Synchronizer::start()
           ? ulo::text("TXT_RID_STANDARD_SYNCHRONIZING", "Synchronizing\xe2\x80\xa6")
           : ulo::text("TXT_RID_INSTRUCTIONALTXT_SYNCHRONIZING_FAILED",
                       "The synchronization could not be started."));
}

void ListScreen::setChoosing(bool choosing) {
  choosing_ = choosing;
  list_->setChoosing(choosing);
  model_.setChoosing(choosing);
  updateState();
}

void ListScreen::selectMultiple() {
  setChoosing(true);
}

void ListScreen::selectAll() {
  model_.chooseAll();
}

void ListScreen::unselectAll() {
  model_.chooseNone();
}

void ListScreen::remove(const std::vector<unsigned int>& uids) {
  if (uids.empty())
    return;
  setChoosing(false);
  removal_.begin(uids);
}

void ListScreen::undoRemoval() {
  removal_.undo();
}

void ListScreen::removalChanged() {
  // If the focused button is hidden, the list gets the focus.
  const bool hadFocus = notice_->isAncestorOf(QApplication::focusWidget());
  model_.setHidden(removal_.uids());
  const std::size_t count = removal_.undoable();
  if (count == 0)
    notice_->hideUndoable();
  else if (count == 1)
    notice_->showUndoable(ulo::text("TXT_RID_STANDARD_TASK_DELETED", "Task deleted"));
  else
    notice_->showUndoable(
        ulo::text("FMT_RID_STANDARD_1_TASKS_DELETED", "%1 tasks deleted").arg(count));
  if (hadFocus && count == 0)
    setFocus();
  if (removal_.isIdle() && std::exchange(syncWanted_, false))
    startSynchronizing();
}

void ListScreen::rightKey() {
  if (choosing_)
    setChoosing(false);
  else
    Q_EMIT exitAsked();
}

void ListScreen::showEvent(QShowEvent* event) {
  TASK_UI_View::showEvent(event);
  setFocus();
}

// Keys that no child has handled. Letters start a search.
void ListScreen::keyPressEvent(QKeyEvent* event) {
  const bool plain = (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) == 0;
  const QString letters = plain ? event->text().trimmed() : QString();
  const bool control = event->modifiers() == Qt::ControlModifier;
  if (event->key() == Qt::Key_Escape && choosing_)
    setChoosing(false);
  else if (event->key() == Qt::Key_Escape && model_.filter().isSet())
    filter_->clear();
  else if (control && event->key() == Qt::Key_N)
    createTask();
  else if (control && event->key() == Qt::Key_F)
    filter_->type({});
  else if (control && event->key() == Qt::Key_Z)
    undoRemoval();
  else if (control && event->key() == Qt::Key_A && choosing_)
    selectAll();
  else if (!letters.isEmpty() && letters.at(0).isPrint())
    filter_->type(letters);
  else
    TASK_UI_View::keyPressEvent(event);
}

}  // namespace tasks
