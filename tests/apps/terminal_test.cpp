// Output on a terminal.

#include "ulotask_runner.h"

#include <system_error>
#include <utility>

#include <sys/resource.h>

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Terminal : public UlotaskTest {
protected:
  // The output of `list` on a terminal of this width.
  std::vector<std::string> lines(int columns) {
    const Outcome run = onTerminal({"list"}, columns);
    EXPECT_EQ(run.code, 0);
    std::vector<std::string> result;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = run.out.find("\r\n", begin)) != std::string::npos;
         begin = end + 2)
      result.push_back(run.out.substr(begin, end - begin));
    return result;
  }
};

TEST_F(Terminal, LinesAreTruncatedToItsWidth) {
  add({std::string(200, 'x')});
  EXPECT_THAT(lines(62), testing::ElementsAre("UID  DUE  PRI  STATUS        CATEGORY  SUMMARY",
                                              "  1  -      0  needs action  -         " +
                                                  std::string(22, 'x') + "…"));
}

TEST_F(Terminal, LineThatFitsIsNotTruncated) {
  add({std::string(23, 'x')});
  EXPECT_THAT(lines(62).at(1), testing::EndsWith(" " + std::string(23, 'x')));
  EXPECT_THAT(lines(61).at(1), testing::EndsWith(" " + std::string(21, 'x') + "…"));
}

TEST_F(Terminal, WideCharactersTakeTwoColumns) {
  add({"给妈妈打电话给妈妈打电话"});  // 24 columns
  EXPECT_THAT(lines(63).at(1), testing::EndsWith(" 给妈妈打电话给妈妈打电话"));
  // 23 columns: eleven characters and the ellipsis.
  EXPECT_THAT(lines(62).at(1), testing::EndsWith(" 给妈妈打电话给妈妈打电…"));
  // 22 columns: ten and the ellipsis, one column is left over.
  EXPECT_THAT(lines(61).at(1), testing::EndsWith(" 给妈妈打电话给妈妈打…"));
}

TEST_F(Terminal, CombiningMarksTakeNoColumn) {
  std::string text;
  for (int i = 0; i < 23; ++i)
    text += "a\u0308";
  add({text});
  EXPECT_THAT(lines(62).at(1), testing::EndsWith(" " + text));
}

TEST_F(Terminal, LongCategoriesLeaveRoomForTheSummary) {
  add({"Buy milk", "--category", "a category of many words"});
  EXPECT_THAT(lines(62).at(1), HasSubstr("  a category of m…  Buy milk"));
}

TEST_F(Terminal, NarrowOneShowsTenColumnsOfSummary) {
  add({std::string(200, 'x')});
  EXPECT_THAT(lines(20).at(1), testing::EndsWith(" " + std::string(9, 'x') + "…"));
}

TEST_F(Terminal, UnknownWidthCountsAsEighty) {
  add({std::string(200, 'x')});
  EXPECT_THAT(lines(0).at(1), testing::EndsWith(" " + std::string(40, 'x') + "…"));
}

TEST_F(Terminal, ReceivesNoControlCharacterOfTask) {
  add({"a\x1b[31mb\x07\u009b5mc", "--note", "x\x1b]0;y\x07", "--category", "c\x1b[1m"});
  for (const Arguments& arguments : std::vector<Arguments>{{"list"},
                                                           {"show", "1"},
                                                           {"list", "--json"},
                                                           {"search", "a"},
                                                           {"category", "list"},
                                                           {"category", "list", "--json"},
                                                           {"category", "add", "c\x1b[1m"},
                                                           {"category", "add", "d\x1b[1m"},
                                                           {"category", "rm", "d\x1b[1m"},
                                                           {"category", "rename", "\x1b", "\x07"},
                                                           {"list", "--category", "\x1b"},
                                                           {"list", "--view", "\x1b"},
                                                           {"search", "--status", "\x1b"},
                                                           {"edit", "1", "--status", "\x1b"},
                                                           {"edit", "1", "--note", "n"},
                                                           {"changes", "--since", "\x1b"},
                                                           {"done", "1"},
                                                           {"rm", "1"}}) {
    const std::string out = onTerminal(arguments, 80).out;
    EXPECT_THAT(out, Not(testing::IsEmpty())) << arguments[0];
    EXPECT_THAT(out, Not(HasSubstr("\x1b"))) << arguments[0];
    EXPECT_THAT(out, Not(HasSubstr("\x07"))) << arguments[0];
    EXPECT_THAT(out, Not(HasSubstr("\u009b"))) << arguments[0];
  }
}

// While it exists, no descriptor can be opened.
class NoDescriptors {
public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &before_);
    rlimit none = before_;
    none.rlim_cur = 0;
    isSet_ = setrlimit(RLIMIT_NOFILE, &none) == 0;
  }
  NoDescriptors(const NoDescriptors&) = delete;
  NoDescriptors& operator=(const NoDescriptors&) = delete;
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
  [[nodiscard]] bool isSet() const { return isSet_; }

private:
  rlimit before_{};
  bool isSet_ = false;
};

TEST_F(Terminal, ReportsTestWithoutTerminal) {
  add({"a"});
  std::string message;
  try {
    // Ended before the exception is examined, because the sanitizers open descriptors, too.
    const NoDescriptors none;
    ASSERT_TRUE(none.isSet());
    onTerminal({"list"}, 80);
  } catch (const std::exception& error) {
    message = error.what();
  }
  EXPECT_THAT(message, AllOf(HasSubstr("no pseudo-terminal is available"), HasSubstr("/dev/pts")));
}

TEST_F(Terminal, AnyLocaleGetsUtf8) {
  add({"给妈妈打电话给妈妈打电话"});
  for (const char* locale : {"C", "POSIX", "de_DE.ISO-8859-1", "nonsense"}) {
    environment_["LC_ALL"] = locale;
    EXPECT_THAT(lines(62).at(1), testing::EndsWith(" 给妈妈打电话给妈妈打电…")) << locale;
  }
}

}  // namespace
