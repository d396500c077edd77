// The store's writing operations. Each side uses its own files, which are restored afterwards.

#include "dataset.h"
#include "pairs.h"

#include <algorithm>
#include <map>
#include <vector>

namespace bench {
namespace {

void require(bool done) {
  if (!done)
    throw std::runtime_error("the store does not write");
}

// A writing operation, for each side.
struct Writing {
  std::string name;
  std::function<bool(Workbench&, Task&)> ours;
  std::function<bool(Workbench&, Task&)> hand;
  // Returns the record for the call with this number, which is unique between two restores.
  std::function<Task(Workbench&, int)> record;
};

// Returns UIDs spread over the whole table, distinct for the first `size` numbers.
unsigned int uidOf(const Workbench& bench, int number) {
  const int parts = std::min(bench.size(), 10);
  const int part = bench.size() / parts;
  return static_cast<unsigned int>((number % parts) * part + number / parts + 1);
}

Task storedTask(Workbench& bench, int number) {
  Task task;
  require(bench.hand().get(uidOf(bench, number), task));
  return task;
}

void registerWriting(Workbench& bench, const Writing& writing) {
  const auto callOf = [writing](Side side) {
    return side == Side::ours ? writing.ours : writing.hand;
  };
  // Returns the effect of one write on the store and the journal.
  const auto written = [&bench, writing, callOf](Side side) {
    Task task = writing.record(bench, 0);
    require(callOf(side)(bench, task));
    const unsigned int uid = task.getUINT32(Task::TASK_FIELD_UID);
    std::string result = bench.stored(side, uid);
    Uids changed;
    changed.append(uid);
    bench.restore(side, changed);
    return result;
  };
  const auto compare = [=] {
    if (const std::string difference = differenceOf(written(Side::ours), written(Side::hand));
        !difference.empty())
      stop(writing.name, "the two sides store different data: " + difference);
  };
  const Effort effort = durableEffort();
  // The records of a repetition, by side.
  const auto records = std::make_shared<std::map<Side, std::vector<Task>>>();
  const auto prepare = [=, &bench](Side side) {
    std::vector<Task>& own = (*records)[side];
    own.clear();
    for (int i = 0; i < effort.calls; ++i)
      own.push_back(writing.record(bench, i));
  };
  const auto call = [=, &bench](Side side, int number) {
    require(callOf(side)(bench, records->at(side).at(static_cast<std::size_t>(number))));
  };
  const auto finish = [=, &bench](Side side) {
    Uids changed;
    for (const Task& record : records->at(side))
      changed.append(record.getUINT32(Task::TASK_FIELD_UID));
    bench.restore(side, changed);
  };
  registerPaired({writing.name, effort, 1, compare, prepare, call, finish});
}

void registerRemoveAll(Workbench& bench) {
  const auto removeAll = [&bench](Side side) {
    if (side == Side::ours)
      require(bench.ours().removeAll() == TASK_ENG_OK);
    else
      bench.hand().removeAll();
  };
  const auto compare = [=, &bench] {
    std::string left[2];
    for (const Side side : {Side::ours, Side::hand}) {
      bench.restoreAll(side);
      removeAll(side);
      left[side == Side::ours ? 0 : 1] = bench.removals(side);
      bench.restoreAll(side);
    }
    if (const std::string difference = differenceOf(left[0], left[1]); !difference.empty())
      stop("removeAll", "the two sides leave different data: " + difference);
  };
  // Makes one call, so that the file and the statements are in the state of a store in use.
  const auto prepare = [&bench](Side side) {
    int count = side == Side::ours ? 0 : bench.hand().count();
    require(side == Side::hand || bench.ours().getCount(count) == TASK_ENG_OK);
  };
  Effort effort = durableEffort();
  effort.calls = 1;
  effort.repetitions = bench.size() <= 200000 ? 5 : 3;
  registerPaired({"removeAll", effort, double(bench.size()), compare, prepare,
                  [=](Side side, int) { removeAll(side); },
                  [&bench](Side side) { bench.restoreAll(side); }});
}

}  // namespace

void registerStoreWriting(Workbench& bench) {
  registerWriting(bench,
                  {"addTask",
                   [](Workbench& b, Task& task) { return b.ours().addTask(task) == TASK_ENG_OK; },
                   [](Workbench& b, Task& task) {
                     b.hand().add(task);
                     return true;
                   },
                   [](Workbench&, int number) {
                     return TaskSource(static_cast<std::uint64_t>(1000 + number)).next();
                   }});
  registerWriting(
      bench, {"updateTask",
              [](Workbench& b, Task& task) { return b.ours().updateTask(task) == TASK_ENG_OK; },
              [](Workbench& b, Task& task) { return b.hand().update(task); },
              [](Workbench& b, int number) {
                Task task = storedTask(b, number);
                TaskSource source(static_cast<std::uint64_t>(number));
                task.setString(Task::TASK_FIELD_SUMMARY, source.text(30));
                task.setPriority((task.getPriorityValue() + 1) % 10);
                return task;
              }});
  registerWriting(bench, {"removeTask",
                          [](Workbench& b, Task& task) {
                            return b.ours().removeTask(task.getUINT32(Task::TASK_FIELD_UID)) ==
                                   TASK_ENG_OK;
                          },
                          [](Workbench& b, Task& task) {
                            return b.hand().remove(task.getUINT32(Task::TASK_FIELD_UID));
                          },
                          storedTask});
  registerRemoveAll(bench);
}

}  // namespace bench
