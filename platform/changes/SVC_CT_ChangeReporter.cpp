#include "SVC_CT_ChangeReporter.h"

#include "announcement.h"
#include "ulo/change_journal.h"
#include "ulo/data_directory.h"

#include <exception>
#include <mutex>
#include <new>
#include <utility>

// Announces changes, one at a time or once per batch.
class SVC_CT_ChangeReporter::Batch {
public:
  bool begin() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return !std::exchange(isOpen_, true);
  }
  bool end() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!std::exchange(isOpen_, false))
      return false;
    if (std::exchange(isPending_, false))
      announce();
    return true;
  }
  void add() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (isOpen_)
      isPending_ = true;
    else
      announce();
  }

private:
  static void announce() noexcept {
    if (ulo::UncommittedChanges::exist())
      return;
    try {
      const std::string directory = ulo::dataDirectory();
      if (!directory.empty())
        ulo::announceCommit(directory + '/' + ulo::ChangeJournal::fileName);
    } catch (const std::exception&) {
      // Without memory nothing is announced; followers of the journal also poll from time to time.
    }
  }

  std::mutex mutex_;
  bool isOpen_ = false;
  bool isPending_ = false;
};

// A store works without announcements, too.
SVC_CT_ChangeReporter::SVC_CT_ChangeReporter() : batch_(new (std::nothrow) Batch) {}

SVC_CT_ChangeReporter::~SVC_CT_ChangeReporter() {
  if (batch_)
    batch_->end();
}

int SVC_CT_ChangeReporter::report(const SVC_CT_ChangeRecord& record, int handle) {
  return SVC_CT_ChangeReporter::reportMany(&record, 1, handle);
}

int SVC_CT_ChangeReporter::reportMany(const SVC_CT_ChangeRecord*, unsigned int count, int) {
  if (batch_ && count > 0)
    batch_->add();
  return 0;
}

int SVC_CT_ChangeReporter::beginBatch(const char*) {
  return batch_ && batch_->begin() ? 0 : 1;
}

int SVC_CT_ChangeReporter::endBatch(const char*) {
  return batch_ && batch_->end() ? 0 : 1;
}
