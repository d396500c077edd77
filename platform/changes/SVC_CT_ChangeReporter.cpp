#include "SVC_CT_ChangeReporter.h"

#include "change_journal.h"
#include "module_log.h"

#include <exception>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

// Collects changes, one at a time or a batch of them, and hands them to the journal.
class SVC_CT_ChangeReporter::Batch {
public:
  bool begin() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return !std::exchange(isOpen_, true);
  }
  bool end() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(isOpen_, false) && write();
  }
  bool add(const SVC_CT_ChangeRecord* records, unsigned int count) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::size_t before = changes_.size();
    try {
      for (unsigned int i = 0; i < count; ++i)
        changes_.push_back({0, 0, records[i].source.toStdString(), records[i].uid,
                            static_cast<ulo::ChangeType>(records[i].changeType)});
    } catch (const std::exception& error) {
      changes_.resize(before);
      ULO_LOG_ERROR("A change can't be reported: %s", error.what());
      return false;
    }
    return isOpen_ || write();
  }

private:
  bool write() {
    const bool done = journal_.append(changes_);
    changes_.clear();
    return done;
  }

  std::mutex mutex_;
  std::vector<ulo::Change> changes_;
  ulo::ChangeJournal journal_;
  bool isOpen_ = false;
};

// A store goes on without its reporter: short memory shows with the first report.
SVC_CT_ChangeReporter::SVC_CT_ChangeReporter() : batch_(new (std::nothrow) Batch) {}

SVC_CT_ChangeReporter::~SVC_CT_ChangeReporter() {
  if (batch_)
    batch_->end();
}

int SVC_CT_ChangeReporter::report(const SVC_CT_ChangeRecord& record, int handle) {
  return SVC_CT_ChangeReporter::reportMany(&record, 1, handle);
}

int SVC_CT_ChangeReporter::reportMany(const SVC_CT_ChangeRecord* records, unsigned int count, int) {
  return batch_ && batch_->add(records, count) ? 0 : 1;
}

int SVC_CT_ChangeReporter::beginBatch(const char*) {
  return batch_ && batch_->begin() ? 0 : 1;
}

int SVC_CT_ChangeReporter::endBatch(const char*) {
  return batch_ && batch_->end() ? 0 : 1;
}
