// Writing with a vObject library that lacks functions, and to files that cannot be written.
#include "library_faults.h"

#include "CAL_ENG_FileDirect.h"
#include "ZVtodoParser.h"
#include "log_capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

using testing::StartsWith;

namespace {

void writeInstead(FILE* stream, VObject*) {
  std::fputs("written", stream);
}

TEST_F(VObjectLibrary, WritesWithItsStreamFunction) {
  loader_.replaced["writeVObject"] = reinterpret_cast<void*>(&writeInstead);
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo(outName(), tasks);
  EXPECT_EQ(written(), "written");
  EXPECT_EQ(log.text(), "");
}

TEST_F(VObjectLibrary, WritesSameTextWithoutStreamFunction) {
  loader_.missing = {"writeVObject"};
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo(outName(), tasks);
  EXPECT_THAT(written(), StartsWith("BEGIN:VCALENDAR\r\nVERSION:1.0\r\nEND:VCALENDAR\r\n"));
  EXPECT_EQ(log.text(), "");
}

TEST_F(VObjectLibrary, WritesNothingWithoutEitherFunction) {
  loader_.missing = {"writeVObject", "writeMemVObject"};
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo(outName(), tasks);
  EXPECT_EQ(written(), "");
  EXPECT_EQ(log.withoutLines(), errorLine("Cannot invoke call writeVObject"));
}

TEST_F(VObjectLibrary, StreamOfFileHasItsOwnDescriptor) {
  CAL_ENG_FileDirect file(outName());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_NE(file.stream(), nullptr);
  EXPECT_EQ(file.stream(), file.stream());
  EXPECT_NE(fileno(file.stream()), file.handle());
}

TEST_F(VObjectLibrary, LogsFullDisk) {
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo("/dev/full", tasks);
  EXPECT_THAT(log.withoutLines(), testing::EndsWith("Unable to write vcard"));
}

}  // namespace
