#include "window/store_changes.h"

#include "TASK_ENG_SyncML.h"
#include "ulo/data_directory.h"

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
  // Time stamps of files are coarse: a file that has just been written may be written again and
  // keep its time stamp. If it did not become quiet, it is checked once more.
  if (isLate_)
    gather();
  if (isOther(true))
    Q_EMIT changed();
}

void StoreChanges::lookAround() {
  if (!quiet_.isActive() && isOther(false))
    Q_EMIT changed();
}

// `wasTold`: a file event or a broadcast has reported a change. A journal that cannot be read is
// tried again only then, or if the store's file has changed.
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

// An empty file counts as none: opening the store creates an empty log, and closing it for the last
// time removes the log.
StoreChanges::FileState StoreChanges::stateOf(const char* name) const {
  struct stat status {};
  if (stat((directory_ + '/' + name).c_str(), &status) != 0 || status.st_size == 0)
    return {};
  constexpr std::int64_t second = 1'000'000'000;
  return {status.st_ino, status.st_size, status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec};
}

// Other files of the database do not matter: readers write them too.
StoreChanges::StoreState StoreChanges::storeState() const {
  return {stateOf(ulo::ChangeJournal::fileName), stateOf(storeLog)};
}

}  // namespace tasks
