// Tests for the application lock without its dialog.

#include "lock_test.h"

#include "log_capture.h"

#include <gmock/gmock.h>
#include <sodium.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>

#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

// Called while libsodium compares a code. The comparison fails with the errno it returns, if not 0.
std::function<int()> whileHashing;

}  // namespace

extern "C" int crypto_pwhash_str_verify(const char hash[crypto_pwhash_STRBYTES], const char* code,
                                        unsigned long long size) {
  static const auto real = reinterpret_cast<decltype(&crypto_pwhash_str_verify)>(
      dlsym(RTLD_NEXT, "crypto_pwhash_str_verify"));
  if (whileHashing) {
    if (const int reason = whileHashing(); reason != 0) {
      errno = reason;
      return -1;
    }
  }
  return real(hash, code, size);
}

namespace {

using ulo::AppLock;
using ulo::LockCode;
using Answer = AppLock::Answer;
using State = AppLock::State;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::Not;

using AppLockTest = LockTest;

TEST_F(AppLockTest, IsOpenUntilCodeIsSet) {
  EXPECT_EQ(lock_.state(), State::open);
  EXPECT_EQ(answer("anything"), Answer::right);
  EXPECT_NE(access(file().c_str(), F_OK), 0);
  set("1234");
  EXPECT_EQ(lock_.state(), State::locked);
}

TEST_F(AppLockTest, AcceptsOnlyItsCode) {
  set("1234");
  EXPECT_EQ(answer("1234"), Answer::right);
  EXPECT_EQ(answer("1235"), Answer::wrong);
  EXPECT_EQ(answer("123"), Answer::wrong);
  EXPECT_EQ(lock_.state(), State::locked);
}

TEST_F(AppLockTest, RejectsEmptyCode) {
  set("1234");
  EXPECT_EQ(answer(""), Answer::wrong);
}

TEST_F(AppLockTest, TreatsComposedAndDecomposedLettersAsEqual) {
  set(QString::fromUtf8("sch\u00f6n"));
  EXPECT_EQ(answer(QString::fromUtf8("scho\u0308n")), Answer::right);
}

TEST_F(AppLockTest, NewCodeReplacesOldOne) {
  set("1234");
  fail(3);
  set("5678");
  EXPECT_EQ(answer("1234"), Answer::wrong);
  EXPECT_EQ(answer("5678"), Answer::right);
}

TEST_F(AppLockTest, IsOpenAfterClear) {
  set("1234");
  ASSERT_TRUE(lock_.clear());
  EXPECT_EQ(lock_.state(), State::open);
  EXPECT_TRUE(lock_.clear());
}

TEST_F(AppLockTest, FileContainsHashAndIsReadableByOwnerOnly) {
  const mode_t before = umask(0);
  set("72915");
  umask(before);
  EXPECT_THAT(bytes(), HasSubstr("$argon2id$v=19$m=65536,t=2,p=1$"));
  EXPECT_THAT(bytes(), Not(HasSubstr("72915")));
  struct stat status {};
  ASSERT_EQ(stat(file().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  // Rewriting the file restores its mode.
  ASSERT_EQ(chmod(file().c_str(), 0644), 0);
  fail(1);
  ASSERT_EQ(stat(file().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(AppLockTest, SameCodeGetsDifferentHashes) {
  set("1234");
  const std::string first = bytes();
  set("1234");
  EXPECT_NE(bytes(), first);
}

TEST_F(AppLockTest, AllowsThreeWrongCodesWithoutWait) {
  set("1234");
  for (int i = 0; i < 3; ++i) {
    const AppLock::Result result = check("wrong");
    EXPECT_EQ(result.answer, Answer::wrong);
    EXPECT_EQ(result.wait, milliseconds(0));
  }
  const AppLock::Result fourth = check("wrong");
  EXPECT_EQ(fourth.answer, Answer::wrong);
  EXPECT_EQ(fourth.wait, seconds(2));
}

TEST_F(AppLockTest, FurtherWrongCodesDoubleWaitUpToFifteenMinutes) {
  set("1234");
  fail(3);
  for (const long expected : {2, 4, 8, 16, 32, 64, 128, 256, 512, 900, 900}) {
    fail(1);
    EXPECT_EQ(waitSeconds(), expected);
  }
}

TEST_F(AppLockTest, WaitStaysAtMaximum) {
  set("1234");
  fail(1);
  std::string text = bytes();
  text.replace(text.find("\"failures\": 1"), 13, "\"failures\": 999999");
  write(text);
  EXPECT_EQ(waitSeconds(), 900);
  now_.sinceBoot += seconds(900);
  for (int i = 0; i < 3; ++i) {
    fail(1);
    EXPECT_EQ(lock_.state(), State::locked);
    EXPECT_EQ(waitSeconds(), 900);
  }
}

TEST_F(AppLockTest, ChecksNoCodeWhileWaiting) {
  set("1234");
  fail(4);
  now_.sinceBoot += milliseconds(1999);
  const AppLock::Result early = check("1234");
  EXPECT_EQ(early.answer, Answer::tooEarly);
  EXPECT_EQ(early.wait, milliseconds(1));
  EXPECT_EQ(answer("wrong"), Answer::tooEarly);
  now_.sinceBoot += milliseconds(1);
  EXPECT_EQ(lock_.wait(), milliseconds(0));
  EXPECT_EQ(answer("1234"), Answer::right);
}

TEST_F(AppLockTest, CorrectCodeResetsFailures) {
  set("1234");
  fail(3);
  EXPECT_EQ(answer("1234"), Answer::right);
  fail(3);
  EXPECT_EQ(waitSeconds(), 0);
}

TEST_F(AppLockTest, SharesFailuresBetweenObjects) {
  set("1234");
  fail(5);
  AppLock other(directory_.path(), [this] { return now_; });
  EXPECT_EQ(other.wait(), seconds(4));
  QString code = "1234";
  EXPECT_EQ(other.check(LockCode(code)).answer, Answer::tooEarly);
}

TEST_F(AppLockTest, RebootRestartsWait) {
  set("1234");
  fail(5);
  now_ = {"two", seconds(1)};
  EXPECT_EQ(waitSeconds(), 3);
  // The time since the new boot is later than that of the wrong code since the old one.
  now_.sinceBoot = std::chrono::hours(100);
  EXPECT_EQ(waitSeconds(), 0);
  fail(6);
  now_ = {"three", now_.sinceBoot + milliseconds(1)};
  EXPECT_EQ(waitSeconds(), 0);
}

TEST_F(AppLockTest, SettingClockBackDoesNotShortenWait) {
  set("1234");
  fail(5);
  now_.sinceBoot = milliseconds(0);
  EXPECT_EQ(waitSeconds(), 4);
}

TEST_F(AppLockTest, CountsAttemptBeforeCheckingCode) {
  set("1234");
  fail(4);
  now_.sinceBoot += seconds(2);
  // Files cannot grow: the attempt cannot be counted, so it is not made.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit none{0, before.rlim_max};
  LogCapture log;
  setrlimit(RLIMIT_FSIZE, &none);
  const Answer found = answer("1234");
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(found, Answer::failed);
  EXPECT_THAT(log.text(), HasSubstr("lock.json can't be written"));
  EXPECT_EQ(answer("1234"), Answer::right);
}

TEST_F(AppLockTest, StoresAttemptBeforeCheckingCode) {
  set("1234");
  std::string seen;
  whileHashing = [&] {
    seen = bytes();
    return 0;
  };
  EXPECT_EQ(answer("1234"), Answer::right);
  whileHashing = nullptr;
  EXPECT_THAT(seen, HasSubstr("\"failures\": 1"));
  EXPECT_THAT(bytes(), HasSubstr("\"failures\": 0"));
}

TEST_F(AppLockTest, ReportsFailureWithoutMemory) {
  set("1234");
  LogCapture log;
  whileHashing = [] { return ENOMEM; };
  EXPECT_EQ(answer("1234"), Answer::failed);
  whileHashing = nullptr;
  EXPECT_THAT(log.text(), HasSubstr("can't be checked: Cannot allocate memory"));
  EXPECT_EQ(answer("1234"), Answer::right);
}

TEST_F(AppLockTest, DamagedFileDeniesAccess) {
  set("1234");
  fail(1);
  const std::string sound = bytes();
  const auto with = [&](const std::string& part, const std::string& other) {
    std::string text = sound;
    const std::size_t place = text.find(part);
    EXPECT_NE(place, std::string::npos) << part;
    return text.replace(place, part.size(), other);
  };
  const std::vector<std::string> texts = {
      "",
      "{}",
      "[]",
      "null",
      sound.substr(0, sound.size() / 2),
      std::string(sound.size(), '\0'),
      with("$argon2id$", "$argon2i$"),
      with("m=65536", "m=4294967295"),
      with("t=2", "t=4294967295"),
      with("\"hash\": \"", "\"hash\": \"x"),
      with("\"failures\": 1", "\"failures\": -1"),
      with("\"failures\": 1", "\"failures\": 1.5"),
      with("\"failures\": 1", "\"failures\": 1e300"),
      with("\"failures\": 1", "\"failures\": \"1\""),
      with("\"last\": ", "\"last\": -"),
      with("\"boot\": ", "\"shoe\": "),
      sound + std::string(5000, ' '),
  };
  for (const std::string& text : texts) {
    write(text);
    LogCapture log;
    EXPECT_EQ(lock_.state(), State::damaged) << text;
    EXPECT_EQ(answer("1234"), Answer::failed) << text;
    EXPECT_THAT(log.text(), HasSubstr("lock.json can't be read: it is damaged")) << text;
  }
  write(sound);
  EXPECT_EQ(answer("1234"), Answer::right);
}

TEST_F(AppLockTest, AcceptsOnlyRegularFile) {
  LogCapture log;
  ASSERT_EQ(mkdir(file().c_str(), 0700), 0);
  EXPECT_EQ(lock_.state(), State::damaged);
  ASSERT_EQ(rmdir(file().c_str()), 0);
  ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
  EXPECT_EQ(lock_.state(), State::damaged);
  ASSERT_EQ(unlink(file().c_str()), 0);
  ASSERT_EQ(symlink("/nowhere", file().c_str()), 0);
  EXPECT_EQ(lock_.state(), State::damaged);
  EXPECT_THAT(log.text(), HasSubstr("can't be read"));
}

TEST_F(AppLockTest, DeniesAccessWithoutDirectory) {
  LogCapture log;
  AppLock nowhere("");
  QString code = "1234";
  EXPECT_EQ(nowhere.state(), State::damaged);
  EXPECT_EQ(nowhere.check(LockCode(code)).answer, Answer::failed);
  QString other = "1234";
  EXPECT_FALSE(nowhere.set(LockCode(other)));
  EXPECT_FALSE(nowhere.clear());
  EXPECT_THAT(log.text(), HasSubstr("there is no data directory"));
}

TEST_F(AppLockTest, WaitsOnlyBrieflyForAnotherProcess) {
  set("1234");
  const int directory = open(directory_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(directory, LOCK_EX), 0);
  LogCapture log;
  EXPECT_EQ(answer("1234"), Answer::failed);
  EXPECT_FALSE(lock_.clear());
  close(directory);
  EXPECT_EQ(answer("1234"), Answer::right);
}

TEST_F(AppLockTest, RealTimeIsMonotonic) {
  const ulo::LockTime first = ulo::lockTime();
  const ulo::LockTime second = ulo::lockTime();
  EXPECT_FALSE(first.boot.empty());
  EXPECT_EQ(first.boot, second.boot);
  EXPECT_GT(first.sinceBoot, milliseconds(0));
  EXPECT_GE(second.sinceBoot, first.sinceBoot);
}

TEST(LockCodeTest, WipesSourceText) {
  QString text = "1234";
  text.detach();
  const QString* const before = &text;
  const LockCode code(text);
  EXPECT_EQ(std::string(code.data(), code.size()), "1234");
  EXPECT_EQ(code.characters(), 4);
  EXPECT_TRUE(before->isEmpty());
}

TEST(LockCodeTest, OverwritesTheCharacters) {
  QString text = QString(QChar(u'7')).repeated(40);
  const QString copy = text;
  text.detach();
  // The text keeps its memory during its lifetime.
  const QChar* const characters = text.constData();
  ulo::wipe(text);
  EXPECT_TRUE(text.isEmpty());
  ASSERT_EQ(text.constData(), characters);
  EXPECT_EQ(std::count(characters, characters + 40, QChar(u'\0')), 40);
  EXPECT_EQ(copy.count(u'7'), 40);
}

TEST(LockCodeTest, AcceptsSixtyFourCharacters) {
  for (const int characters : {63, 64, 65}) {
    QString text = QString(QChar(0x7ed9)).repeated(characters);
    const LockCode code(text);
    EXPECT_EQ(code.isEmpty(), characters == 65) << characters;
    EXPECT_EQ(code.size(), characters == 65 ? 0U : 3U * static_cast<unsigned>(characters));
  }
}

TEST(LockCodeTest, EqualsSameText) {
  QString one = "1234";
  QString same = "1234";
  QString longer = "12345";
  const LockCode code(one);
  EXPECT_TRUE(code == LockCode(same));
  EXPECT_FALSE(code == LockCode(longer));
}

}  // namespace
