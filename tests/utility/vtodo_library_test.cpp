// Access to the vObject library: opening and closing it, missing functions, arguments and results.
#include "library_faults.h"

#include "ZVtodoParser.h"
#include "log_capture.h"
#include "vobject_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>

#include <functional>
#include <memory>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

TEST_F(VObjectLibrary, IsOpenedAndClosedByEachParser) {
  {
    const ZVtodoParser first;
    EXPECT_THAT(loader_.opened, ElementsAre("libicalvcal.so lazy"));
    const ZVtodoParser second;
    EXPECT_THAT(loader_.opened, ElementsAre("libicalvcal.so lazy", "libicalvcal.so lazy"));
    EXPECT_EQ(loader_.closed, 0);
  }
  EXPECT_EQ(loader_.closed, 2);
}

TEST_F(VObjectLibrary, StaysUsableAfterAnotherParserIsDestroyed) {
  LogCapture log;
  auto first = std::make_unique<ZVtodoParser>();
  ZVtodoParser second;
  first.reset();
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  second.readVtodo(QCString(threeTodos.c_str()), tasks);
  EXPECT_EQ(tasks.count(), 3U);
}

TEST_F(VObjectLibrary, IsLoggedIfMissing) {
  loader_.libraryMissing = true;
  LogCapture log;
  {
    const ZVtodoParser parser;
    EXPECT_EQ(log.withoutLines(), errorLine("Failed to open libicalvcal.so!!"));
    EXPECT_EQ(vobject::moreIteration(nullptr), -1);
  }
  EXPECT_EQ(loader_.closed, 0);
}

TEST_F(VObjectLibrary, ReadsAndWritesNothingIfMissing) {
  loader_.libraryMissing = true;
  LogCapture construction;
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  tasks.append(new ZTASK_ENG_Task);
  const QString name = QString::fromStdString(fileWith(threeTodos));
  {
    LogCapture log;
    parser.readVtodo(name, tasks);
    EXPECT_TRUE(tasks.isEmpty());
    EXPECT_EQ(log.withoutLines(), errorLine("Cannot invoke call Parse_MIME_FromFileName") +
                                      errorLine("open object failed!!"));
  }
  {
    LogCapture log;
    parser.readVtodo(QCString(threeTodos.c_str()), tasks);
    EXPECT_EQ(log.withoutLines(),
              errorLine("Cannot invoke call Parse_MIME") + errorLine("open object failed!!"));
  }
  LogCapture log;
  EXPECT_FALSE(parser.isVtodo(name));
  ZTASK_ENG_Task task;
  parser.writeVtodo(outName(), &task);
  EXPECT_TRUE(QFile::exists(outName()));
  EXPECT_EQ(written(), "");
  EXPECT_THAT(log.withoutLines(), HasSubstr(errorLine("Cannot invoke call newVObject")));
  EXPECT_THAT(log.withoutLines(), HasSubstr(errorLine("Cannot invoke call writeVObject")));
  EXPECT_THAT(log.withoutLines(), HasSubstr(errorLine("Cannot invoke call cleanVObject")));
}

// A function, and a call that would return something other than its failure value if the library
// had the function. `fails` expects the failure value.
struct Function {
  const char* name;
  std::function<void(VObject*)> fails;
};

void PrintTo(const Function& function, std::ostream* out) {
  *out << function.name;
}

VObjectIterator iteratorOver(VObject* object) {
  VObjectIterator iterator{};
  vobject::initPropIterator(&iterator, object);
  return iterator;
}

class VObjectFunction : public VObjectLibrary, public testing::WithParamInterface<Function> {};

const std::vector<Function> functions = {
    {"newVObject", [](VObject*) { EXPECT_EQ(vobject::newVObject("X"), nullptr); }},
    {"initPropIterator",
     [](VObject* object) {
       VObjectIterator iterator{object, nullptr};
       vobject::initPropIterator(&iterator, nullptr);
       EXPECT_EQ(iterator.start, object);
     }},
    {"moreIteration", [](VObject*) { EXPECT_EQ(vobject::moreIteration(nullptr), -1); }},
    {"nextVObject", [](VObject*) { EXPECT_EQ(vobject::nextVObject(nullptr), nullptr); }},
    {"vObjectName", [](VObject* object) { EXPECT_EQ(vobject::vObjectName(object), nullptr); }},
    {"vObjectStringZValue",
     [](VObject* object) { EXPECT_EQ(vobject::vObjectStringZValue(object), nullptr); }},
    {"cleanVObject", [](VObject* object) { vobject::cleanVObject(object); }},
    {"nextVObjectInList",
     [](VObject* object) { EXPECT_EQ(vobject::nextVObjectInList(object), nullptr); }},
    {"Parse_MIME_FromFileName",
     [](VObject*) { EXPECT_EQ(vobject::Parse_MIME_FromFileName("/dev/null"), nullptr); }},
    {"Parse_MIME",
     [](VObject*) {
       EXPECT_EQ(vobject::Parse_MIME(threeTodos.data(), threeTodos.size()), nullptr);
     }},
    {"addProp", [](VObject* object) { EXPECT_EQ(vobject::addProp(object, "P"), nullptr); }},
    {"addPropValue",
     [](VObject* object) { EXPECT_EQ(vobject::addPropValue(object, "P", "v"), nullptr); }},
};

TEST_P(VObjectFunction, LogsEachCallAndReturnsFailureValueIfMissing) {
  auto parser = std::make_unique<ZVtodoParser>();
  VObject* object = vobject::newVObject("O");
  vobject::addPropValue(object, "P", "v");
  LogCapture log;
  loader_.missing = {GetParam().name};
  parser = std::make_unique<ZVtodoParser>();
  loader_.lookedUp.clear();
  GetParam().fails(object);
  GetParam().fails(object);
  const std::string line = errorLine(std::string("Cannot invoke call ") + GetParam().name);
  EXPECT_EQ(log.withoutLines(), line + line);
  EXPECT_THAT(loader_.lookedUp, ElementsAre(GetParam().name));
  loader_.missing.clear();
  parser = std::make_unique<ZVtodoParser>();
  vobject::cleanVObject(object);
}

TEST_P(VObjectFunction, NeitherHangsNorCrashesIfMissing) {
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  LogCapture log;
  const LeaksExpected withoutCleaning;
  loader_.missing = {GetParam().name};
  parser.readVtodo(QCString(threeTodos.c_str()), tasks);
  const QString name = QString::fromStdString(fileWith(threeTodos));
  parser.readVtodo(name, tasks);
  parser.isVtodo(name);
  ZTASK_ENG_Task task;
  parser.writeVtodo(outName(), &task);
  EXPECT_THAT(log.text(), HasSubstr("Cannot invoke call " + std::string(GetParam().name)));
}

INSTANTIATE_TEST_SUITE_P(All, VObjectFunction, testing::ValuesIn(functions),
                         [](const auto& info) { return std::string(info.param.name); });

// It may be a different library than before.
TEST_F(VObjectLibrary, IsSearchedAgainAfterParserIsCreatedOrDestroyed) {
  const ZVtodoParser parser;
  VObject* object = vobject::newVObject("O");
  const auto lookedUp = [&] {
    loader_.lookedUp.clear();
    vobject::vObjectName(object);
    vobject::vObjectName(object);
    return loader_.lookedUp;
  };
  EXPECT_THAT(lookedUp(), ElementsAre("vObjectName"));
  EXPECT_THAT(lookedUp(), IsEmpty());
  {
    const ZVtodoParser another;
    EXPECT_THAT(lookedUp(), ElementsAre("vObjectName"));
  }
  EXPECT_THAT(lookedUp(), ElementsAre("vObjectName"));
  vobject::cleanVObject(object);
}

TEST_F(VObjectLibrary, ForwardsArgumentsAndResults) {
  const ZVtodoParser parser;
  VObject* object = vobject::newVObject("O");
  VObject* first = vobject::addProp(object, "FIRST");
  VObject* second = vobject::addPropValue(object, "SECOND", QString::fromUtf8("Käse"));
  EXPECT_STREQ(vobject::vObjectName(object), "O");

  VObjectIterator iterator = iteratorOver(object);
  EXPECT_NE(vobject::moreIteration(&iterator), 0);
  EXPECT_EQ(vobject::nextVObject(&iterator), first);
  EXPECT_EQ(vobject::nextVObject(&iterator), second);
  EXPECT_EQ(vobject::moreIteration(&iterator), 0);

  char* value = vobject::vObjectUStringZValue(second);
  EXPECT_STREQ(value, "Käse");
  vobject::release(value);
  value = vobject::vObjectUStringZValue(first);
  EXPECT_STREQ(value, "");
  vobject::release(value);
  vobject::cleanVObject(object);
}

TEST_F(VObjectLibrary, AddsNothingWithoutObjectOrValue) {
  const ZVtodoParser parser;
  VObject* object = vobject::newVObject("O");
  LogCapture log;
  loader_.lookedUp.clear();
  EXPECT_EQ(vobject::addProp(nullptr, "P"), nullptr);
  EXPECT_EQ(vobject::addPropValue(nullptr, "P", "v"), nullptr);
  EXPECT_EQ(vobject::addPropValue(object, "P", ""), nullptr);
  EXPECT_EQ(vobject::addPropValue(object, "P", QString()), nullptr);
  EXPECT_THAT(loader_.lookedUp, IsEmpty());
  EXPECT_EQ(log.text(), "");
  VObjectIterator iterator = iteratorOver(object);
  EXPECT_EQ(vobject::moreIteration(&iterator), 0);
  vobject::cleanVObject(object);
}

TEST_F(VObjectLibrary, ReadsWideValuesWithoutCheckingFunction) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const ZVtodoParser parser;
  EXPECT_DEATH(
      {
        loader_.missing = {"vObjectUStringZValue"};
        vobject::vObjectUStringZValue(nullptr);
      },
      "");
}

// Unloading would leak its name table.
TEST_F(VObjectLibrary, StaysLoadedAfterReading) {
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  ZVtodoParser().readVtodo(QCString(threeTodos.c_str()), tasks);
  EXPECT_TRUE(RealLibrary::isLoaded());
}

// Values
TEST(Narrow, KeepsLowBytes) {
  char* bytes = vobject::narrow(L"a\x2028"
                                L"b\x2029");
  EXPECT_STREQ(bytes, "a\nb\r");
  vobject::release(bytes);
  bytes = vobject::narrow(L"\xE4\x1F4B0\x20AC");
  EXPECT_STREQ(bytes, "\xE4\xB0\xAC");
  vobject::release(bytes);
  bytes = vobject::narrow(L"");
  EXPECT_STREQ(bytes, "");
  vobject::release(bytes);
}

TEST(Narrow, ReturnsConstantEmptyTextForNull) {
  char* first = vobject::narrow(nullptr);
  EXPECT_STREQ(first, "");
  EXPECT_EQ(vobject::narrow(nullptr), first);
  vobject::release(first);
  EXPECT_STREQ(first, "");
}

TEST_F(VObjectLibrary, LogsValueThatCannotBeAllocated) {
  LogCapture log;
  loader_.failingMalloc = 1;
  char* bytes = vobject::narrow(L"a");
  EXPECT_EQ(bytes, nullptr);
  vobject::release(bytes);
  EXPECT_EQ(log.withoutLines(), errorLine("Unable to allocate memory"));
}

}  // namespace
