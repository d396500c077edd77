// Measures the memory that operations need besides their results, each in a separate process.
//   ulo_bench_memory DIRECTORY          all operations, one line of JSON for each
//   ulo_bench_memory DIRECTORY N SIDE   the N-th operation, in this process

#include "ZVtodoParser.h"
#include "dataset.h"
#include "heap_meter.h"
#include "ulo/log_sink.h"
#include "workbench.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace bench;

constexpr int storeSize = 100000;
constexpr int importSizes[] = {1000, 10000, 100000};

// The measurements of one call.
struct Measured {
  std::size_t items = 0;  // in the result
  std::size_t held = 0;   // heap used by the result
  std::size_t heap = 0;   // peak heap during the call, relative to before
  long rss = 0;           // peak resident set during the call, relative to before
};

// Returns the bytes in a line of /proc/self/status.
long statusLine(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind(name + ":", 0) == 0)
      return std::atol(line.c_str() + name.size() + 1) * 1024;
  return 0;
}

template <typename List> Measured measure(const std::function<void(List&)>& call) {
  Measured measured;
  std::ofstream("/proc/self/clear_refs") << "5\n";  // resets the peak resident set
  const long rssBefore = statusLine("VmRSS");
  const std::size_t before = heapInUse();
  restartHeapPeak();
  std::size_t withResult = 0;
  {
    List result;
    call(result);
    measured.heap = heapPeak() - before;
    measured.rss = statusLine("VmHWM") - rssBefore;
    measured.items = result.count();
    withResult = heapInUse();
  }
  measured.held = withResult - heapInUse();
  return measured;
}

struct OwnedTodos : QList<Task> {
  OwnedTodos() { setAutoDelete(true); }
};

// One operation, for either side. The vObject library alone cannot read a file with so many to-dos.
struct Operation {
  std::string name;
  std::string file;  // the file to read, only for our side; otherwise empty
  std::function<Measured(Side)> run;
};

// Measures a call of the store after a first call, so that everything that it caches is loaded.
template <typename List>
Measured inStore(const std::string& directory, Side side,
                 const std::function<int(OurStore&, List&)>& ours,
                 const std::function<void(HandStore&, List&)>& hand) {
  setenv("ULO_DATA_DIR", directory.c_str(), 1);
  int count = 0;
  if (side == Side::ours) {
    OurStore store;
    store.getCount(count);
    return measure<List>([&](List& result) {
      if (ours(store, result) != TASK_ENG_OK)
        std::_Exit(EXIT_FAILURE);
    });
  }
  HandStore store(directory);
  store.count();
  return measure<List>([&](List& result) { hand(store, result); });
}

std::string importFile(const std::string& directory, int count) {
  return directory + "/" + std::to_string(count) + ".vcs";
}

std::vector<Operation> operations(const std::string& directory) {
  constexpr int first = std::numeric_limits<int>::min();
  constexpr int last = std::numeric_limits<int>::max();
  std::vector<Operation> all;
  all.push_back({"getAllTasks", "", [=](Side side) {
                   return inStore<Tasks>(
                       directory, side,
                       [](OurStore& store, Tasks& tasks) {
                         Task nothing;
                         return store.getMatchTasks(tasks, nothing);
                       },
                       [](HandStore& store, Tasks& tasks) { store.all(tasks); });
                 }});
  all.push_back({"match.text", "", [=](Side side) {
                   return inStore<Tasks>(
                       directory, side,
                       [](OurStore& store, Tasks& tasks) {
                         QString text = "a";
                         return store.getMatchTasks(tasks, text);
                       },
                       [](HandStore& store, Tasks& tasks) { store.mentioning(tasks, "a"); });
                 }});
  all.push_back({"range.due", "", [=](Side side) {
                   return inStore<Tasks>(
                       directory, side,
                       [](OurStore& store, Tasks& tasks) {
                         return store.getTasks(tasks, Task::TASK_FIELD_DUE, first, last);
                       },
                       [](HandStore& store, Tasks& tasks) {
                         store.range(tasks, Task::TASK_FIELD_DUE, first, last);
                       });
                 }});
  all.push_back({"category", "", [=](Side side) {
                   return inStore<Tasks>(
                       directory, side,
                       [](OurStore& store, Tasks& tasks) {
                         QString category = categoryNames().at(7);
                         return store.getTasks(tasks, category);
                       },
                       [](HandStore& store, Tasks& tasks) {
                         store.ofCategory(tasks, categoryNames().at(7));
                       });
                 }});
  all.push_back({"getAllIDs", "", [=](Side side) {
                   return inStore<Uids>(
                       directory, side,
                       [](OurStore& store, Uids& uids) { return store.getAllIDs(uids); },
                       [](HandStore& store, Uids& uids) { store.ids(uids); });
                 }});
  for (const int count : importSizes) {
    const std::string file = importFile(directory, count);
    all.push_back({"vtodo.read-file." + std::to_string(count), file, [=](Side) {
                     ZVtodoParser parser;
                     return measure<OwnedTodos>([&](OwnedTodos& tasks) {
                       parser.readVtodo(QString::fromStdString(file), tasks);
                     });
                   }});
  }
  return all;
}

void prepare(const std::string& directory) {
  fillStore(directory, storeSize);
  for (const int count : importSizes) {
    OwnedTodos tasks;
    TaskSource source;
    for (int i = 0; i < count; ++i)
      tasks.append(new Task(source.next()));
    ZVtodoParser().writeVtodo(QString::fromStdString(importFile(directory, count)), tasks);
  }
}

void print(const Operation& operation, Side side) {
  const Measured measured = operation.run(side);
  std::printf("{\"name\": \"%s\", \"side\": \"%s\", \"items\": %zu, \"held\": %zu, \"heap\": %zu, "
              "\"rss\": %ld, \"file\": %ju}\n",
              operation.name.c_str(), side == Side::ours ? "ours" : "hand", measured.items,
              measured.held, measured.heap, measured.rss,
              operation.file.empty() ? 0 : std::filesystem::file_size(operation.file));
  std::fflush(stdout);
}

// Runs `work` in a separate process. Ends this one if it fails.
void inChild(const std::function<void()>& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    work();
    std::_Exit(EXIT_FAILURE);  // not reached if `work` starts a program
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
    std::fprintf(stderr, "a measurement failed\n");
    std::_Exit(EXIT_FAILURE);
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2 && count != 4) {
    std::fprintf(stderr, "usage: %s DIRECTORY [N ours|hand|prepare]\n", arguments[0]);
    return EXIT_FAILURE;
  }
  setenv("TZ", "Europe/Berlin", 1);
  setenv("ULO_LOG", "none", 1);
  ulo::openLogSink("ulo_bench_memory");
  const std::string directory = arguments[1];
  const std::vector<Operation> all = operations(directory);
  if (count == 4) {
    const std::string side = arguments[3];
    if (side == "prepare")
      prepare(directory);
    else
      print(all.at(std::strtoul(arguments[2], nullptr, 10)),
            side == "ours" ? Side::ours : Side::hand);
    return EXIT_SUCCESS;
  }
  const auto start = [&](std::size_t number, const char* side) {
    inChild([&] {
      execl("/proc/self/exe", arguments[0], directory.c_str(), std::to_string(number).c_str(), side,
            nullptr);
    });
  };
  start(0, "prepare");
  for (std::size_t i = 0; i < all.size(); ++i)
    for (const char* side : {"ours", "hand"})
      if (std::strcmp(side, "ours") == 0 || all[i].file.empty())
        start(i, side);
  return EXIT_SUCCESS;
}
