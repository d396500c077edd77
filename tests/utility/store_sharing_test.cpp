// Several stores on one database: in one thread, in several threads, in several processes.

#include "store_test.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <thread>

namespace {

using testing::ElementsAre;

constexpr int tasksEach = 40;

// Adds tasks named after `who` and removes every second one at once. Returns the UIDs of all of
// them, 0 for each that failed.
std::vector<unsigned int> work(const std::string& who) {
  Store store;
  std::vector<unsigned int> given;
  for (int i = 0; i < tasksEach; ++i) {
    Task task;
    task.setString(Task::TASK_FIELD_SUMMARY, QString::fromStdString(who + std::to_string(i)));
    task.setString(Task::TASK_FIELD_NOTE, "n");
    bool done = store.addTask(task) == TASK_ENG_OK;
    const unsigned int uid = task.getUINT32(Task::TASK_FIELD_UID);
    Task read;
    done = done && store.getTask(uid, read) == TASK_ENG_OK &&
           read.getString(Task::TASK_FIELD_SUMMARY) == task.getString(Task::TASK_FIELD_SUMMARY);
    if (i % 2 != 0)
      done = done && store.removeTask(uid) == TASK_ENG_OK;
    given.push_back(done ? uid : 0);
  }
  return given;
}

// A child process that runs `work` when it reads a byte from `startPipe`, and sends back the
// result.
class Child {
public:
  Child(int startPipe, const std::function<std::vector<unsigned int>()>& work) {
    int ends[2];
    if (pipe(ends) != 0)
      throw std::runtime_error("pipe failed");
    process_ = fork();
    if (process_ == 0) {
      char byte;
      const bool started = read(startPipe, &byte, 1) == 1;
      const std::vector<unsigned int> result = work();
      const std::size_t size = result.size() * sizeof(unsigned int);
      const bool told = write(ends[1], result.data(), size) == static_cast<ssize_t>(size);
      _exit(started && told ? 0 : 1);
    }
    ::close(ends[1]);
    resultPipe_ = ends[0];
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() { ::close(resultPipe_); }

  std::vector<unsigned int> result() {
    std::vector<unsigned int> values;
    unsigned int value = 0;
    while (read(resultPipe_, &value, sizeof value) == sizeof value)
      values.push_back(value);
    int status = -1;
    EXPECT_EQ(waitpid(process_, &status, 0), process_);
    EXPECT_EQ(status, 0);
    return values;
  }

private:
  pid_t process_ = -1;
  int resultPipe_ = -1;
};

// Runs `work` in two processes that start at the same moment.
std::array<std::vector<unsigned int>, 2>
inTwoProcesses(const std::function<std::vector<unsigned int>(int)>& work) {
  int start[2];
  if (pipe(start) != 0)
    throw std::runtime_error("pipe failed");
  Child first(start[0], [&] { return work(0); });
  Child second(start[0], [&] { return work(1); });
  EXPECT_EQ(write(start[1], "go", 2), 2);
  std::array<std::vector<unsigned int>, 2> results = {first.result(), second.result()};
  ::close(start[0]);
  ::close(start[1]);
  return results;
}

class StoreSharing : public StoreTest {
protected:
  // No task is lost, and no UID was used twice, not even after its task was removed.
  void expectAllThere(const std::vector<unsigned int>& first,
                      const std::vector<unsigned int>& second) {
    std::vector<unsigned int> kept;
    std::set<unsigned int> given;
    for (const auto* list : {&first, &second}) {
      ASSERT_EQ(list->size(), static_cast<std::size_t>(tasksEach));
      for (int i = 0; i < tasksEach; ++i) {
        const unsigned int uid = list->at(static_cast<std::size_t>(i));
        EXPECT_NE(uid, 0U);
        EXPECT_TRUE(given.insert(uid).second) << uid;
        if (i % 2 == 0)
          kept.push_back(uid);
      }
    }
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(uids(), kept);
    EXPECT_GT(add(task("one more")), *given.rbegin());
    EXPECT_EQ(reports().size(), static_cast<std::size_t>(2 * (tasksEach + tasksEach / 2) + 1));
  }
};

TEST_F(StoreSharing, TwoStoresInOneThreadSeeSameTasks) {
  Store other;
  const unsigned int uid = add(task("a"));
  Task read;
  EXPECT_EQ(other.getTask(uid, read), TASK_ENG_OK);
  read.setString(Task::TASK_FIELD_SUMMARY, "b");
  EXPECT_EQ(other.updateTask(read), TASK_ENG_OK);
  EXPECT_EQ(get(uid).getString(Task::TASK_FIELD_SUMMARY), QString("b"));
  EXPECT_EQ(store().removeAll(), TASK_ENG_OK);
  EXPECT_EQ(other.getTask(uid, read), TASK_ENG_NOT_FOUND);
}

TEST_F(StoreSharing, TwoThreadsLoseNoTasks) {
  std::vector<unsigned int> first;
  std::vector<unsigned int> second;
  std::thread one([&] { first = work("one "); });
  std::thread two([&] { second = work("two "); });
  one.join();
  two.join();
  expectAllThere(first, second);
}

TEST_F(StoreSharing, TwoProcessesLoseNoTasks) {
  prepare();
  const auto results =
      inTwoProcesses([](int number) { return work(number == 0 ? "one " : "two "); });
  expectAllThere(results[0], results[1]);
}

TEST_F(StoreSharing, SeesChangeByAnotherProcessImmediately) {
  const unsigned int uid = add(task("a"));
  // The children must not use this connection; each opens its own.
  close();
  const auto results = inTwoProcesses([uid](int number) -> std::vector<unsigned int> {
    if (number == 1)
      return {};
    Store other;
    Task task;
    return {static_cast<unsigned int>(other.getTask(uid, task)),
            static_cast<unsigned int>(other.removeTask(uid))};
  });
  EXPECT_THAT(results[0], ElementsAre(TASK_ENG_OK, TASK_ENG_OK));
  EXPECT_EQ(code(uid), TASK_ENG_NOT_FOUND);
}

TEST_F(StoreSharing, TwoProcessesCreateOneDatabase) {
  for (int round = 0; round < 25; ++round) {
    const DataDirectory fresh;
    const auto results = inTwoProcesses([](int) -> std::vector<unsigned int> {
      Store store;
      int count = -1;
      QValueList<QString> names;
      return {static_cast<unsigned int>(store.getCount(count)),
              static_cast<unsigned int>(store.getAllCategories(names)), names.count()};
    });
    for (const auto& result : results)
      EXPECT_THAT(result, ElementsAre(TASK_ENG_OK, TASK_ENG_OK, 6U));
    RawDatabase database(fresh.path());
    EXPECT_THAT(database.run("SELECT count(*), sum(name IS NULL) FROM task_table_category"),
                ElementsAre("6|1"));
  }
  setenv("ULO_DATA_DIR", directory_.path().c_str(), 1);
}

}  // namespace
