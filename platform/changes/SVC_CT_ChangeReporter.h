// The change-tracking service: whoever stores something reports it here, and other programs ask
// later what has changed.
#pragma once

#include "export.h"
#include "qt2.h"

#include <memory>

// One change. `source` names who made it, as QUuid::toString() writes it.
struct SVC_CT_ChangeRecord {
  int reserved0 = 0;
  QCString source;
  unsigned int uid = 0;
  int changeType = 0;  // 1 added, 2 updated, 3 removed
  int reserved[4] = {0, 0, 0, 0};
};

enum SVC_CT_ChangeType : int {
  SVC_CT_ADDED = 1,
  SVC_CT_UPDATED = 2,
  SVC_CT_REMOVED = 3,
};

namespace ulo {
class ChangeJournal;
}

// Writes each change to the journal in the data directory. All operations give 0 on success,
// another number when the journal could not be written (which is logged).
class ULO_EXPORT SVC_CT_ChangeReporter {
public:
  SVC_CT_ChangeReporter();
  SVC_CT_ChangeReporter(const SVC_CT_ChangeReporter&) = delete;
  SVC_CT_ChangeReporter& operator=(const SVC_CT_ChangeReporter&) = delete;

  // The four operations below come first in the table of virtual operations, in this order.
  // Reports one change.
  virtual int report(const SVC_CT_ChangeRecord& record, int handle);
  // Reports `count` changes at once; all of them or none get into the journal.
  virtual int reportMany(const SVC_CT_ChangeRecord* records, unsigned int count, int handle);
  // Changes of this source belong together until endBatch: a reader sees all of them or none.
  virtual int beginBatch(const char* source);
  virtual int endBatch(const char* source);

  virtual ~SVC_CT_ChangeReporter();

private:
  std::unique_ptr<ulo::ChangeJournal> journal_;
};
