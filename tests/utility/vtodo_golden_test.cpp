// Compares the fields read from each text in tests/golden/vcal, and the bytes written from them,
// with the expected files. ULO_RENEW_GOLDEN=1 rewrites these.
#include "ZVtodoParser.h"

#include "berlin_time.h"
#include "golden_files.h"
#include "log_capture.h"
#include "task_text.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

const fs::path goldenDirectory = fs::path(ULO_SOURCE_DIR) / "tests/golden/vcal";

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
  compareWithFile(fields, goldenDirectory / (GetParam() + ".tasks"));

  const fs::path out = directory.path() / "out.vcs";
  parser.writeVtodo(QString::fromStdString(out), tasks);
  compareWithFile(contentOf(out), goldenDirectory / (GetParam() + ".written"));
}

INSTANTIATE_TEST_SUITE_P(Vcal, VtodoGolden, testing::ValuesIn(caseNames(goldenDirectory)),
                         [](const auto& info) { return info.param; });

}  // namespace
