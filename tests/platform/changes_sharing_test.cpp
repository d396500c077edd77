// Several users of the journal of changes at once.

#include "changes_test.h"
#include "other_process.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <latch>
#include <set>
#include <thread>

namespace {

using testing::SizeIs;

TEST_F(Journal, ProcessesThatStartAtOnce) {
  constexpr int processes = 5;
  constexpr int changes = 3;
  for (int round = 0; round < 25; ++round) {
    const DataDirectory fresh;
    std::vector<pid_t> children;
    children.reserve(processes);
    for (int i = 0; i < processes; ++i)
      children.push_back(startProcess([&] {
        SVC_CT_ChangeReporter reporter;
        int failures = 0;
        for (int n = 0; n < changes; ++n)
          failures += reporter.report(recordOf(static_cast<unsigned>(i * changes + n)), -1);
        return failures;
      }));
    for (const pid_t child : children)
      EXPECT_EQ(waitFor(child), 0);
    const std::vector<std::uint32_t> uids = uidsIn(fresh.path());
    EXPECT_THAT(uids, SizeIs(processes * changes));
    EXPECT_THAT(std::set<std::uint32_t>(uids.begin(), uids.end()), SizeIs(processes * changes));
    EXPECT_EQ(fs::status(fresh.path() / "changes.db").permissions(), fs::perms(0600));
  }
}

TEST_F(Journal, ThreadsThatStartAtOnce) {
  constexpr int threads = 5;
  constexpr int changes = 3;
  for (int round = 0; round < 40; ++round) {
    const TemporaryDirectory fresh;
    std::latch start(threads);
    std::atomic<int> failures = 0;
    std::vector<std::thread> running;
    running.reserve(threads);
    for (int i = 0; i < threads; ++i)
      running.emplace_back([&, i] {
        ChangeJournal journal(fresh.path());
        start.arrive_and_wait();
        for (int n = 0; n < changes; ++n)
          if (!journal.append({changeOf(static_cast<std::uint32_t>(i * changes + n))}))
            ++failures;
      });
    for (std::thread& thread : running)
      thread.join();
    EXPECT_EQ(failures, 0);
    const std::vector<std::uint32_t> uids = uidsIn(fresh.path());
    EXPECT_THAT(uids, SizeIs(threads * changes));
    EXPECT_THAT(std::set<std::uint32_t>(uids.begin(), uids.end()), SizeIs(threads * changes));
  }
}

TEST_F(Journal, ReadersSeeWholeBatches) {
  constexpr std::uint32_t size = 10;
  constexpr int batches = 60;
  std::vector<pid_t> writers;
  writers.reserve(2);
  for (int writer = 0; writer < 2; ++writer)
    writers.push_back(startProcess([&] {
      SVC_CT_ChangeReporter reporter;
      for (int n = 0; n < batches; ++n) {
        if (reporter.beginBatch("engine") != 0)
          return 1;
        for (std::uint32_t i = 0; i < size; ++i)
          reporter.report(recordOf(i), -1);
        if (reporter.endBatch("engine") != 0)
          return 2;
      }
      return 0;
    }));
  std::size_t seen = 0;
  while (seen < static_cast<std::size_t>(size) * batches * writers.size()) {
    // A writer that fails must not leave us here.
    const bool over = std::all_of(writers.begin(), writers.end(), [](pid_t writer) {
      siginfo_t info{};
      return waitid(P_PID, static_cast<id_t>(writer), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
             info.si_pid == writer;
    });
    const std::vector<Change> entries = entriesOf(journal_);
    for (std::size_t i = 0; i < entries.size(); ++i)
      ASSERT_EQ(entries[i].uid, i % size);  // each batch in one piece
    ASSERT_EQ(entries.size() % size, 0U);
    seen = entries.size();
    if (over)
      break;
  }
  for (const pid_t writer : writers)
    EXPECT_EQ(waitFor(writer), 0);
  EXPECT_EQ(seen, static_cast<std::size_t>(size) * batches * writers.size());
}

TEST_F(Journal, AKilledWriterLosesNothingItReported) {
  constexpr std::uint32_t size = 5;
  std::uint32_t next = 0;
  for (int round = 0; round < 8; ++round) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t writer = startProcess([&] {
      close(ends[0]);
      SVC_CT_ChangeReporter reporter;
      for (std::uint32_t uid = next;; uid += size) {
        reporter.beginBatch("engine");
        for (std::uint32_t i = 0; i < size; ++i)
          reporter.report(recordOf(uid + i), -1);
        const char byte = '.';
        if (reporter.endBatch("engine") != 0 || write(ends[1], &byte, 1) != 1)
          return 1;
      }
    });
    close(ends[1]);
    char byte = 0;
    std::uint32_t reported = 0;
    while (reported < 10 + static_cast<std::uint32_t>(round) * 3 && read(ends[0], &byte, 1) == 1)
      ++reported;
    kill(writer, SIGKILL);
    while (read(ends[0], &byte, 1) == 1)
      ++reported;
    close(ends[0]);
    EXPECT_EQ(waitFor(writer), 128 + SIGKILL);

    const std::vector<std::uint32_t> uids = uidsIn(directory_.path());
    EXPECT_GE(uids.size(), next + reported * size);
    EXPECT_EQ(uids.size() % size, 0U);
    for (std::uint32_t i = 0; i < uids.size(); ++i)
      ASSERT_EQ(uids[i], i);
    next = static_cast<std::uint32_t>(uids.size());
    EXPECT_EQ(lastOf(journal_), next);
  }
}

}  // namespace
