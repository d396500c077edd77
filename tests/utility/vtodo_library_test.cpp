// The binding of the vObject library, with faults injected at the loader: the linker redirects the
// engine's calls to dlopen, dlsym, dlclose and malloc to this program.
#include "ZVtodoParser.h"

#include "CAL_ENG_FileDirect.h"
#include "vobject_library.h"

#include "../platform/environment_variable.h"
#include "export.h"
#include "failing_new.h"
#include "log_capture.h"
#include "temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <thread>
#include <utility>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

// What the loader was asked, and what it is to answer.
struct Loader {
  bool libraryMissing = false;
  std::set<std::string> missing;          // functions
  std::map<std::string, void*> replaced;  // functions
  bool noMemory = false;                  // of malloc
  std::vector<std::string> opened;
  std::vector<std::string> lookedUp;
  int closed = 0;
};
Loader* loader = nullptr;

}  // namespace

extern "C" {
// Of the leak checker, where there is one.
void __lsan_disable() __attribute__((weak));
void __lsan_enable() __attribute__((weak));

void* __real_dlopen(const char* name, int flags);
void* __real_dlsym(void* handle, const char* name);
int __real_dlclose(void* handle);
void* __real_malloc(std::size_t size);

ULO_EXPORT void* __wrap_dlopen(const char* name, int flags);
void* __wrap_dlopen(const char* name, int flags) {
  if (loader != nullptr)
    loader->opened.push_back(name + std::string(flags == RTLD_LAZY ? " lazy" : " other"));
  return loader != nullptr && loader->libraryMissing ? nullptr : __real_dlopen(name, flags);
}

ULO_EXPORT void* __wrap_dlsym(void* handle, const char* name);
void* __wrap_dlsym(void* handle, const char* name) {
  if (loader == nullptr)
    return __real_dlsym(handle, name);
  loader->lookedUp.emplace_back(name);
  if (loader->missing.contains(name))
    return nullptr;
  const auto replaced = loader->replaced.find(name);
  return replaced != loader->replaced.end() ? replaced->second : __real_dlsym(handle, name);
}

ULO_EXPORT int __wrap_dlclose(void* handle);
int __wrap_dlclose(void* handle) {
  if (loader != nullptr)
    ++loader->closed;
  return __real_dlclose(handle);
}

ULO_EXPORT void* __wrap_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
  return loader != nullptr && loader->noMemory ? nullptr : __real_malloc(size);
}
}

namespace {

const std::string text = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\nBEGIN:VTODO\r\n"
                         "SUMMARY;CHARSET=UTF-8:first\r\nDALARM:20060305T120000Z;;;x;y\r\n"
                         "END:VTODO\r\nBEGIN:VTODO\r\nSUMMARY:second\r\nEND:VTODO\r\n"
                         "BEGIN:VTODO\r\nSUMMARY:third\r\nEND:VTODO\r\nEND:VCALENDAR\r\n";

// Objects that are left to themselves while it lives are meant to be.
class LeaksExpected {
public:
  LeaksExpected() {
    if (__lsan_disable != nullptr)
      __lsan_disable();
  }
  LeaksExpected(const LeaksExpected&) = delete;
  LeaksExpected& operator=(const LeaksExpected&) = delete;
  ~LeaksExpected() {
    if (__lsan_enable != nullptr)
      __lsan_enable();
  }
};

std::string errorLine(const std::string& message) {
  return "(utility/ZVtodoParser.cpp)" + message;
}

class VObjectLibrary : public testing::Test {
protected:
  VObjectLibrary() { loader = &loader_; }
  ~VObjectLibrary() override { loader = nullptr; }

  std::string fileWith(const std::string& contents) {
    const std::string name = directory_.path() / "in.vcs";
    std::ofstream(name, std::ios::binary) << contents;
    return name;
  }
  std::string written() {
    std::ostringstream contents;
    contents << std::ifstream(directory_.path() / "out.vcs", std::ios::binary).rdbuf();
    return contents.str();
  }
  QString outName() const { return QString::fromStdString(directory_.path() / "out.vcs"); }

  Loader loader_;
  TemporaryDirectory directory_;
};

TEST_F(VObjectLibrary, IsOpenedByEachParserAndClosedByEach) {
  {
    const ZVtodoParser first;
    EXPECT_THAT(loader_.opened, ElementsAre("libicalvcal.so lazy"));
    const ZVtodoParser second;
    EXPECT_THAT(loader_.opened, ElementsAre("libicalvcal.so lazy", "libicalvcal.so lazy"));
    EXPECT_EQ(loader_.closed, 0);
  }
  EXPECT_EQ(loader_.closed, 2);
}

TEST_F(VObjectLibrary, ServesAParserWhenAnotherHasGone) {
  LogCapture log;
  auto first = std::make_unique<ZVtodoParser>();
  ZVtodoParser second;
  first.reset();
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  second.readVtodo(QCString(text.c_str()), tasks);
  EXPECT_EQ(tasks.count(), 3U);
}

TEST_F(VObjectLibrary, MayBeMissing) {
  loader_.libraryMissing = true;
  LogCapture log;
  {
    const ZVtodoParser parser;
    EXPECT_EQ(log.withoutLines(), errorLine("Failed to open libicalvcal.so!!"));
    EXPECT_EQ(vobject::moreIteration(nullptr), -1);
  }
  EXPECT_EQ(loader_.closed, 0);
}

TEST_F(VObjectLibrary, MissingMakesReadingAndWritingEndSoftly) {
  loader_.libraryMissing = true;
  LogCapture construction;
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  tasks.append(new ZTASK_ENG_Task);
  const QString name = QString::fromStdString(fileWith(text));
  {
    LogCapture log;
    parser.readVtodo(name, tasks);
    EXPECT_TRUE(tasks.isEmpty());
    EXPECT_EQ(log.withoutLines(), errorLine("Cannot invoke call Parse_MIME_FromFileName") +
                                      errorLine("open object failed!!"));
  }
  {
    LogCapture log;
    parser.readVtodo(QCString(text.c_str()), tasks);
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

// Each function, called so that it gives something other than its failure value, which is what
// `fails` sees.
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
     [](VObject*) { EXPECT_EQ(vobject::Parse_MIME(text.data(), text.size()), nullptr); }},
    {"addProp", [](VObject* object) { EXPECT_EQ(vobject::addProp(object, "P"), nullptr); }},
    {"addPropValue",
     [](VObject* object) { EXPECT_EQ(vobject::addPropValue(object, "P", "v"), nullptr); }},
};

TEST_P(VObjectFunction, MissingIsLoggedAtEachCallAndGivesItsFailureValue) {
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

// A parser that lacks one function neither hangs nor crashes, whatever it does.
TEST_P(VObjectFunction, MissingLetsReadingAndWritingEnd) {
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  LogCapture log;
  const LeaksExpected withoutCleaning;
  loader_.missing = {GetParam().name};
  parser.readVtodo(QCString(text.c_str()), tasks);
  const QString name = QString::fromStdString(fileWith(text));
  parser.readVtodo(name, tasks);
  parser.isVtodo(name);
  ZTASK_ENG_Task task;
  parser.writeVtodo(outName(), &task);
  EXPECT_THAT(log.text(), HasSubstr("Cannot invoke call " + std::string(GetParam().name)));
}

INSTANTIATE_TEST_SUITE_P(All, VObjectFunction, testing::ValuesIn(functions),
                         [](const auto& info) { return std::string(info.param.name); });

// The library that the next parser opens, or finds closed, may be another one.
TEST_F(VObjectLibrary, IsAskedAnewWheneverAParserComesOrGoes) {
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

TEST_F(VObjectLibrary, PropertiesNeedAnObjectAndValuesMustNotBeEmpty) {
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

TEST_F(VObjectLibrary, WideValuesAreAskedForWithoutACheck) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const ZVtodoParser parser;
  EXPECT_DEATH(
      {
        loader_.missing = {"vObjectUStringZValue"};
        vobject::vObjectUStringZValue(nullptr);
      },
      "");
}

// Writing

FILE* writtenTo = nullptr;
VObject* writtenObject = nullptr;

void recordWrite(FILE* stream, VObject* object) {
  writtenTo = stream;
  writtenObject = object;
  std::fputs("written", stream);
}

TEST_F(VObjectLibrary, WritesWithItsOwnFunctionWhenThereIsOne) {
  loader_.replaced["writeVObject"] = reinterpret_cast<void*>(&recordWrite);
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo(outName(), tasks);
  EXPECT_EQ(written(), "written");
  EXPECT_EQ(log.text(), "");
}

TEST_F(VObjectLibrary, WritesTheSameFromMemoryWhenThereIsNone) {
  loader_.missing = {"writeVObject"};
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo(outName(), tasks);
  EXPECT_THAT(written(), StartsWith("BEGIN:VCALENDAR\r\nVERSION:1.0\r\nEND:VCALENDAR\r\n"));
  EXPECT_EQ(log.text(), "");
}

TEST_F(VObjectLibrary, WritesNothingWithoutEither) {
  loader_.missing = {"writeVObject", "writeMemVObject"};
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo(outName(), tasks);
  EXPECT_EQ(written(), "");
  EXPECT_EQ(log.withoutLines(), errorLine("Cannot invoke call writeVObject"));
}

TEST_F(VObjectLibrary, TheStreamOfAFileHasADescriptorOfItsOwn) {
  CAL_ENG_FileDirect file(outName());
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_NE(file.stream(), nullptr);
  EXPECT_EQ(file.stream(), file.stream());
  EXPECT_NE(fileno(file.stream()), file.handle());
}

TEST_F(VObjectLibrary, AFullDiskIsLogged) {
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  parser.writeVtodo("/dev/full", tasks);
  EXPECT_THAT(log.withoutLines(), testing::EndsWith("Unable to write vcard"));
}

// Narrowing

TEST(Narrow, MakesBytesOfWideCharacters) {
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

TEST(Narrow, GivesAnEmptyTextOfItsOwnForNull) {
  char* first = vobject::narrow(nullptr);
  EXPECT_STREQ(first, "");
  EXPECT_EQ(vobject::narrow(nullptr), first);
  vobject::release(first);
  EXPECT_STREQ(first, "");
}

TEST_F(VObjectLibrary, NarrowingNeedsMemory) {
  LogCapture log;
  loader_.noMemory = true;
  char* bytes = vobject::narrow(L"a");
  loader_.noMemory = false;
  EXPECT_EQ(bytes, nullptr);
  vobject::release(bytes);
  EXPECT_EQ(log.withoutLines(), errorLine("Unable to allocate memory"));
}

// Notes the calls of the two functions that go through the objects of a text.
class NotedCalls {
public:
  explicit NotedCalls(Loader& loaderToUse) : library_(__real_dlopen("libicalvcal.so", RTLD_LAZY)) {
    calls.clear();
    realClean = reinterpret_cast<Clean*>(__real_dlsym(library_, "cleanVObject"));
    realNext = reinterpret_cast<Next*>(__real_dlsym(library_, "nextVObjectInList"));
    Clean* const clean = [](VObject* object) {
      calls.emplace_back("cleanVObject");
      realClean(object);
    };
    Next* const next = [](VObject* object) {
      calls.emplace_back("nextVObjectInList");
      return realNext(object);
    };
    loaderToUse.replaced["cleanVObject"] = reinterpret_cast<void*>(clean);
    loaderToUse.replaced["nextVObjectInList"] = reinterpret_cast<void*>(next);
  }
  NotedCalls(const NotedCalls&) = delete;
  NotedCalls& operator=(const NotedCalls&) = delete;
  ~NotedCalls() { __real_dlclose(library_); }

  // Since it was asked last.
  static std::vector<std::string> take() { return std::exchange(calls, {}); }

private:
  using Clean = void(VObject*);
  using Next = VObject*(VObject*);
  static Clean* realClean;
  static Next* realNext;
  static std::vector<std::string> calls;
  void* library_;
};
NotedCalls::Clean* NotedCalls::realClean = nullptr;
NotedCalls::Next* NotedCalls::realNext = nullptr;
std::vector<std::string> NotedCalls::calls;

// Records

TEST_F(VObjectLibrary, ARecordThatCannotBeAllocatedEndsReading) {
  const NotedCalls calls(loader_);
  ZVtodoParser parser;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  LogCapture log;
  const LeaksExpected whatIsNotReleased;
  allocationsLeft = 1;
  parser.readVtodo(QCString(text.c_str()), tasks);
  allocationsLeft = allAllocationsSucceed;
  ASSERT_EQ(tasks.count(), 1U);
  EXPECT_EQ(tasks.at(0)->getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY), "first");
  EXPECT_THAT(log.withoutLines(),
              testing::EndsWith(errorLine("Memary is full!!") + errorLine("toTaskRec failed!")));
  // What is left is not released.
  EXPECT_THAT(NotedCalls::take(), IsEmpty());
}

TEST_F(VObjectLibrary, EachTopLevelObjectIsReleasedAfterTheNextWasFetched) {
  const NotedCalls calls(loader_);
  ZVtodoParser parser;
  LogCapture log;
  const std::string three = "BEGIN:VCARD\r\nEND:VCARD\r\n" + text + text;
  const auto pairs = ElementsAre("nextVObjectInList", "cleanVObject", "nextVObjectInList",
                                 "cleanVObject", "nextVObjectInList", "cleanVObject");
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  parser.readVtodo(QCString(three.c_str()), tasks);
  EXPECT_EQ(tasks.count(), 6U);
  EXPECT_THAT(NotedCalls::take(), pairs);
  EXPECT_TRUE(parser.isVtodo(QString::fromStdString(fileWith(three))));
  EXPECT_THAT(NotedCalls::take(), pairs);
}

// A piece of a large text that the library refuses: nothing of the text is read.
int parsesLeft = 0;
VObject* (*realParse)(const char*, unsigned long) = nullptr;

VObject* parseSome(const char* bytes, unsigned long length) {
  return parsesLeft-- > 0 ? realParse(bytes, length) : nullptr;
}

TEST_F(VObjectLibrary, ATextIsReadWholeOrNotAtAll) {
  ZVtodoParser parser;
  std::string large = "BEGIN:VCALENDAR\r\n";
  for (int i = 0; i < 500; ++i)
    large += "BEGIN:VTODO\r\nSUMMARY:a\r\nEND:VTODO\r\n";
  large += "END:VCALENDAR\r\n";
  loader_.replaced["Parse_MIME"] = reinterpret_cast<void*>(&parseSome);
  void* library = __real_dlopen("libicalvcal.so", RTLD_LAZY);
  realParse = reinterpret_cast<decltype(realParse)>(__real_dlsym(library, "Parse_MIME"));
  for (bool autoDelete : {true, false}) {
    QList<ZTASK_ENG_Task> tasks;
    tasks.setAutoDelete(autoDelete);
    LogCapture log;
    parsesLeft = 2;
    parser.readVtodo(QCString(large.c_str()), tasks);
    EXPECT_TRUE(tasks.isEmpty());
    EXPECT_THAT(log.withoutLines(), testing::EndsWith(errorLine("open object failed!!")));
  }
  __real_dlclose(library);
}

// Each time the library is unloaded, the memory of its name table would be lost.
TEST_F(VObjectLibrary, StaysLoadedOnceItHasReadOrWritten) {
  const auto isLoaded = [] {
    void* library = __real_dlopen("libicalvcal.so", RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr)
      __real_dlclose(library);
    return library != nullptr;
  };
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  ZVtodoParser().readVtodo(QCString(text.c_str()), tasks);
  EXPECT_TRUE(isLoaded());
}

// What the parser's stand-in prints, in its own thread and in another one.
VObject* parseAndPrint(const char* bytes, unsigned long length) {
  std::printf("of the parser");
  std::thread([] { std::printf("of another thread"); }).join();
  return realParse(bytes, length);
}

TEST_F(VObjectLibrary, ItsParserDoesNotPrintItsSteps) {
  const EnvironmentVariable variable("YYDEBUG", "9");
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  const QString name = QString::fromStdString(fileWith(text));
  testing::internal::CaptureStdout();
  parser.readVtodo(QCString(text.c_str()), tasks);
  parser.readVtodo(name, tasks);
  // The parser goes on to print when the variable is gone.
  {
    const EnvironmentVariable gone("YYDEBUG", nullptr);
    parser.readVtodo(name, tasks);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(tasks.count(), 3U);
}

TEST_F(VObjectLibrary, LeavesTheEnvironmentAndOtherOutputAlone) {
  const EnvironmentVariable variable("YYDEBUG", "9");
  void* library = __real_dlopen("libicalvcal.so", RTLD_LAZY);
  realParse = reinterpret_cast<decltype(realParse)>(__real_dlsym(library, "Parse_MIME"));
  loader_.replaced["Parse_MIME"] = reinterpret_cast<void*>(&parseAndPrint);
  ZVtodoParser parser;
  LogCapture log;
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  std::FILE* const output = stdout;
  testing::internal::CaptureStdout();
  std::printf("before ");
  parser.readVtodo(QCString(text.c_str()), tasks);
  std::printf(" after");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "before of another thread after");
  EXPECT_EQ(stdout, output);
  EXPECT_EQ(tasks.count(), 3U);
  EXPECT_STREQ(std::getenv("YYDEBUG"), "9");
  __real_dlclose(library);
}

}  // namespace
