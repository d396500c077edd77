// Tests for concurrent readers and writers of the change journal.

#include "changes_test.h"
#include "other_process.h"

#include <csignal>

namespace {

TEST_F(Journal, ReadersSeeOnlyCompleteTransactions) {
  constexpr std::uint32_t size = 10;
  constexpr std::size_t transactions = 60;
  file_ = std::make_unique<FollowedFile>(path());
  file_.reset();
  const pid_t writer = startProcess([&] {
    sqlite3* database = nullptr;
    std::string sql = "BEGIN;";
    for (std::uint32_t uid = 0; uid < size; ++uid)
      sql +=
          "INSERT INTO ulo_changes (time, uid, type) VALUES (0, " + std::to_string(uid) + ", 1);";
    sql += "COMMIT";
    int result = sqlite3_open(path().c_str(), &database);
    sqlite3_busy_timeout(database, 10000);
    for (std::size_t n = 0; n < transactions && result == SQLITE_OK; ++n)
      result = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr);
    sqlite3_close(database);
    return result;
  });
  std::size_t seen = 0;
  while (seen < size * transactions) {
    // If the writer fails, this loop must end.
    siginfo_t info{};
    const bool over =
        waitid(P_PID, static_cast<id_t>(writer), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
        info.si_pid == writer;
    const std::vector<Change> entries = entriesOf(journal_);
    ASSERT_EQ(entries.size() % size, 0U);
    for (std::size_t i = 0; i < entries.size(); ++i)
      ASSERT_EQ(entries[i].uid, i % size);
    seen = entries.size();
    if (over)
      break;
  }
  EXPECT_EQ(waitFor(writer), 0);
  EXPECT_EQ(seen, size * transactions);
}

}  // namespace
