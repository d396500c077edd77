// The change-tracking service: a program that stored something reports it here, and other programs
// ask the journal (change_journal.h) later what has changed.
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

// Announces stored changes to the programs that follow the journal. The entries themselves are
// already in the journal: the database writes each one in the transaction that changes the row, so
// that neither a kill nor a full disk can separate them. Several threads may report through one
// object; reporting throws nothing and never fails for want of memory or disk space.
class ULO_EXPORT SVC_CT_ChangeReporter {
public:
  SVC_CT_ChangeReporter();
  SVC_CT_ChangeReporter(const SVC_CT_ChangeReporter&) = delete;
  SVC_CT_ChangeReporter& operator=(const SVC_CT_ChangeReporter&) = delete;

  // The four operations below come first in the table of virtual operations, in this order.

  // Announces one change. `handle` is the reporter's own business; the store passes -1. Returns 0.
  virtual int report(const SVC_CT_ChangeRecord& record, int handle);
  // Announces `count` changes at once. Returns 0.
  virtual int reportMany(const SVC_CT_ChangeRecord* records, unsigned int count, int handle);
  // Changes reported from here to endBatch, whatever their source, are announced once, at endBatch.
  // Returns 0, or 1 within a batch, which then continues.
  virtual int beginBatch(const char* source);
  // Returns 0, or 1 without a batch.
  virtual int endBatch(const char* source);

  // Ends an open batch.
  virtual ~SVC_CT_ChangeReporter();

private:
  class Batch;
  std::unique_ptr<Batch> batch_;
};
