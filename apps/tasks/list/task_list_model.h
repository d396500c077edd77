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

// What a list leaves out.
struct ListFilter {
  // Each of these words has to be in the summary, the note or the category, in any case.
  QStringList words;
  // The name of a category; all that isNoCategory holds for are one.
  std::optional<QString> category;

  [[nodiscard]] bool isSet() const { return !words.isEmpty() || category.has_value(); }
  [[nodiscard]] bool passes(const ZTASK_ENG_Task& task) const;
  bool operator==(const ListFilter&) const = default;
};

// Knows the UIDs of the list and reads records a page at a time, those that are looked at. With a
// filter the rows come by and by, as its pages are read and while the event loop has time.
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

  // Reads anew what the store has. With a filter the rows that are there stay until all is read.
  void refresh();

  [[nodiscard]] const ulo::ListOrder& order() const { return order_; }
  [[nodiscard]] const ListFilter& filter() const { return filter_; }
  // Whether more rows may follow.
  [[nodiscard]] bool isReading() const { return !shown_.isWhole() || coming_.has_value(); }
  // The store's result for the last reading of the list. Unless it is TASK_ENG_OK, reading has
  // ended.
  [[nodiscard]] int storeCode() const { return code_; }

  // Requires: a row of the model.
  [[nodiscard]] unsigned int uidAt(int row) const;
  // -1 for a task that has no row.
  [[nodiscard]] int rowOf(unsigned int uid) const;

  // While the user chooses tasks, rows can be checked (Qt::CheckStateRole): the chosen ones are.
  // Begins and ends with none chosen.
  void setChoosing(bool choosing);
  // Tasks that the user has chosen. One that loses its row is no longer chosen.
  void setChosen(int row, bool chosen);
  // Chooses all rows, and each row that is still to come until all are read.
  void chooseAll();
  // Whether chooseAll waits for rows.
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
  // Reads pages for some milliseconds.
  void fetchMore(const QModelIndex& parent) override;

Q_SIGNALS:
  // isReading or the number of rows or of chosen ones may be another one.
  void stateChanged();

private:
  // A list of the store, and which of its places have a row.
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
  QTimer reading_;
};

}  // namespace tasks
