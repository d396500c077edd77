// Runs a few operations under callgrind, which counts the instructions of each one separately.
//   ulo_bench_instructions prepare DIRECTORY SIZE   fills a store
//   ulo_bench_instructions count DIRECTORY          run under valgrind by bench/instructions
// Dumps are named "operation/side/calls".

#include "dataset.h"
#include "task_search.h"
#include "ulo/log_sink.h"
#include "workbench.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include <valgrind/callgrind.h>

namespace {

using namespace bench;

constexpr int pageSize = 10;

void require(bool good) {
  if (!good)
    throw std::runtime_error("an operation fails");
}

// Does not count the first call, which prepares statements.
void countCalls(const std::string& name, int calls, const std::function<void()>& call) {
  call();
  CALLGRIND_TOGGLE_COLLECT;
  for (int i = 0; i < calls; ++i)
    call();
  CALLGRIND_TOGGLE_COLLECT;
  const std::string label = name + "/" + std::to_string(calls);
  CALLGRIND_DUMP_STATS_AT(label.c_str());
}

void countOpen(const std::string& directory) {
  countCalls("open-close/ours", 10, [] {
    OurStore store;
    int count = 0;
    require(store.getCount(count) == TASK_ENG_OK);
  });
  countCalls("open-close/hand", 10, [&] { require(HandStore(directory).count() > 0); });
}

void countPage(OurStore& ours, HandStore& hand) {
  constexpr auto view = ZTASK_ENG_Model::TASK_CATEGORY_ALL;
  constexpr auto sort = ZTASK_ENG_Model::TASK_SORT_DUE;
  Uids uids;
  hand.ids(uids, view, sort);
  Task start;
  require(hand.get(uids.at(uids.count() / 2), start));
  countCalls("page.all.by-due.middle/ours", 100, [&] {
    Tasks tasks;
    require(ours.getTasks(tasks, start, pageSize, view, sort) == TASK_ENG_OK);
  });
  countCalls("page.all.by-due.middle/hand", 100, [&] {
    Tasks tasks;
    require(hand.page(tasks, start, pageSize, view, sort));
  });
}

void countSingle(OurStore& ours, HandStore& hand) {
  countCalls("getTask/ours", 200, [&] {
    Task task;
    require(ours.getTask(77, task) == TASK_ENG_OK);
  });
  countCalls("getTask/hand", 200, [&] {
    Task task;
    require(hand.get(77, task));
  });
  constexpr auto view = ZTASK_ENG_Model::TASK_CATEGORY_INCOMPLETE;
  countCalls("getCount.incomplete/ours", 2, [&] {
    int count = 0;
    require(ours.getCount(count, view) == TASK_ENG_OK);
  });
  countCalls("getCount.incomplete/hand", 2, [&] { require(hand.count(view) > 0); });
}

// No task contains the text.
void countSearches(OurStore& ours, HandStore& hand) {
  QString text = "no task has this";
  const auto count = [&](const std::string& operation, const std::function<void(Tasks&)>& search) {
    countCalls(operation, 1, [&] {
      Tasks tasks;
      search(tasks);
      require(tasks.isEmpty());
    });
  };
  const auto byHand = [&](Tasks& tasks) { hand.mentioning(tasks, text); };
  count("match.nothing/ours",
        [&](Tasks& tasks) { require(ours.getMatchTasks(tasks, text) == TASK_ENG_OK); });
  count("match.nothing/hand", byHand);
  count("search.nothing/ours", [&](Tasks& tasks) {
    require(ulo::searchTasks({text, {}}, [&](const Task& task) { tasks.append(task); }) ==
            TASK_ENG_OK);
  });
  count("search.nothing/hand", byHand);
}

void countAll(const std::string& directory) {
  setenv("ULO_DATA_DIR", directory.c_str(), 1);
  countOpen(directory);
  OurStore ours;
  HandStore hand(directory);
  countPage(ours, hand);
  countSingle(ours, hand);
  countSearches(ours, hand);
}

}  // namespace

int main(int count, char** arguments) {
  setenv("TZ", "Europe/Berlin", 1);
  setenv("ULO_LOG", "none", 1);
  ulo::openLogSink("ulo_bench_instructions");
  try {
    if (count == 4 && std::strcmp(arguments[1], "prepare") == 0) {
      bench::fillStore(arguments[2], std::atoi(arguments[3]));
      return EXIT_SUCCESS;
    }
    if (count == 3 && std::strcmp(arguments[1], "count") == 0) {
      countAll(arguments[2]);
      return EXIT_SUCCESS;
    }
    std::fprintf(stderr, "usage: %s prepare DIRECTORY SIZE | count DIRECTORY\n", arguments[0]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
  }
  return EXIT_FAILURE;
}
