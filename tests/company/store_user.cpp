// A program that uses only the public headers, for operations for which `ulotask` has no verb.
//   store_user remove-all         removes all tasks, then prints a line
//   store_user add-due SECONDS... adds a task for each time, due then (UTC seconds)
//   store_user read               runs each operation that reads, then prints numbers of results
//   store_user add CATEGORY       adds a task, then prints a line
//   store_user update UID         changes a task, then prints a line
//   store_user synchronize UID    replaces a task as a synchronization does, then prints a line
//   store_user hold               keeps the store open until descriptor 9 reaches its end
// Its exit codes are those of ulotask: 0, 9 if the store is full (or memory), 10 if it cannot be
// opened, else 1. A signal ends it if an operation of the store throws, or fails and appends to a
// list.

#include "TASK_ENG_SyncML.h"
#include "ZTASK_ENG_Model.h"
#include "ulo/log_sink.h"
#include "ulodb2.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <unistd.h>

namespace {

constexpr int gateNumber = 9;
constexpr int storeDatabase = 1;

enum Exit { ok = 0, failed = 1, usage = 2, storeFull = 9, storeClosed = 10 };

int exitFor(int code) {
  switch (code) {
  case TASK_ENG_OK:
    return ok;
  case TASK_ENG_MEMORY_FULL:
    return storeFull;
  case TASK_ENG_NOT_OPEN:
    return storeClosed;
  default:
    return failed;
  }
}

// removeAll is protected.
class Store : public ZTASK_ENG_Model {
public:
  using ZTASK_ENG_Model::removeAll;
};

// Ends the program if the operation throws.
template <typename Operation> auto run(Operation operation) noexcept {
  return operation();
}

// Runs an operation that appends to a list, and prints the number of results.
template <typename Value, typename Operation> int list(const char* name, Operation operation) {
  QValueList<Value> results;
  results.append(Value());
  const int code = run([&] { return operation(results); });
  if (code != TASK_ENG_OK && results.count() != 1)
    std::abort();
  std::printf("%s: %u\n", name, results.count() - 1);
  return code;
}

int readAll(Store& store) {
  using Task = ZTASK_ENG_Task;
  using Model = ZTASK_ENG_Model;
  Task first;
  Task example;
  example.setStatus(1);
  QString category("garden");
  QString text("t");
  int count = 0;
  constexpr auto sort = Model::TASK_SORT_DUE;
  constexpr long latest = 2147483647;
  const auto firstFailure = [](int code, int next) { return code == TASK_ENG_OK ? next : code; };
  int code = run([&] { return store.getTask(1, first); });
  code = firstFailure(code, run([&] { return store.getCount(count, Model::TASK_CATEGORY_DUE); }));
  code = firstFailure(code, list<QString>("categories", [&](auto& names) {
                        return store.getAllCategories(names);
                      }));
  code = firstFailure(code,
                      list<unsigned int>("all", [&](auto& uids) { return store.getAllIDs(uids); }));
  code = firstFailure(code, list<unsigned int>("incomplete", [&](auto& uids) {
                        return store.getAllIDs(uids, Model::TASK_CATEGORY_INCOMPLETE, sort);
                      }));
  code = firstFailure(code, list<Task>("in range", [&](auto& tasks) {
                        return store.getTasks(tasks, Task::TASK_FIELD_DUE, 0, latest);
                      }));
  code = firstFailure(code, list<Task>("of category", [&](auto& tasks) {
                        return store.getTasks(tasks, category);
                      }));
  code = firstFailure(code, list<Task>("page", [&](auto& tasks) {
                        return store.getTasks(tasks, first, 10, Model::TASK_CATEGORY_ALL, sort);
                      }));
  code = firstFailure(
      code, list<Task>("with text", [&](auto& tasks) { return store.getMatchTasks(tasks, text); }));
  QValueList<Task> similar;
  code = firstFailure(code, run([&] { return store.getMatchTasks(similar, example); }));
  // The store ignores that it could not look up a category; the database reports it.
  return firstFailure(code, DB_LastResult() == DB_OK ? TASK_ENG_OK : TASK_ENG_DATABASE_FAILURE);
}

int printed(int code, const char* line) {
  if (code == TASK_ENG_OK)
    std::puts(line);
  return code;
}

int add(Store& store, const char* category) {
  ZTASK_ENG_Task task;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "added");
  task.setString(ZTASK_ENG_Task::TASK_FIELD_CATEGORY, category);
  // The store adds the task without its category if that cannot be added; the database reports it.
  DB_Open(storeDatabase);
  const unsigned int failures = DB_FailureCount();
  int code = DB_BeginWrite() == DB_OK ? run([&] { return store.addTask(task); })
                                      : TASK_ENG_DATABASE_FAILURE;
  const bool isWhole = code == TASK_ENG_OK && DB_FailureCount() == failures;
  const bool isFull = DB_LastResult() == DB_FULL;
  if (DB_EndWrite(isWhole ? 1 : 0) != DB_OK || !isWhole)
    code = isFull || DB_LastResult() == DB_FULL ? TASK_ENG_MEMORY_FULL : TASK_ENG_DATABASE_FAILURE;
  DB_Close();
  return printed(code, "Added");
}

int update(Store& store, unsigned int uid) {
  ZTASK_ENG_Task task;
  if (const int code = run([&] { return store.getTask(uid, task); }); code != TASK_ENG_OK)
    return code;
  task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, "updated");
  return printed(run([&] { return store.updateTask(task); }), "Updated");
}

int synchronize(unsigned int uid) {
  const std::string text = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\nSUMMARY:item\r\n"
                           "CATEGORIES:party\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";
  const int code = run([&] {
    TASK_ENG_SyncML adaptor;
    adaptor.beginSync(0);
    const int updated = adaptor.updateEvent(text, uid);
    adaptor.endSync();
    return updated;
  });
  return printed(code, "Synchronized");
}

int removeAll(Store& store) {
  const int code = run([&] { return store.removeAll(); });
  // The store ignores the result of the commit; the database reports it.
  if (code == TASK_ENG_OK && DB_LastResult() != DB_OK)
    return TASK_ENG_DATABASE_FAILURE;
  return printed(code, "Removed all");
}

int addDue(ZTASK_ENG_Model& store, char** first, char** last) {
  for (char** seconds = first; seconds != last; ++seconds) {
    ZTASK_ENG_Task task;
    task.setString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY, *seconds);
    task.setStatus(1);
    task.setDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE,
                     QDateTime::fromSecsSinceEpoch(std::atoll(*seconds)));
    if (const int code = store.addTask(task); code != TASK_ENG_OK)
      return code;
  }
  return TASK_ENG_OK;
}

int hold(ZTASK_ENG_Model& store) {
  int count = 0;
  const int code = store.getCount(count);
  char byte = 0;
  if (write(gateNumber, &byte, 1) == 1)
    while (read(gateNumber, &byte, 1) > 0)
      continue;
  return code;
}

int runVerb(int argc, char** argv) {
  const std::string_view verb = argc > 1 ? argv[1] : "";
  ulo::openLogSink("store_user");
  const auto uid = static_cast<unsigned int>(argc > 2 ? std::atoi(argv[2]) : 0);
  Store store = run([] { return Store(); });
  int code = TASK_ENG_OK;
  if (verb == "remove-all")
    code = removeAll(store);
  else if (verb == "read")
    code = readAll(store);
  else if (verb == "add" && argc > 2)
    code = add(store, argv[2]);
  else if (verb == "update")
    code = update(store, uid);
  else if (verb == "synchronize")
    code = synchronize(uid);
  else if (verb == "add-due")
    code = addDue(store, argv + 2, argv + argc);
  else if (verb == "hold")
    code = hold(store);
  else
    return usage;
  if (code != TASK_ENG_OK)
    std::fprintf(stderr, "store_user: the store returned %d\n", code);
  return exitFor(code);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runVerb(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "store_user: %s\n", error.what());
    return failed;
  }
}
