#include "SVC_CT_ChangeReporter.h"

#include "change_journal.h"
#include "data_directory.h"
#include "module_log.h"

#include <utility>
#include <vector>

// Collects changes, one at a time or a batch of them, and hands them to the journal.
class SVC_CT_ChangeReporter::Batch {
public:
  bool begin() { return !std::exchange(isOpen_, true); }
  [[nodiscard]] bool isOpen() const { return isOpen_; }
  void add(const SVC_CT_ChangeRecord& record) {
    ulo::Change change;
    change.source = record.source.toStdString();
    change.uid = record.uid;
    change.type = static_cast<ulo::ChangeType>(record.changeType);
    changes_.push_back(std::move(change));
  }
  bool write() {
    isOpen_ = false;
    if (!journal_) {
      const std::string directory = ulo::dataDirectory();
      if (directory.empty()) {
        ULO_LOG_ERROR("There is no directory for the change journal");
        changes_.clear();
        return false;
      }
      journal_ = std::make_unique<ulo::ChangeJournal>(directory);
    }
    const bool done = journal_->append(changes_);
    changes_.clear();
    return done;
  }

private:
  std::vector<ulo::Change> changes_;
  std::unique_ptr<ulo::ChangeJournal> journal_;
  bool isOpen_ = false;
};

SVC_CT_ChangeReporter::SVC_CT_ChangeReporter() = default;

SVC_CT_ChangeReporter::~SVC_CT_ChangeReporter() {
  if (batch_ && batch_->isOpen())
    batch_->write();
}

SVC_CT_ChangeReporter::Batch& SVC_CT_ChangeReporter::batch() {
  if (!batch_)
    batch_ = std::make_unique<Batch>();
  return *batch_;
}

int SVC_CT_ChangeReporter::report(const SVC_CT_ChangeRecord& record, int handle) {
  return SVC_CT_ChangeReporter::reportMany(&record, 1, handle);
}

int SVC_CT_ChangeReporter::reportMany(const SVC_CT_ChangeRecord* records, unsigned int count, int) {
  for (unsigned int i = 0; i < count; ++i)
    batch().add(records[i]);
  return batch().isOpen() || batch().write() ? 0 : 1;
}

int SVC_CT_ChangeReporter::beginBatch(const char*) {
  return batch().begin() ? 0 : 1;
}

int SVC_CT_ChangeReporter::endBatch(const char*) {
  return batch().isOpen() && batch().write() ? 0 : 1;
}
