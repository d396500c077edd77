#include "list/task_list_model.h"

#include "task_dates.h"
#include "task_texts.h"
#include "task_words.h"

#include <QElapsedTimer>

#include <algorithm>
#include <utility>

namespace tasks {

namespace {

constexpr int rowPage = 32;      // records that are read for rows on the screen
constexpr int filterPage = 256;  // records that are read for a filter
constexpr int keptRecords = 1024;
// In milliseconds: how long a filter goes on reading before it returns to the event loop.
constexpr qint64 slice = 6;

bool contains(const ZTASK_ENG_Task& task, const QString& word) {
  const auto has = [&](ZTASK_ENG_Task::TASK_FIELD_T field) {
    return task.getString(field).contains(word, Qt::CaseInsensitive);
  };
  const QString category = task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
  return has(ZTASK_ENG_Task::TASK_FIELD_SUMMARY) || has(ZTASK_ENG_Task::TASK_FIELD_NOTE) ||
         (!isNoCategory(category) && categoryText(category).contains(word, Qt::CaseInsensitive));
}

}  // namespace

bool ListFilter::passes(const ZTASK_ENG_Task& task) const {
  if (category) {
    const QString name = task.getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
    if (isNoCategory(*category) ? !isNoCategory(name) : name != *category)
      return false;
  }
  return std::all_of(words.begin(), words.end(),
                     [&](const QString& word) { return contains(task, word); });
}

TaskListModel::TaskListModel(ZTASK_ENG_Model& store, std::function<QDate()> today, QObject* parent)
    : QAbstractListModel(parent), store_(store), today_(std::move(today)), records_(keptRecords) {
  reading_.setInterval(0);
  connect(&reading_, &QTimer::timeout, this, &TaskListModel::goOn);
}

void TaskListModel::setOrder(const ulo::ListOrder& order) {
  order_ = order;
  start();
}

void TaskListModel::setFilter(const ListFilter& filter) {
  filter_ = filter;
  start();
}

void TaskListModel::setHidden(std::unordered_set<unsigned int> uids) {
  hidden_ = std::move(uids);
  if (filter_.isSet()) {
    // Hidden rows are removed at once. Rows that reappear require reading the list again.
    Listing listing = shown_;
    dropHidden(listing);
    if (coming_)
      dropHidden(*coming_);
    show(std::move(listing));
  }
  refresh();
}

void TaskListModel::dropHidden(Listing& listing) const {
  std::erase_if(listing.places,
                [&](unsigned int place) { return hidden_.contains(listing.uidAt(place)); });
}

// The list as it is stored now. Without a filter it is complete.
TaskListModel::Listing TaskListModel::begin() {
  Listing listing;
  code_ = listing.pages.open(store_, order_);
  records_.clear();
  if (!filter_.isSet()) {
    listing.pages.skipToEnd();
    const unsigned int count = listing.pages.position();
    listing.places.reserve(count);
    for (unsigned int place = 0; place < count; ++place)
      if (!hidden_.contains(listing.uidAt(place)))
        listing.places.push_back(place);
  }
  return listing;
}

// Reads for one slice of time, at least one page. Returns the places that pass the filter.
std::vector<unsigned int> TaskListModel::readSlice(Listing& listing) {
  const qint64 time = listing.pages.position() == 0 ? firstSlice_ : slice;
  std::vector<unsigned int> found;
  QElapsedTimer timer;
  timer.start();
  ulo::Records page;
  while (!listing.isWhole()) {
    const unsigned int first = listing.pages.position();
    if (const int code = listing.pages.next(store_, filterPage, page); code != TASK_ENG_OK) {
      code_ = code;
      listing.pages.skipToEnd();
      break;
    }
    for (unsigned int i = 0; i < page.count(); ++i)
      if (filter_.passes(page[i]) && !hidden_.contains(listing.uidAt(first + i)))
        found.push_back(first + i);
    if (timer.hasExpired(time))
      break;
  }
  return found;
}

void TaskListModel::start() {
  coming_.reset();
  choosingAll_ = false;
  isOld_ = false;
  Listing listing = begin();
  if (!listing.isWhole())
    listing.places = readSlice(listing);
  show(std::move(listing));
}

void TaskListModel::refresh() {
  if (coming_) {
    // Finish reading first, in case changes never end.
    isOld_ = true;
    renewRows();
    return;
  }
  Listing listing = begin();
  if (!listing.isWhole())
    listing.places = readSlice(listing);
  if (listing.isWhole()) {
    show(std::move(listing));
  } else {
    coming_ = std::move(listing);
    renewRows();
    reading_.start();
  }
}

// Reads the records again when the rows are displayed.
void TaskListModel::renewRows() {
  records_.clear();
  if (rowCount() > 0)
    Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

void TaskListModel::show(Listing listing) {
  beginResetModel();
  if (choosingAll_)
    chooseNewRows(listing);
  shown_ = std::move(listing);
  if (shown_.isWhole())
    dropLostChoices();
  choosingAll_ = choosingAll_ && isReading();
  endResetModel();
  if (isReading())
    reading_.start();
  else
    reading_.stop();
  Q_EMIT stateChanged();
}

void TaskListModel::goOn() {
  if (coming_) {
    const std::vector<unsigned int> found = readSlice(*coming_);
    coming_->places.insert(coming_->places.end(), found.begin(), found.end());
    if (!coming_->isWhole())
      return;
    show(*std::exchange(coming_, std::nullopt));
    if (std::exchange(isOld_, false))
      refresh();
  } else {
    fetchMore({});
  }
}

bool TaskListModel::canFetchMore(const QModelIndex& parent) const {
  return !parent.isValid() && !shown_.isWhole();
}

void TaskListModel::fetchMore(const QModelIndex& parent) {
  if (!canFetchMore(parent))
    return;
  const std::vector<unsigned int> found = readSlice(shown_);
  if (!found.empty()) {
    const int rows = rowCount();
    beginInsertRows({}, rows, rows + static_cast<int>(found.size()) - 1);
    shown_.places.insert(shown_.places.end(), found.begin(), found.end());
    if (choosingAll_)
      for (const unsigned int place : found)
        chosen_.insert(shown_.uidAt(place));
    endInsertRows();
  }
  if (shown_.isWhole())
    dropLostChoices();
  choosingAll_ = choosingAll_ && isReading();
  if (!isReading())
    reading_.stop();
  Q_EMIT stateChanged();
}

void TaskListModel::dropLostChoices() {
  if (chosen_.empty())
    return;
  std::unordered_set<unsigned int> kept;
  for (const unsigned int place : shown_.places)
    if (chosen_.contains(shown_.uidAt(place)))
      kept.insert(shown_.uidAt(place));
  chosen_ = std::move(kept);
}

// While all rows are being selected, selects the rows that were not shown before. The user may have
// deselected others.
void TaskListModel::chooseNewRows(const Listing& listing) {
  std::unordered_set<unsigned int> before;
  for (const unsigned int place : shown_.places)
    before.insert(shown_.uidAt(place));
  for (const unsigned int place : listing.places)
    if (!before.contains(listing.uidAt(place)))
      chosen_.insert(listing.uidAt(place));
}

unsigned int TaskListModel::uidAt(int row) const {
  return shown_.uidAt(shown_.places[static_cast<std::size_t>(row)]);
}

int TaskListModel::rowOf(unsigned int uid) const {
  const auto found = std::find_if(shown_.places.begin(), shown_.places.end(),
                                  [&](unsigned int place) { return shown_.uidAt(place) == uid; });
  return found == shown_.places.end() ? -1 : static_cast<int>(found - shown_.places.begin());
}

void TaskListModel::setChosen(int row, bool chosen) {
  if (chosen)
    chosen_.insert(uidAt(row));
  else
    chosen_.erase(uidAt(row));
  Q_EMIT dataChanged(index(row), index(row), {ChosenRole, Qt::CheckStateRole});
  Q_EMIT stateChanged();
}

void TaskListModel::chooseAll() {
  choosingAll_ = isReading();
  for (const unsigned int place : shown_.places)
    chosen_.insert(shown_.uidAt(place));
  if (rowCount() > 0)
    Q_EMIT dataChanged(index(0), index(rowCount() - 1), {ChosenRole, Qt::CheckStateRole});
  Q_EMIT stateChanged();
}

void TaskListModel::setChoosing(bool choosing) {
  choosing_ = choosing;
  chooseNone();
}

void TaskListModel::chooseNone() {
  choosingAll_ = false;
  chosen_.clear();
  if (rowCount() > 0)
    Q_EMIT dataChanged(index(0), index(rowCount() - 1), {ChosenRole, Qt::CheckStateRole});
  Q_EMIT stateChanged();
}

std::vector<unsigned int> TaskListModel::chosen() const {
  std::vector<unsigned int> uids;
  for (const unsigned int place : shown_.places)
    if (chosen_.contains(shown_.uidAt(place)))
      uids.push_back(shown_.uidAt(place));
  return uids;
}

int TaskListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(shown_.places.size());
}

Qt::ItemFlags TaskListModel::flags(const QModelIndex& index) const {
  return QAbstractListModel::flags(index) | (choosing_ ? Qt::ItemIsUserCheckable : Qt::NoItemFlags);
}

QVariant TaskListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount())
    return {};
  const bool asksForCheck = role == Qt::CheckStateRole;
  if (role == ChosenRole || (asksForCheck && choosing_)) {
    const bool chosen = chosen_.contains(uidAt(index.row()));
    return asksForCheck ? QVariant(chosen ? Qt::Checked : Qt::Unchecked) : QVariant(chosen);
  }
  if (asksForCheck)
    return {};
  const ZTASK_ENG_Task* task = record(index.row());
  if (task == nullptr)
    return {};
  const QString category = task->getString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY);
  switch (role) {
  case Qt::DisplayRole:
    return titleText(*task);
  case DueRole:
    return ulo::hasDate(*task, ZTASK_ENG_Task::TASK_FIELD_DUE)
               ? dayText(task->getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE).date(), today_())
               : QString();
  case OverdueRole:
    return isOverdue(*task, today_());
  case CategoryRole:
    return isNoCategory(category) ? QString() : categoryText(category);
  case CompletedRole:
    return ulo::isCompleted(*task);
  case PriorityRole:
    return task->getPriority();
  case Qt::AccessibleDescriptionRole:
    return descriptionText(*task, today_());
  default:
    return {};
  }
}

// Returns null if the task is no longer stored. Its row stays empty until the list is read again.
const ZTASK_ENG_Task* TaskListModel::record(int row) const {
  const unsigned int uid = uidAt(row);
  if (!records_.contains(uid))
    readRecords(shown_.places[static_cast<std::size_t>(row)]);
  return records_.object(uid);
}

// Without a filter, the neighboring rows will be displayed too.
void TaskListModel::readRecords(unsigned int place) const {
  ulo::Records page;
  if (!filter_.isSet())
    shown_.pages.read(store_, place - place % rowPage, rowPage, page);
  for (const ZTASK_ENG_Task& task : page)
    records_.insert(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), new ZTASK_ENG_Task(task));
  const unsigned int uid = shown_.uidAt(place);
  ZTASK_ENG_Task task;
  if (!records_.contains(uid) && store_.getTask(uid, task) == TASK_ENG_OK)
    records_.insert(uid, new ZTASK_ENG_Task(task));
}

}  // namespace tasks
