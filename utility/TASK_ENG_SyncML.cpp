// The log texts in this file are contracts: see docs/compatibility.md.
#include "TASK_ENG_SyncML.h"

#include "QCopChannel.h"
#include "ZVtodoParser.h"
#include "first_task.h"
#include "log_place.h"
#include "outbound_file.h"
#include "todo_reader.h"
#include "ulo/descriptor.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <new>
#include <poll.h>
#include <unistd.h>

#define LOG_TRACE(text, ...)                                                                       \
  moduleLog(logDump, "(%s:%d)" text, __FILE__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

namespace {

constexpr std::size_t chunkSize = 8192;

constexpr char nameIsTaken[] = "the tmp file name is taken by another file!";
constexpr char notWhole[] = "the tmp file is not whole!";
constexpr char notTaken[] = "the file descriptor does not take the whole vtodo!";

int syncCode(int storeCode) {
  switch (storeCode) {
  case TASK_ENG_OK:
    return TASK_SYNCML_OK;
  case TASK_ENG_MEMORY_FULL:
    return TASK_SYNCML_NOMEMORY;
  case TASK_ENG_BAD_PARAMETER:
    return TASK_SYNCML_BADPARAM;
  case TASK_ENG_NOT_FOUND:
    return TASK_SYNCML_NOTFOUND;
  // The store never returns this code, but the mapping is a contract.
  case 4:
    return TASK_SYNCML_TOOLARGE;
  default:
    return TASK_SYNCML_OTHERERROR;
  }
}

int noRoom(LogPlace place = LogPlace::current()) {
  ULO_LOG_ERROR_AT(place, "Memary is full!!!");
  return TASK_SYNCML_NOMEMORY;
}

struct FreeMemory {
  void operator()(char* memory) const { std::free(memory); }
};
struct RemoveFile {
  void operator()(const char* name) const { unlink(name); }
};

// Waits until the descriptor is writable. Returns false if it has failed.
bool writeAll(int to, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t taken = write(to, bytes, count);
    if (taken > 0) {
      bytes += taken;
      count -= static_cast<std::size_t>(taken);
    } else if (taken < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      pollfd wanted{to, POLLOUT, 0};
      static_cast<void>(poll(&wanted, 1, -1));
    } else if (taken == 0 || errno != EINTR) {
      return false;
    }
  }
  return true;
}

struct Copied {
  off_t read = 0;     // bytes
  bool taken = true;  // all of them were written
};

// Copies up to the end of `from`, or until a read or a write fails.
Copied copyAll(int from, int to) {
  char chunk[chunkSize];
  Copied copied;
  for (ssize_t got = 0; copied.taken && (got = read(from, chunk, sizeof chunk)) > 0;) {
    copied.read += got;
    copied.taken = writeAll(to, chunk, static_cast<std::size_t>(got));
  }
  return copied;
}

}  // namespace

TASK_ENG_SyncML::TASK_ENG_SyncML() = default;

TASK_ENG_SyncML::~TASK_ENG_SyncML() = default;

// Outbound

QString TASK_ENG_SyncML::outboundName(unsigned int uid) const {
  return tmpDir + QStringLiteral("/%1.vtodo").arg(uid);
}

int TASK_ENG_SyncML::getEvent(int fd, int& size, int maxSize, unsigned int uid) try {
  LOG_TRACE("Starting getEvent with fd = %d, maxSize = %d, uid = %d", fd, maxSize,
            static_cast<int>(uid));
  ZTASK_ENG_Task task;
  if (const int code = getTask(uid, task); code != TASK_ENG_OK) {
    ULO_LOG_ERROR("Error Occured when getting a Task!");
    LOG_TRACE("Exiting getEvent abnormally");
    return syncCode(code);
  }
  const QString name = outboundName(uid);
  LOG_TRACE("The tmp file name is %s", name.toUtf8().constData());
  const auto fail = [](const char* why, LogPlace place = LogPlace::current()) {
    ULO_LOG_ERROR_AT(place, "%s", why);
    moduleLog(logDump, "(%s:%d)Exiting getEvent with TASK_SYNCML_OTHERERROR", place.file,
              place.line);
    return TASK_SYNCML_OTHERERROR;
  };
  OutboundFile outbound(name);
  if (!outbound.make())
    return fail(nameIsTaken);
  ZVtodoParser parser;
  parser.writeVtodo(outbound.nameForWriting(), &task);
  LOG_TRACE("Returned from p.writeVtodo");
  QFile file(outbound.name());
  if (!file.exists())
    return fail("Tmp file does not exist!");
  if (!file.open(QIODevice::ReadOnly))
    return fail("temp file open failed!");
  if (!outbound.isSame(file.handle()))
    return fail(nameIsTaken);
  if (!outbound.isWhole()) {
    outbound.remove();
    return fail(notWhole);
  }
  size = static_cast<int>(file.size());
  LOG_TRACE("Size of vtodo = %d", size);
  if (size > maxSize) {
    ULO_LOG_ERROR("Size of vTodo file exceeds maxSize");
    LOG_TRACE("Exiting getEvent with TASK_SYNCML_TOOLARGE");
    return TASK_SYNCML_TOOLARGE;
  }
  file.close();
  ulo::Descriptor text(open(QFile::encodeName(outbound.name()).constData(), O_RDONLY));
  if (text.get() == -1)
    return fail("Could not obtain filedescriptor for temp file");
  if (!outbound.isSame(text.get()))
    return fail(nameIsTaken);
  const Copied copied = copyAll(text.get(), fd);
  if (copied.taken && copied.read != size) {
    outbound.remove();
    return fail(notWhole);
  }
  // The owner of the descriptor sees its errors.
  if (!copied.taken)
    ULO_LOG_ERROR("%s", notTaken);
  LOG_TRACE("Copying to fd completed.");
  text.reset();
  outbound.remove();
  LOG_TRACE("Exiting getEvent successfully");
  return TASK_SYNCML_OK;
} catch (const std::bad_alloc&) {
  return noRoom();
}

int TASK_ENG_SyncML::getEvent(std::string& text, unsigned int uid) try {
  ZTASK_ENG_Task task;
  if (const int code = getTask(uid, task); code != TASK_ENG_OK) {
    ULO_LOG_ERROR("Error Occured when getting a Task!");
    return syncCode(code);
  }
  const QString name = outboundName(uid);
  ULO_LOG_ERROR("The tmp file name is %s", name.toUtf8().constData());
  OutboundFile outbound(name);
  if (!outbound.make()) {
    ULO_LOG_ERROR("%s", nameIsTaken);
    return TASK_SYNCML_OTHERERROR;
  }
  ZVtodoParser parser;
  parser.writeVtodo(outbound.nameForWriting(), &task);
  LOG_TRACE("Returned from p.writeVtodo");
  QFile file(outbound.name());
  if (!file.exists()) {
    ULO_LOG_ERROR("temp file is not exist!");
    return TASK_SYNCML_OTHERERROR;
  }
  if (!file.open(QIODevice::ReadOnly)) {
    ULO_LOG_ERROR("temp file open failed!");
    return TASK_SYNCML_OTHERERROR;
  }
  if (!outbound.isSame(file.handle())) {
    ULO_LOG_ERROR("%s", nameIsTaken);
    return TASK_SYNCML_OTHERERROR;
  }
  const qint64 size = file.size();
  const std::unique_ptr<char, FreeMemory> buffer(
      static_cast<char*>(std::calloc(static_cast<std::size_t>(size) + 1, 1)));
  if (buffer == nullptr)
    return noRoom();
  file.flush();
  const qint64 got = file.read(buffer.get(), size);
  const bool whole = outbound.isWhole();
  outbound.remove();
  if (got < size) {
    ULO_LOG_ERROR("iReadSize < iFileSize");
    return TASK_SYNCML_OTHERERROR;
  }
  if (!whole) {
    ULO_LOG_ERROR("%s", notWhole);
    return TASK_SYNCML_OTHERERROR;
  }
  text.append(buffer.get());
  return TASK_SYNCML_OK;
} catch (const std::bad_alloc&) {
  return noRoom();
}

// Inbound

bool TASK_ENG_SyncML::fileToTask(int fd, ZTASK_ENG_Task& task) {
  LOG_TRACE("Starting fileToTask with fd = %d", fd);
  if (lseek(fd, 0, SEEK_SET) == -1) {
    ULO_LOG_ERROR("Could not lseek to beginning of file!");
    return false;
  }
  char name[] = "/tmp/vtodoXXXXXX";
  ulo::Descriptor copy(mkstemp(name));
  if (copy.get() == -1) {
    ULO_LOG_ERROR("Could not create temporary file");
    return false;
  }
  std::unique_ptr<const char, RemoveFile> file(name);
  const bool whole = copyAll(fd, copy.get()).taken;
  copy.reset();
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  // An incomplete item is rejected: stored over a task, it would lose the rest.
  if (whole) {
    ZVtodoParser parser;
    parser.readVtodo(QString::fromLatin1(name), tasks);
  } else {
    ULO_LOG_ERROR("Could not copy to the temporary file");
  }
  file.reset();
  if (!whole)
    return false;
  if (tasks.isEmpty()) {
    ULO_LOG_ERROR("the file is in wrong format or is empty!");
    return false;
  }
  if (tasks.first() == nullptr) {
    ULO_LOG_ERROR("the task pointer is empty!");
    return false;
  }
  // Stored over a task, it would remove the value.
  if (ulo::lastReadLacksValue())
    return false;
  takeFirst(tasks, task);
  LOG_TRACE("Exiting fileToTask successfully");
  return true;
}

bool TASK_ENG_SyncML::stringToTask(const std::string& text, ZTASK_ENG_Task& task) {
  if (text.empty()) {
    ULO_LOG_ERROR("the parameter is wrong!");
    return false;
  }
  QList<ZTASK_ENG_Task> tasks;
  tasks.setAutoDelete(true);
  ZVtodoParser parser;
  parser.readVtodo(QCString(text.c_str()), tasks);
  if (tasks.isEmpty()) {
    ULO_LOG_ERROR("the vtodo is in wrong format or is empty!");
    return false;
  }
  if (tasks.first() == nullptr) {
    ULO_LOG_ERROR("the task pointer is empty!");
    return false;
  }
  // Stored over a task, it would remove the value.
  if (ulo::lastReadLacksValue())
    return false;
  takeFirst(tasks, task);
  return true;
}

// Changes

int TASK_ENG_SyncML::changeMade(int storeCode) {
  changed = changed || storeCode == TASK_ENG_OK;
  return syncCode(storeCode);
}

int TASK_ENG_SyncML::store(ZTASK_ENG_Task& task, unsigned int& uid, bool traced) {
  const auto trace = [traced](const char* text) {
    if (traced)
      LOG_TRACE("%s", text);
  };
  int code = TASK_ENG_OK;
  if (addMode) {
    trace("Adding task...");
    code = addTask(task);
  } else {
    trace("Updating task...");
    task.setUINT32(ZTASK_ENG_Task::TASK_FIELD_UID, uid);
    code = updateTask(task);
  }
  if (code != TASK_ENG_OK) {
    ULO_LOG_ERROR("add record to database failed!!");
    trace("Exiting addEvent abnormally");
    return syncCode(code);
  }
  if (addMode) {
    trace("Setting uid");
    uid = task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID);
  }
  trace("Exiting addEvent successfully");
  return changeMade(code);
}

int TASK_ENG_SyncML::addEvent(int fd, int size, unsigned int& uid) try {
  LOG_TRACE("Starting addEvent with fd = %d, size = %d", fd, size);
  ZTASK_ENG_Task task;
  if (!fileToTask(fd, task)) {
    ULO_LOG_ERROR("failed to get task from file descriptor!!");
    LOG_TRACE("Exiting addEvent with TASK_SYNCML_OTHERERROR");
    return TASK_SYNCML_OTHERERROR;
  }
  return store(task, uid, true);
} catch (const std::bad_alloc&) {
  return noRoom();
}

int TASK_ENG_SyncML::addEvent(const std::string& text, unsigned int& uid) try {
  ZTASK_ENG_Task task;
  if (!stringToTask(text, task)) {
    ULO_LOG_ERROR("failed to get task from string!!");
    return TASK_SYNCML_OTHERERROR;
  }
  return store(task, uid, false);
} catch (const std::bad_alloc&) {
  return noRoom();
}

int TASK_ENG_SyncML::updateEvent(int fd, int size, unsigned int uid) {
  LOG_TRACE("Starting updateEvent with fd = %d, size = %d, uid = %d", fd, size,
            static_cast<int>(uid));
  addMode = false;
  const int code = addEvent(fd, size, uid);
  LOG_TRACE("Status returned by addEvent = %d", code);
  addMode = true;
  LOG_TRACE("Exiting updateEvent");
  return code;
}

int TASK_ENG_SyncML::updateEvent(const std::string& text, unsigned int uid) {
  addMode = false;
  const int code = addEvent(text, uid);
  addMode = true;
  return code;
}

int TASK_ENG_SyncML::removeEvent(unsigned int uid) {
  return changeMade(removeTask(uid));
}

int TASK_ENG_SyncML::removeAll() {
  return changeMade(ZTASK_ENG_Model::removeAll());
}

int TASK_ENG_SyncML::getAllIDs(std::vector<unsigned int>& ids) try {
  QValueList<unsigned int> all;
  if (const int code = ZTASK_ENG_Model::getAllIDs(all); code != TASK_ENG_OK)
    return syncCode(code);
  ids.insert(ids.end(), all.begin(), all.end());
  return TASK_SYNCML_OK;
} catch (const std::bad_alloc&) {
  return noRoom();
}

// Runs

void TASK_ENG_SyncML::beginSync(int mode) {
  inSync = true;
  setSyncMode(mode);
}

void TASK_ENG_SyncML::endSync() {
  if (!inSync)
    return;
  inSync = false;
  if (!changed)
    return;
  ULO_LOG_ERROR("Sending db change msg to HSA!");
  try {
    QCopChannel::send(channel, dataChanged);
    changed = false;
  } catch (const std::bad_alloc&) {
    noRoom();
  }
}
