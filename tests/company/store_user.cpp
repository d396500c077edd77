// A program that uses only the public headers, for operations for which `ulotask` has no verb.
//   store_user remove-all         removes all tasks, then prints a line
//   store_user add-due SECONDS... adds a task for each time, due then (UTC seconds)
//   store_user hold               keeps the store open until descriptor 9 reaches its end
// Its exit codes are those of ulotask: 0, 9 if the store is full, 10 if it cannot be opened, else
// 1.

#include "ZTASK_ENG_Model.h"
#include "ulo/log_sink.h"
#include "ulodb2.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>
#include <unistd.h>

namespace {

constexpr int gateNumber = 9;

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

int removeAll(Store& store) {
  const int code = store.removeAll();
  // The store ignores the result of the commit; the database reports it.
  if (code == TASK_ENG_OK && DB_LastResult() != DB_OK)
    return TASK_ENG_DATABASE_FAILURE;
  if (code == TASK_ENG_OK)
    std::puts("Removed all");
  return code;
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

int run(int argc, char** argv) {
  const std::string_view verb = argc > 1 ? argv[1] : "";
  ulo::openLogSink("store_user");
  Store store;
  int code = TASK_ENG_OK;
  if (verb == "remove-all")
    code = removeAll(store);
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
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "store_user: %s\n", error.what());
    return failed;
  }
}
