// The verbs of the lock.

#include "ulotask_runner.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class Lock : public UlotaskTest {
protected:
  void set(const std::string& code) { succeed({"lock", "set"}, code + "\n"); }
  std::string status() { return succeed({"lock", "status"}).out; }
};

TEST_F(Lock, IsSetFromLineOfInputAndCleared) {
  EXPECT_EQ(status(), "There is no lock.\n");
  EXPECT_EQ(succeed({"lock", "set"}, "1234\n").out, "The lock is set.\n");
  EXPECT_EQ(status(), "The lock is set.\n");
  EXPECT_EQ(succeed({"lock", "clear"}, "1234\n").out, "The lock is cleared.\n");
  EXPECT_EQ(status(), "There is no lock.\n");
  EXPECT_EQ(succeed({"lock", "clear"}).out, "There is no lock.\n");
}

TEST_F(Lock, StoresNoReadableCode) {
  set("72915");
  const std::string text = readWhole(path("data/lock.json"));
  EXPECT_THAT(text, HasSubstr("$argon2id$"));
  EXPECT_THAT(text, Not(HasSubstr("72915")));
  struct stat status {};
  ASSERT_EQ(stat(path("data/lock.json").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(Lock, CountsAsDamagedWithoutLibraryForCodes) {
  environment_["ULO_LOG"] = "stderr";
  hideLibrary("libulolock.so");
  EXPECT_EQ(status(), "There is no lock.\n");
  const Outcome setting = ulotask({"lock", "set"}, "1234\n");
  EXPECT_EQ(setting.code, 1);
  EXPECT_THAT(setting.err, HasSubstr("libulolock.so can't be used"));
  EXPECT_NE(access(path("data/lock.json").c_str(), F_OK), 0);
  environment_.erase("LD_PRELOAD");
  set("1234");
  hideLibrary("libulolock.so");
  const Outcome clearing = ulotask({"lock", "clear"}, "1234\n");
  EXPECT_EQ(clearing.code, 1);
  EXPECT_THAT(clearing.err, HasSubstr("the lock can't be read; the log says why"));
  EXPECT_EQ(access(path("data/lock.json").c_str(), F_OK), 0);
}

TEST_F(Lock, IsChangedOnlyWithPresentCode) {
  set("1234");
  Outcome run = ulotask({"lock", "set"}, "5678\n9012\n");
  EXPECT_EQ(run.code, 16);
  EXPECT_EQ(run.err, "ulotask: the code is wrong\n");
  EXPECT_EQ(run.out, "");
  run = ulotask({"lock", "clear"}, "5678\n");
  EXPECT_EQ(run.code, 16);
  EXPECT_EQ(status(), "The lock is set.\n");
  succeed({"lock", "set"}, "1234\n5678\n");
  succeed({"lock", "clear"}, "5678\n");
}

TEST_F(Lock, WrongCodesDelayTheNextOne) {
  stepClock(0);  // A code takes no time, however long its hash takes.
  set("1234");
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(ulotask({"lock", "clear"}, "5678\n").err, "ulotask: the code is wrong\n");
  EXPECT_EQ(ulotask({"lock", "clear"}, "5678\n").err,
            "ulotask: the code is wrong; next try in 2 seconds\n");
  const Outcome run = ulotask({"lock", "clear"}, "1234\n");
  EXPECT_EQ(run.code, 16);
  EXPECT_EQ(run.err, "ulotask: too many wrong codes; next try in 2 seconds\n");
  EXPECT_EQ(status(), "The lock is set; next try in 2 seconds.\n");
}

TEST_F(Lock, AcceptsFourToSixtyFourCharacters) {
  const auto codeFor = [this](const std::string& code) {
    const int result = ulotask({"lock", "set"}, code + "\n").code;
    if (result == 0)
      succeed({"lock", "clear"}, code + "\n");
    return result;
  };
  EXPECT_EQ(codeFor(""), 2);
  EXPECT_EQ(codeFor("123"), 2);
  EXPECT_EQ(codeFor("1234"), 0);
  EXPECT_EQ(codeFor("家家家家"), 0);
  EXPECT_EQ(codeFor(std::string(64, 'x')), 0);
  EXPECT_EQ(codeFor(std::string(65, 'x')), 2);
  EXPECT_EQ(codeFor(std::string(100'000, 'x')), 2);
  EXPECT_EQ(codeFor("12\xff"
                    "34"),
            2);
}

TEST_F(Lock, RejectsMissingInput) {
  const Outcome run = ulotask({"lock", "set"});
  EXPECT_EQ(run.code, 2);
  EXPECT_EQ(run.err, "ulotask: no code was given\n");
  EXPECT_EQ(status(), "There is no lock.\n");
}

TEST_F(Lock, AcceptsCarriageReturnAtLineEnd) {
  succeed({"lock", "set"}, "1234\r\n");
  succeed({"lock", "clear"}, "1234");
}

TEST_F(Lock, IsEnteredTwiceOnTerminalAndNeverShown) {
  const Outcome run =
      onTerminal({"lock", "set"}, 80, {{"New code: ", "72915\n"}, {"New code again: ", "72915\n"}});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "New code: \r\nNew code again: \r\nThe lock is set.\r\n");
  EXPECT_EQ(onTerminal({"lock", "clear"}, 80, {{"Present code: ", "72915\n"}}).code, 0);
}

TEST_F(Lock, RejectsCodesThatDiffer) {
  const Outcome run =
      onTerminal({"lock", "set"}, 80, {{"New code: ", "72915\n"}, {"New code again: ", "72916\n"}});
  EXPECT_EQ(run.code, 2);
  EXPECT_THAT(run.out, EndsWith("ulotask: the codes differ\r\n"));
  EXPECT_EQ(status(), "There is no lock.\n");
}

TEST_F(Lock, InterruptRestoresTerminal) {
  const Outcome run = shellOnTerminal("trap 'stty -a | grep -ow -e -echo -e echo' EXIT; "
                                      "stty -echo; stty echo; \"$ULOTASK\" lock set",
                                      80, {{"New code: ", "12\x03"}});
  EXPECT_THAT(run.out, EndsWith("New code: \r\necho\r\n"));
  EXPECT_EQ(status(), "There is no lock.\n");
}

TEST_F(Lock, DamagedOneIsNeitherChangedNorCleared) {
  succeed({"list"});
  file("data/lock.json", "{}");
  for (const char* verb : {"set", "clear", "status"}) {
    const Outcome run = ulotask({"lock", verb}, "1234\n1234\n");
    EXPECT_EQ(run.code, 1) << verb;
    EXPECT_EQ(run.err, "ulotask: the lock can't be read; the log says why\n") << verb;
  }
  EXPECT_EQ(readWhole(path("data/lock.json")), "{}");
}

TEST_F(Lock, OffersItsVerbs) {
  EXPECT_EQ(succeed({"__complete", "lock", ""}).out, "set\tSet the lock, or change its code\n"
                                                     "clear\tRemove the lock\n"
                                                     "status\tShow whether the lock is set\n");
}

}  // namespace
