// What the verbs of one run share: the output and the store.
#pragma once

#include "ZTASK_ENG_Model.h"
#include "exit_codes.h"
#include "output.h"
#include "write_transaction.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace ulotask {

class Session {
public:
  Output output;

  // The store, opened by the first call. Throws a Failure if it cannot be opened.
  ZTASK_ENG_Model& store();

  std::size_t countTasks();
  // The task with this UID. Throws noTask() if there is none.
  ZTASK_ENG_Task task(unsigned int uid);
  // How the task repeats, in words; empty if it does not.
  QString repetition(unsigned int uid);
  // Runs `work` in one write transaction: everything that it stores is committed, or nothing. An
  // exception of `work` discards the transaction and is rethrown. Throws a Failure if the
  // transaction cannot begin or commit; its message begins with `what`.
  void inTransaction(const std::string& what, const std::function<void()>& work,
                     ulo::WriteTransaction::Changes changes = ulo::WriteTransaction::Changes::few);

  // A null name is that of tasks without a category, and differs from an empty one.
  bool hasCategory(const QString& name);
  // Fails with Exit::notFound unless a category has this name.
  void requireCategory(const QString& name);

private:
  std::unique_ptr<ZTASK_ENG_Model> store_;
};

// The failure of a verb that needs the task with this UID.
Failure noTask(unsigned int uid);

// The reason for which the database failed, for the end of a message. Messages include it because
// the log may be on the same full disk.
std::string databaseReason();

// Receives the lines of a database function. `text` is a std::string, which keeps the last one.
void keepLine(void* text, const char* utf8);

// Says why the store cannot be opened, and which verb may help.
Failure closedStore();

// Returns the failure for TASK_ENG_MEMORY_FULL and TASK_SYNCML_NOMEMORY. Its message begins with
// `what` and says whether the store is full or memory is exhausted.
Failure noRoom(const std::string& what);

// Throws a Failure for any store result other than 0; its message begins with `what`, the name of
// the operation. Also throws if the database has run out of memory, because the store then omits
// fields that it could not read.
void require(int storeCode, const std::string& what);
// Throws a Failure for any database result other than DB_OK, with the same form of message.
void requireDatabase(int result, const std::string& what);

}  // namespace ulotask
