#include "window/store_changes.h"

#include "TASK_ENG_SyncML.h"
#include "data_directory.h"

#include <algorithm>
#include <utility>

#include <sys/stat.h>

namespace tasks {

namespace {

constexpr char storeLog[] = "tasks.db-wal";

}  // namespace

StoreChanges::StoreChanges(QObject* parent)
    : QObject(parent), directory_(ulo::dataDirectory()), channel_(TASK_ENG_SyncML::channel),
      files_(directory_, ulo::ChangeJournal::fileName), journal_(directory_), store_(storeState()) {
  isJournalRead_ = journal_.lastEntry(entry_);
  quiet_.setSingleShot(true);
  connect(&quiet_, &QTimer::timeout, this, &StoreChanges::gathered);
  connect(&interval_, &QTimer::timeout, this, &StoreChanges::lookAround);
  interval_.start(interval);
  connect(&channel_, &QCopChannel::received, this, &StoreChanges::hear);
  if (files_.descriptor() >= 0) {
    notifier_ = std::make_unique<QSocketNotifier>(files_.descriptor(), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &StoreChanges::sawFiles);
  }
}

StoreChanges::~StoreChanges() = default;

void StoreChanges::hear(const QCString& message) {
  if (message != TASK_ENG_SyncML::dataChanged)
    return;
  wasBroadcast_ = true;
  gather();
}

void StoreChanges::sawFiles() {
  if (files_.sawChange())
    gather();
}

void StoreChanges::gather() {
  if (!quiet_.isActive())
    gathering_.start();
  const std::chrono::milliseconds left = longest - std::chrono::milliseconds(gathering_.elapsed());
  isLate_ = left < quiet;
  quiet_.start(std::clamp(left, std::chrono::milliseconds(0), quiet));
}

void StoreChanges::gathered() {
  // The time stamp of a file is coarse: one that was written a moment ago may be written once more
  // and look the same. Where it didn't become quiet it is looked at once more.
  if (isLate_)
    gather();
  if (isOther(true))
    Q_EMIT changed();
}

void StoreChanges::lookAround() {
  if (!quiet_.isActive() && isOther(false))
    Q_EMIT changed();
}

// `wasTold`: files or a broadcast say that there is something. A journal that can't be read is only
// asked then, and where the store's file is another.
bool StoreChanges::isOther(bool wasTold) {
  const StoreState state = storeState();
  bool other = std::exchange(store_, state) != state;
  other |= std::exchange(wasBroadcast_, false);
  if (isJournalRead_ || wasTold || other) {
    std::int64_t entry = 0;
    isJournalRead_ = journal_.lastEntry(entry);
    other |= !isJournalRead_ || std::exchange(entry_, entry) != entry;
  }
  return other;
}

// An empty file is as good as none: one that opens the store makes an empty log, and the last one
// that closes it removes it.
StoreChanges::FileState StoreChanges::stateOf(const char* name) const {
  struct stat status {};
  if (stat((directory_ + '/' + name).c_str(), &status) != 0 || status.st_size == 0)
    return {};
  constexpr std::int64_t second = 1'000'000'000;
  return {status.st_ino, status.st_size, status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec};
}

// What other files the database has says nothing: readers write them too.
StoreChanges::StoreState StoreChanges::storeState() const {
  return {stateOf(ulo::ChangeJournal::fileName), stateOf(storeLog)};
}

}  // namespace tasks
