// The change-tracking service: whoever stores something reports it here, and other programs ask
// the journal (change_journal.h) later what has changed.
#pragma once

#include "export.h"
#include "qt2.h"

#include <memory>

// One change. `source` names who made it, as QUuid::toString() writes it.
struct SVC_CT_ChangeRecord {
  int reserved0 = 0;
  QCString source;
  unsigned int uid = 0;
  int changeType = 0;
  int reserved[4] = {0, 0, 0, 0};
};

enum SVC_CT_ChangeType : int {
  SVC_CT_ADDED = 1,
  SVC_CT_UPDATED = 2,
  SVC_CT_REMOVED = 3,
};

// Writes each change to the journal in the data directory. The journal is opened with the first
// report. All operations give 0 on success and 1 when the journal could not be written, which is
// logged (once for several in a row); what was to be written is dropped then, and the next report
// tries again. Several threads may report through one object; reporting throws nothing.
class ULO_EXPORT SVC_CT_ChangeReporter {
public:
  SVC_CT_ChangeReporter();
  SVC_CT_ChangeReporter(const SVC_CT_ChangeReporter&) = delete;
  SVC_CT_ChangeReporter& operator=(const SVC_CT_ChangeReporter&) = delete;

  // The four operations below come first in the table of virtual operations, in this order.

  // Reports one change. `handle` is the reporter's own business; the store hands over -1.
  virtual int report(const SVC_CT_ChangeRecord& record, int handle);
  // Reports `count` changes at once: all of them get into the journal, or none.
  virtual int reportMany(const SVC_CT_ChangeRecord* records, unsigned int count, int handle);
  // What is reported from here to endBatch, whatever its source, gets into the journal at once, at
  // endBatch: a reader sees all of it or nothing. It is kept in memory until then; a killed process
  // takes it along. A batch within a batch is refused with 1 and changes nothing.
  virtual int beginBatch(const char* source);
  // Without a batch: 1.
  virtual int endBatch(const char* source);

  // Writes a batch that was not ended: its changes have been stored.
  virtual ~SVC_CT_ChangeReporter();

private:
  class Batch;
  std::unique_ptr<Batch> batch_;
};
