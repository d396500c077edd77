// The change-tracking service. A program that has stored changes reports them here; other programs
// later query the journal (change_journal.h) for what has changed.
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <memory>

// One change. `source` identifies who made it, in the form of QUuid::toString().
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

// Announces stored changes to the programs that follow the journal. The journal entries already
// exist at that point: the database writes each entry in the transaction that changes the row, so
// that neither a killed process nor a full disk can separate them. A change that is reported within
// a transaction of the thread is announced by its commit. Thread-safe. Reporting never throws and
// never fails for lack of memory or disk space.
class ULO_EXPORT SVC_CT_ChangeReporter {
public:
  SVC_CT_ChangeReporter();
  SVC_CT_ChangeReporter(const SVC_CT_ChangeReporter&) = delete;
  SVC_CT_ChangeReporter& operator=(const SVC_CT_ChangeReporter&) = delete;

  // The following four functions are the first entries of the vtable, in this order.

  // Announces one change. `handle` is ignored; the store passes -1. Returns 0.
  virtual int report(const SVC_CT_ChangeRecord& record, int handle);
  // Announces `count` changes at once. Returns 0.
  virtual int reportMany(const SVC_CT_ChangeRecord* records, unsigned int count, int handle);
  // Changes reported until endBatch, whatever their source, are announced once, by endBatch.
  // Returns 0, or 1 if a batch is already open, which then continues.
  virtual int beginBatch(const char* source);
  // Returns 0, or 1 if no batch is open.
  virtual int endBatch(const char* source);

  // Ends an open batch.
  virtual ~SVC_CT_ChangeReporter();

private:
  class Batch;
  std::unique_ptr<Batch> batch_;
};
