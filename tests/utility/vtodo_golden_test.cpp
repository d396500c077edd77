// Compares the fields read from each text in tests/golden/vcal, and the bytes written from them,
// with the expected files. ULO_RENEW_GOLDEN=1 rewrites these.
#include "ZVtodoParser.h"

#include "berlin_time.h"
#include "log_capture.h"
#include "task_text.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

const fs::path goldenDirectory = fs::path(ULO_SOURCE_DIR) / "tests/golden/vcal";

std::string contentOf(const fs::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::vector<std::string> caseNames() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(goldenDirectory))
    if (entry.path().extension() == ".in")
      names.push_back(entry.path().stem());
  std::sort(names.begin(), names.end());
  return names;
}

void compare(const std::string& seen, const fs::path& expected) {
  if (std::getenv("ULO_RENEW_GOLDEN") != nullptr)
    std::ofstream(expected, std::ios::binary) << seen;
  EXPECT_EQ(seen, contentOf(expected)) << expected;
}

class VtodoGolden : public testing::TestWithParam<std::string> {};

TEST_P(VtodoGolden, MatchesExpectedFiles) {
  const LogCapture quiet;
  const TemporaryDirectory directory;
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  parser.readVtodo(QString::fromStdString(goldenDirectory / (GetParam() + ".in")), tasks);
  std::string fields;
  for (uint i = 0; i < tasks.count(); ++i)
    fields += taskText(*tasks.at(i)) + "\n";
  compare(fields, goldenDirectory / (GetParam() + ".tasks"));

  const fs::path out = directory.path() / "out.vcs";
  parser.writeVtodo(QString::fromStdString(out), tasks);
  compare(contentOf(out), goldenDirectory / (GetParam() + ".written"));
}

INSTANTIATE_TEST_SUITE_P(Vcal, VtodoGolden, testing::ValuesIn(caseNames()),
                         [](const auto& info) { return info.param; });

}  // namespace
