// Fuzzes the sync adaptor. The input is a program of operations on a store, each with a calendar
// text. An operation is a line "%%" with a letter and optionally a number, followed by its text up
// to the next such line. A text without operations is added.
#include "TASK_ENG_SyncML.h"
#include "ulo/change_journal.h"
#include "vcal_guard.h"

#include "fuzz_support.h"
#include "temporary_directory.h"
#include "test_clock.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

// Sets a directory for outbound files that no other process uses.
struct SyncAdaptorAccess {
  static void setDirectory(TASK_ENG_SyncML& adaptor, const QString& directory) {
    adaptor.tmpDir = directory;
  }
};

namespace {

using Uids = std::vector<unsigned int>;

// Limits the run time of a program.
constexpr int mostOperations = 20;

// Bypasses the store and restores its file to the state before the first program.
class Pristine {
public:
  explicit Pristine(const std::string& path) {
    FUZZ_REQUIRE(sqlite3_open(path.c_str(), &handle_) == SQLITE_OK);
    run("ATTACH ':memory:' AS pristine;"
        "CREATE TABLE pristine.category AS SELECT * FROM task_table_category;"
        "CREATE TABLE pristine.sequence AS SELECT * FROM sqlite_sequence");
  }
  Pristine(const Pristine&) = delete;
  Pristine& operator=(const Pristine&) = delete;
  ~Pristine() { sqlite3_close(handle_); }

  void restore() {
    run("BEGIN IMMEDIATE;"
        "DELETE FROM task_table_task;"
        "DELETE FROM task_table_category;"
        "INSERT INTO task_table_category SELECT * FROM pristine.category;"
        "DELETE FROM sqlite_sequence;"
        "INSERT INTO main.sqlite_sequence SELECT * FROM pristine.sequence;"
        "COMMIT");
  }

private:
  void run(const char* sql) {
    FUZZ_REQUIRE(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) == SQLITE_OK);
  }

  sqlite3* handle_ = nullptr;
};

// A store that stays open, with its journal.
struct House {
  House() { setEngineNow({QDate(2006, 3, 5), QTime(12, 0)}); }

  // Returns the net changes in the journal since the last call.
  ulo::NetChanges changes() {
    ulo::NetChanges net;
    FUZZ_REQUIRE(journal.changesSince(ZTASK_ENG_Model::identifier, seen, net));
    FUZZ_REQUIRE(!net.incomplete);
    seen = net.lastEntry;
    return net;
  }
  void restore() {
    pristine.restore();
    static_cast<void>(changes());
    FUZZ_REQUIRE(journal.prune(seen));
  }

  DataDirectory data;
  TemporaryDirectory outbound;
  ZTASK_ENG_Model store;  // keeps the database open
  Pristine pristine{data.path() / "tasks.db"};
  ulo::ChangeJournal journal{data.path()};
  std::int64_t seen = 0;
};

// The descriptor of a file with these bytes.
class File {
public:
  explicit File(const std::string& bytes = "") : descriptor_(memfd_create("item", MFD_CLOEXEC)) {
    FUZZ_REQUIRE(write(descriptor_, bytes.data(), bytes.size()) ==
                 static_cast<ssize_t>(bytes.size()));
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(descriptor_); }

  [[nodiscard]] int descriptor() const { return descriptor_; }
  [[nodiscard]] std::string bytes() const {
    std::string all(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
    FUZZ_REQUIRE(pread(descriptor_, all.data(), all.size(), 0) == static_cast<ssize_t>(all.size()));
    return all;
  }

private:
  int descriptor_;
};

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

struct Operation {
  char what;
  unsigned int number;
  std::string text;
};

class Program {
public:
  explicit Program(House& house) : house_(house) {
    SyncAdaptorAccess::setDirectory(adaptor_, QString::fromStdString(house.outbound.path()));
  }

  void run(const Operation& operation);
  // Checks what must hold after any program: each task is stored, and is exported as one to-do that
  // can be imported again; the journal matches the changes.
  void finish();

private:
  // Returns the UID that an operation uses: an existing one if possible, or an unknown one.
  [[nodiscard]] unsigned int uidOf(unsigned int number) const {
    constexpr unsigned int strange = 1000;
    return live_.empty() || number >= strange ? number : live_[number % live_.size()];
  }
  [[nodiscard]] bool isLive(unsigned int uid) const {
    return std::find(live_.begin(), live_.end(), uid) != live_.end();
  }
  void add(const std::string& text, bool fromFile);
  void update(const std::string& text, bool fromFile, unsigned int uid);
  void remove(unsigned int uid);
  std::string get(unsigned int uid);
  void getInto(unsigned int uid, int room);
  void checkLimits(unsigned int uid);
  void reload();
  void lists(const std::string& text, unsigned int number);

  House& house_;
  TASK_ENG_SyncML adaptor_;
  Uids live_;
};

bool holdsTodo(const std::string& text) {
  return ulo::examineText(text).todos > 0;
}

void Program::checkLimits(unsigned int uid) {
  ZTASK_ENG_Task task;
  FUZZ_REQUIRE(adaptor_.getTask(uid, task) == TASK_ENG_OK);
  FUZZ_REQUIRE(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY).length() <=
               ZTASK_ENG_Task::summaryLimit);
  FUZZ_REQUIRE(task.getString(ZTASK_ENG_Task::TASK_FIELD_NOTE).length() <=
               ZTASK_ENG_Task::noteLimit);
}

void Program::add(const std::string& text, bool fromFile) {
  constexpr unsigned int untouched = 4711;
  unsigned int uid = untouched;
  const std::string upToZero = text.c_str();
  const int code =
      fromFile ? adaptor_.addEvent(File(text).descriptor(), 0, uid) : adaptor_.addEvent(text, uid);
  FUZZ_REQUIRE(code ==
               (holdsTodo(fromFile ? text : upToZero) ? TASK_SYNCML_OK : TASK_SYNCML_OTHERERROR));
  if (code != TASK_SYNCML_OK) {
    FUZZ_REQUIRE(uid == untouched);
    return;
  }
  FUZZ_REQUIRE(!isLive(uid));
  live_.push_back(uid);
  checkLimits(uid);
}

void Program::update(const std::string& text, bool fromFile, unsigned int uid) {
  const std::string before = isLive(uid) ? get(uid) : "";
  const int code = fromFile ? adaptor_.updateEvent(File(text).descriptor(), 0, uid)
                            : adaptor_.updateEvent(text, uid);
  // The task or the category in the text may not exist.
  FUZZ_REQUIRE(code == TASK_SYNCML_NOTFOUND || code == TASK_SYNCML_OTHERERROR ||
               (code == TASK_SYNCML_OK && isLive(uid)));
  if (!isLive(uid))
    return;
  if (code == TASK_SYNCML_OK)
    checkLimits(uid);
  else
    FUZZ_REQUIRE(get(uid) == before);
}

void Program::remove(unsigned int uid) {
  const int code = adaptor_.removeEvent(uid);
  FUZZ_REQUIRE(code == (isLive(uid) ? TASK_SYNCML_OK : TASK_SYNCML_NOTFOUND));
  live_.erase(std::remove(live_.begin(), live_.end(), uid), live_.end());
}

std::string Program::get(unsigned int uid) {
  std::string text;
  const int code = adaptor_.getEvent(text, uid);
  FUZZ_REQUIRE(code == (isLive(uid) ? TASK_SYNCML_OK : TASK_SYNCML_NOTFOUND));
  FUZZ_REQUIRE(text.empty() == (code != TASK_SYNCML_OK));
  return text;
}

void Program::getInto(unsigned int uid, int room) {
  const std::string text = get(uid);
  const File file;
  int size = -1;
  const int code = adaptor_.getEvent(file.descriptor(), size, room, uid);
  if (text.empty()) {
    FUZZ_REQUIRE(code == TASK_SYNCML_NOTFOUND && size == -1);
    return;
  }
  FUZZ_REQUIRE(size == static_cast<int>(text.size()));
  FUZZ_REQUIRE(code == (size > room ? TASK_SYNCML_TOOLARGE : TASK_SYNCML_OK));
  FUZZ_REQUIRE(file.bytes() == (size > room ? "" : text));
  const std::string left = house_.outbound.path() / (std::to_string(uid) + ".vtodo");
  FUZZ_REQUIRE((unlink(left.c_str()) == 0) == (size > room));
}

// After tasks were removed by category, only the store knows the remaining ones.
void Program::reload() {
  live_.clear();
  FUZZ_REQUIRE(adaptor_.getAllIDs(live_) == TASK_SYNCML_OK);
}

// Runs lists and searches, as another program may do during a synchronization.
void Program::lists(const std::string& text, unsigned int number) {
  QString wanted = QString::fromUtf8(text.c_str());
  QValueList<ZTASK_ENG_Task> found;
  const int matched = adaptor_.getMatchTasks(found, wanted);
  FUZZ_REQUIRE(matched == (live_.empty() ? TASK_ENG_NOT_FOUND : TASK_ENG_OK));
  FUZZ_REQUIRE(found.count() <= live_.size());
  const auto filter = static_cast<ZTASK_ENG_Model::TASK_CATEGORY>(number % 4);
  const auto order = static_cast<ZTASK_ENG_Model::TASK_SORT_FIELD>(number / 4 % 2);
  QValueList<unsigned int> shown;
  FUZZ_REQUIRE(adaptor_.ZTASK_ENG_Model::getAllIDs(shown, filter, order) == TASK_ENG_OK);
  if (shown.isEmpty())
    return;
  ZTASK_ENG_Task first;
  FUZZ_REQUIRE(adaptor_.getTask(*shown.begin(), first) == TASK_ENG_OK);
  QValueList<ZTASK_ENG_Task> page;
  FUZZ_REQUIRE(adaptor_.getTasks(page, first, static_cast<int>(live_.size()), filter, order) ==
               TASK_ENG_OK);
  FUZZ_REQUIRE(page.count() == shown.count());
  auto uid = shown.begin();
  for (const ZTASK_ENG_Task& task : page)
    FUZZ_REQUIRE(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID) == *uid++);
}

void Program::run(const Operation& operation) {
  const auto& [what, number, text] = operation;
  QString name = QString::fromUtf8(text.c_str()).trimmed();
  switch (what) {
  case 'A':
    return add(text, true);
  case 'u':
  case 'U':
    return update(text, what == 'U', uidOf(number));
  case 'r':
    return remove(uidOf(number));
  case 'R':
    FUZZ_REQUIRE(adaptor_.removeAll() == TASK_SYNCML_OK);
    return live_.clear();
  case 'g':
    return getInto(uidOf(number), static_cast<int>(text.size()));
  case 'b':
    return adaptor_.beginSync(static_cast<int>(number));
  case 'e':
    return adaptor_.endSync();
  case 'l':
    return lists(text, number);
  case 'c': {
    unsigned int uid = 0;
    const int code = adaptor_.addCategory(name, uid);
    FUZZ_REQUIRE(code == TASK_ENG_OK || code == TASK_ENG_EXISTS);
    return;
  }
  case 'n': {
    QString old = name.section(QChar('\n'), 0, 0);
    QString renamed = name.section(QChar('\n'), 1);
    FUZZ_REQUIRE(adaptor_.renameCategory(old, renamed) == TASK_ENG_OK);
    return;
  }
  case 'd':
    FUZZ_REQUIRE(adaptor_.removeCategory(name, number % 2 == 1) == TASK_ENG_OK);
    return reload();
  default:
    return add(text, false);
  }
}

void Program::finish() {
  Uids all;
  FUZZ_REQUIRE(adaptor_.getAllIDs(all) == TASK_SYNCML_OK);
  FUZZ_REQUIRE(std::set<unsigned int>(all.begin(), all.end()) ==
               std::set<unsigned int>(live_.begin(), live_.end()));
  int count = -1;
  FUZZ_REQUIRE(adaptor_.getCount(count) == TASK_ENG_OK);
  FUZZ_REQUIRE(static_cast<std::size_t>(count) == all.size());
  for (const unsigned int uid : all) {
    const std::string text = get(uid);
    FUZZ_REQUIRE(ulo::examineText(text).todos == 1);
    const int size = static_cast<int>(text.size());
    getInto(uid, size);
    getInto(uid, size - 1);
    // Overwriting a task with its own exported text does not change the text.
    update(text, uid % 2 == 0, uid);
    const std::string again = get(uid);
    update(again, uid % 2 == 1, uid);
    FUZZ_REQUIRE(get(uid) == again);
  }
  lists("a", static_cast<unsigned int>(all.size()));
  ulo::NetChanges net = house_.changes();
  std::sort(net.added.begin(), net.added.end());
  FUZZ_REQUIRE(net.added == all);
  FUZZ_REQUIRE(net.updated.empty() && net.removed.empty());
  adaptor_.beginSync(0);
  adaptor_.endSync();
}

std::vector<Operation> operationsOf(const std::string& bytes) {
  const std::string mark = "%%";
  std::vector<Operation> operations;
  const std::size_t first = bytes.rfind(mark, 0) == 0 ? 0 : bytes.find("\n" + mark);
  if (first > 0)
    operations.push_back({'a', 0, bytes.substr(0, first)});
  for (std::size_t at = first; at < bytes.size();) {
    at += bytes[at] == '\n' ? 1 + mark.size() : mark.size();
    const std::size_t line = std::min(bytes.find('\n', at), bytes.size());
    const std::size_t end = std::min(bytes.find("\n" + mark, at), bytes.size());
    const std::string head = bytes.substr(at, line - at);
    operations.push_back(
        {head.empty() ? 'a' : head[0],
         head.empty() ? 0U : static_cast<unsigned int>(std::strtoul(&head[1], nullptr, 10)),
         line < end ? bytes.substr(line + 1, end - line - 1) : ""});
    at = end;
  }
  operations.resize(std::min<std::size_t>(operations.size(), mostOperations), {'e', 0, ""});
  return operations;
}

void runProgram(House& house, const std::string& bytes) {
  Program program(house);
  for (const Operation& operation : operationsOf(bytes))
    program.run(operation);
  program.finish();
}

// Returns the store after everything that stays open has been opened.
House& lived() {
  static House house;
  static const bool isLived = [] {
    runProgram(house, "BEGIN:VCALENDAR\nBEGIN:VTODO\nSUMMARY:a\nEND:VTODO\nEND:VCALENDAR\n");
    house.restore();
    return true;
  }();
  FUZZ_REQUIRE(isLived);
  return house;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isPrepared = (fuzz::prepare(), true);
  FUZZ_REQUIRE(isPrepared);
  House& house = lived();
  const std::ptrdiff_t descriptors = openDescriptors();
  runProgram(house, fuzz::textOf(data, size));
  FUZZ_REQUIRE(openDescriptors() == descriptors);
  house.restore();
  return 0;
}
