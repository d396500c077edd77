// Reading with a vObject library that rejects texts, prints to standard output or records its
// calls, and with memory running out.
#include "failing_new.h"
#include "library_faults.h"

#include "ZVtodoParser.h"
#include "environment_variable.h"
#include "log_capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Records the calls to the two functions that iterate over the objects of a text.
class RecordedCalls {
public:
  explicit RecordedCalls(Loader& loader) {
    calls.clear();
    realClean = library_.function<Clean>("cleanVObject");
    realNext = library_.function<Next>("nextVObjectInList");
    Clean* const clean = [](VObject* object) {
      calls.emplace_back("cleanVObject");
      realClean(object);
    };
    Next* const next = [](VObject* object) {
      calls.emplace_back("nextVObjectInList");
      return realNext(object);
    };
    loader.replaced["cleanVObject"] = reinterpret_cast<void*>(clean);
    loader.replaced["nextVObjectInList"] = reinterpret_cast<void*>(next);
  }

  // Returns the calls since the previous take().
  static std::vector<std::string> take() { return std::exchange(calls, {}); }

private:
  using Clean = void(VObject*);
  using Next = VObject*(VObject*);
  static Clean* realClean;
  static Next* realNext;
  static std::vector<std::string> calls;
  RealLibrary library_;
};
RecordedCalls::Clean* RecordedCalls::realClean = nullptr;
RecordedCalls::Next* RecordedCalls::realNext = nullptr;
std::vector<std::string> RecordedCalls::calls;

TEST_F(VObjectLibrary, StopsAtRecordThatCannotBeAllocated) {
  const RecordedCalls calls(loader_);
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  LogCapture log;
  const LeaksExpected ofRemainingObjects;
  allocationsLeft = 1;
  parser.readVtodo(QCString(threeTodos.c_str()), tasks);
  allocationsLeft = allAllocationsSucceed;
  ASSERT_EQ(tasks.count(), 1U);
  EXPECT_EQ(tasks.at(0)->getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY), "first");
  EXPECT_THAT(log.withoutLines(),
              testing::EndsWith(errorLine("Memary is full!!") + errorLine("toTaskRec failed!")));
  // The remaining objects are not released.
  EXPECT_THAT(RecordedCalls::take(), IsEmpty());
}

TEST_F(VObjectLibrary, ReleasesEachObjectAfterFetchingTheNext) {
  const RecordedCalls calls(loader_);
  ZVtodoParser parser;
  LogCapture log;
  const std::string three = "BEGIN:VCARD\r\nEND:VCARD\r\n" + threeTodos + threeTodos;
  const auto pairs = ElementsAre("nextVObjectInList", "cleanVObject", "nextVObjectInList",
                                 "cleanVObject", "nextVObjectInList", "cleanVObject");
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  parser.readVtodo(QCString(three.c_str()), tasks);
  EXPECT_EQ(tasks.count(), 6U);
  EXPECT_THAT(RecordedCalls::take(), pairs);
  EXPECT_TRUE(parser.isVtodo(QString::fromStdString(fileWith(three))));
  EXPECT_THAT(RecordedCalls::take(), pairs);
}

// Parses the first `parsesLeft` pieces of a large text and rejects the others.
int parsesLeft = 0;
VObject* (*realParse)(const char*, unsigned long) = nullptr;

VObject* parseSome(const char* bytes, unsigned long length) {
  return parsesLeft-- > 0 ? realParse(bytes, length) : nullptr;
}

TEST_F(VObjectLibrary, ReadsWholeTextOrNothing) {
  ZVtodoParser parser;
  std::string large = "BEGIN:VCALENDAR\r\n";
  for (int i = 0; i < 500; ++i)
    large += "BEGIN:VTODO\r\nSUMMARY:a\r\nEND:VTODO\r\n";
  large += "END:VCALENDAR\r\n";
  loader_.replaced["Parse_MIME"] = reinterpret_cast<void*>(&parseSome);
  const RealLibrary library;
  realParse = library.function<VObject*(const char*, unsigned long)>("Parse_MIME");
  for (bool autoDelete : {true, false}) {
    QList<ZTASK_ENG_Task> tasks;
    tasks.setAutoDelete(autoDelete);
    LogCapture log;
    parsesLeft = 2;
    parser.readVtodo(QCString(large.c_str()), tasks);
    EXPECT_TRUE(tasks.isEmpty());
    EXPECT_THAT(log.withoutLines(), testing::EndsWith(errorLine("open object failed!!")));
  }
}

// Prints in the thread that parses and in another one.
VObject* parseAndPrint(const char* bytes, unsigned long length) {
  std::printf("of the parser");
  std::thread([] { std::printf("of another thread"); }).join();
  return realParse(bytes, length);
}

TEST_F(VObjectLibrary, ParserPrintsNothing) {
  const EnvironmentVariable variable("YYDEBUG", "9");
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  const QString name = QString::fromStdString(fileWith(threeTodos));
  testing::internal::CaptureStdout();
  parser.readVtodo(QCString(threeTodos.c_str()), tasks);
  parser.readVtodo(name, tasks);
  // The library keeps printing after the variable was removed.
  {
    const EnvironmentVariable gone("YYDEBUG", nullptr);
    parser.readVtodo(name, tasks);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(tasks.count(), 3U);
}

TEST_F(VObjectLibrary, KeepsEnvironmentAndOtherOutput) {
  const EnvironmentVariable variable("YYDEBUG", "9");
  const RealLibrary library;
  realParse = library.function<VObject*(const char*, unsigned long)>("Parse_MIME");
  loader_.replaced["Parse_MIME"] = reinterpret_cast<void*>(&parseAndPrint);
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  std::FILE* const output = stdout;
  testing::internal::CaptureStdout();
  std::printf("before ");
  parser.readVtodo(QCString(threeTodos.c_str()), tasks);
  std::printf(" after");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "before of another thread after");
  EXPECT_EQ(stdout, output);
  EXPECT_EQ(tasks.count(), 3U);
  EXPECT_STREQ(std::getenv("YYDEBUG"), "9");
}

}  // namespace
