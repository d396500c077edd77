// The include arrows between the rooms of the sources.

#include "include_arrows.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

bool isWidget(const std::string& header) {
  return fs::exists(fs::path(ULO_QT_WIDGETS_DIR) / header);
}

TEST(IncludeArrows, PointDownOnly) {
  const Arrows arrows =
      readArrows(ULO_SOURCE_DIR,
                 {"include", "utility", "exchange", "uistyle", "operations", "platform", "apps"},
                 allRooms, isWidget);
  std::fputs(tableOf(arrows, allRooms).c_str(), stdout);
  EXPECT_FALSE(arrows.counts.empty());
  for (const std::string& fault : arrows.faults)
    ADD_FAILURE() << fault;
}

// A small tree with two rooms.
class Tree : public testing::Test {
protected:
  void file(const std::string& name, const std::string& text) {
    const fs::path path = directory_.path() / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
  }
  Arrows read() { return readArrows(directory_.path(), {"code"}, rooms_, isWidget); }

  std::vector<Room> rooms_ = {{"low", "code/low/", {}},
                              {"high", "code/high/", {"low"}, sqlite | qt}};

private:
  TemporaryDirectory directory_;
};

TEST_F(Tree, CountsArrows) {
  file("code/low/a.h", "");
  file("code/high/b.h", "#include \"a.h\"\n#include <QString>\n#include <sqlite3.h>\n");
  file("code/high/b.cpp", "#include \"b.h\"\n  #  include \"low/a.h\"\n");
  const Arrows arrows = read();
  EXPECT_THAT(arrows.faults, IsEmpty());
  EXPECT_EQ(tableOf(arrows, rooms_), "high                -> low                    2\n");
}

TEST_F(Tree, ReportsArrowThatPointsUp) {
  file("code/low/a.h", "\n#include \"b.h\"\n");
  file("code/high/b.h", "");
  EXPECT_THAT(read().faults, ElementsAre("code/low/a.h:2: low must not include high (b.h)"));
}

TEST_F(Tree, ReportsUnknownRoom) {
  file("code/other/c.h", "");
  file("code/high/b.h", "#include \"c.h\"\n");
  EXPECT_THAT(read().faults, ElementsAre("code/high/b.h:1: no room of the list has code/other/c.h",
                                         "code/other/c.h:1: no room of the list has this file"));
}

TEST_F(Tree, ReportsHeaderThatIsUnclear) {
  file("code/low/one/a.h", "");
  file("code/low/two/a.h", "");
  file("code/high/b.h", "#include \"a.h\"\n#include \"missing.h\"\n");
  EXPECT_THAT(read().faults,
              ElementsAre("code/high/b.h:1: \"a.h\" is not one file of the tree",
                          "code/high/b.h:2: \"missing.h\" is not one file of the tree"));
}

TEST_F(Tree, ReportsLibraries) {
  file("code/low/a.h", "#include <sqlite3.h>\n#include <QString>\n");
  file("code/high/b.h", "#include <QtWidgets/QLabel>\n");
  EXPECT_THAT(read().faults, ElementsAre("code/high/b.h:1: high must not use widgets",
                                         "code/low/a.h:1: low must not use SQLite",
                                         "code/low/a.h:2: low must not use Qt"));
}

TEST_F(Tree, ReportsListThatAllowsCycle) {
  rooms_[0].mayInclude = {"high"};
  file("code/low/a.h", "");
  EXPECT_THAT(read().faults, ElementsAre("list of rooms:0: low may include high, which does not "
                                         "come before it"));
}

}  // namespace
