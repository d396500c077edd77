// The rows of the task list.
#pragma once

#include "task_pages.h"

#include <QAbstractListModel>
#include <QCache>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <optional>
#include <unordered_set>
#include <vector>

namespace tasks {

// The filter of the list.
struct ListFilter {
  // Each word must occur in the summary, the note or the category, ignoring case.
  QStringList words;
  // The name of a category. All names for which isNoCategory returns true are equivalent.
  std::optional<QString> category;

  [[nodiscard]] bool isSet() const { return !words.isEmpty() || category.has_value(); }
  [[nodiscard]] bool passes(const ZTASK_ENG_Task& task) const;
  bool operator==(const ListFilter&) const = default;
};

// Holds the UIDs of the list and reads records page by page when rows are displayed. With a filter,
// rows are added in small slices on the event loop while the list is read.
class TaskListModel : public QAbstractListModel {
  Q_OBJECT

public:
  enum Role : int {
    DueRole = Qt::UserRole,  // text; empty without a due date
    OverdueRole,             // bool
    CategoryRole,            // text; empty without a category
    CompletedRole,           // bool
    PriorityRole,            // 1 high, 5 normal, 9 low
    ChosenRole,              // bool
  };

  TaskListModel(ZTASK_ENG_Model& store, std::function<QDate()> today, QObject* parent = nullptr);

  // Each of these reads the list again and resets the model.
  void setOrder(const ulo::ListOrder& order);
  void setFilter(const ListFilter& filter);
  void setHidden(std::unordered_set<unsigned int> uids);

  // Reads the list again. With a filter, the present rows stay until it has been read completely.
  void refresh();

  [[nodiscard]] const ulo::ListOrder& order() const { return order_; }
  [[nodiscard]] const ListFilter& filter() const { return filter_; }
  // Whether more rows may follow.
  [[nodiscard]] bool isReading() const { return !shown_.isWhole() || coming_.has_value(); }
  // How long a filter reads at first, before it returns to the event loop, in milliseconds. The
  // default is long enough for short lists to appear at once.
  void setFirstSlice(qint64 milliseconds) { firstSlice_ = milliseconds; }
  // The store's result for the last reading of the list. Unless it is TASK_ENG_OK, reading has
  // ended.
  [[nodiscard]] int storeCode() const { return code_; }

  // Requires: a row of the model.
  [[nodiscard]] unsigned int uidAt(int row) const;
  // -1 if the task has no row.
  [[nodiscard]] int rowOf(unsigned int uid) const;

  // In selection mode rows can be checked (Qt::CheckStateRole), which selects their tasks. Entering
  // or leaving the mode clears the selection.
  void setChoosing(bool choosing);
  // Selects or deselects a row. A task that loses its row is no longer selected.
  void setChosen(int row, bool chosen);
  // Selects all rows, including those that follow until the list is read completely.
  void chooseAll();
  // Whether chooseAll() still waits for rows.
  [[nodiscard]] bool isChoosingAll() const { return choosingAll_; }
  void chooseNone();
  [[nodiscard]] unsigned int chosenCount() const {
    return static_cast<unsigned int>(chosen_.size());
  }
  // In the order of the rows.
  [[nodiscard]] std::vector<unsigned int> chosen() const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  [[nodiscard]] bool canFetchMore(const QModelIndex& parent) const override;
  // Reads pages for a few milliseconds.
  void fetchMore(const QModelIndex& parent) override;

Q_SIGNALS:
  // Emitted when isReading(), the number of rows or the selection may have changed.
  void stateChanged();

private:
  // A list of the store.
  struct Listing {
    ulo::TaskPages pages;              // read up to where the filter has been applied
    std::vector<unsigned int> places;  // that have a row

    [[nodiscard]] unsigned int uidAt(unsigned int place) const { return pages.uids()[place]; }
    [[nodiscard]] bool isWhole() const { return pages.isAtEnd(); }
  };

  Listing begin();
  std::vector<unsigned int> readSlice(Listing& listing);
  void start();
  void show(Listing listing);
  void goOn();
  void renewRows();
  void dropHidden(Listing& listing) const;
  void dropLostChoices();
  void chooseNewRows(const Listing& listing);
  [[nodiscard]] const ZTASK_ENG_Task* record(int row) const;
  void readRecords(unsigned int place) const;

  ZTASK_ENG_Model& store_;
  std::function<QDate()> today_;
  ulo::ListOrder order_;
  ListFilter filter_;
  std::unordered_set<unsigned int> hidden_;
  std::unordered_set<unsigned int> chosen_;
  bool choosing_ = false;
  bool choosingAll_ = false;
  Listing shown_;
  std::optional<Listing> coming_;  // takes the place of the shown one when it is whole
  bool isOld_ = false;             // the store has changed since that was begun
  mutable QCache<unsigned int, ZTASK_ENG_Task> records_;
  int code_ = TASK_ENG_OK;
  qint64 firstSlice_ = 30;
  QTimer reading_;
};

}  // namespace tasks
