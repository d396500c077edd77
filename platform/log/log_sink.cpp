#include "ulo/log_sink.h"

#include "aplog.h"
#include "ulo/data_directory.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

namespace ulo {
namespace {

// Messages up to this length are one line; longer ones continue in lines marked as such.
constexpr std::size_t messageBuffer = 64UL * 1024;

// The time of a line without its milliseconds. Most lines are written in the same second as the
// one before.
struct Stamp {
  std::time_t second = -1;
  std::optional<std::string> zone;  // $TZ
  std::string dateAndTime;          // "2006-03-05T12:00:00"
  std::string offset;               // "+01:00", or "Z" in UTC
};

struct Sink {
  enum class Kind { none, standardError, systemLog, file } kind = Kind::none;
  std::string program;
  std::string path;
  int descriptor = -1;
  char buffer[messageBuffer];  // the C library does not allocate one of the requested size
  bool goesOn = false;         // the next piece continues the same message
  Stamp stamp;                 // of the last line
};

// Returns the message with control characters as "\xNN", including those beyond ASCII (U+0080 to
// U+009F in UTF-8): they could forge lines, or control the reader's terminal.
std::string printable(const char* text, std::size_t size) {
  constexpr char hex[] = "0123456789ABCDEF";
  std::string result;
  bool afterC2 = false;
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte >= ' ' && byte != 0x7F && !(afterC2 && byte >= 0x80 && byte < 0xA0))
      result += text[i];
    else if (i + 1 < size || byte != '\n')  // the message's final line end is dropped
      result += std::string("\\x") + hex[byte >> 4U] + hex[byte & 15U];
    afterC2 = byte == 0xC2;
  }
  return result;
}

Stamp stampOf(std::time_t second, std::optional<std::string> zone) {
  // localtime_r alone would not notice that the zone was changed.
  tzset();
  tm local{};
  localtime_r(&second, &local);
  char dateAndTime[80];
  std::strftime(dateAndTime, sizeof dateAndTime, "%Y-%m-%dT%H:%M:%S", &local);
  const long minutes = std::labs(local.tm_gmtoff) / 60;
  char offset[40] = "Z";
  if (local.tm_gmtoff != 0)
    std::snprintf(offset, sizeof offset, "%c%02ld:%02ld", local.tm_gmtoff < 0 ? '-' : '+',
                  minutes / 60, minutes % 60);
  return {second, std::move(zone), dateAndTime, offset};
}

// "2006-03-05T12:00:00.123+01:00", or with "Z" in UTC. A new system zone appears with the next
// second, a new $TZ at once.
std::string timeStamp(Stamp& last) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const char* const setting = std::getenv("TZ");
  std::optional<std::string> zone;
  if (setting != nullptr)
    zone = setting;
  if (now.tv_sec != last.second || zone != last.zone)
    last = stampOf(now.tv_sec, std::move(zone));
  char milliseconds[8];
  std::snprintf(milliseconds, sizeof milliseconds, ".%03d",
                static_cast<int>(now.tv_nsec / 1000000 % 1000));
  return last.dateAndTime + milliseconds + last.offset;
}

int openFile(const std::string& path) {
  return open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

// Renames a full file. Of several processes the first one renames it; the others notice that the
// file name no longer refers to their file. All continue with a new file, as does a process whose
// file was deleted. If a new file cannot be opened, the old one remains in use.
void makeRoom(Sink& sink, std::size_t size) {
  struct stat own {};
  if (fstat(sink.descriptor, &own) != 0 || !S_ISREG(own.st_mode) ||
      (own.st_nlink > 0 && own.st_size + static_cast<off_t>(size) <= logFileLimit))
    return;
  while (flock(sink.descriptor, LOCK_EX) != 0 && errno == EINTR) {
  }
  struct stat named {};
  if (stat(sink.path.c_str(), &named) == 0 && named.st_ino == own.st_ino)
    rename(sink.path.c_str(), (sink.path + ".1").c_str());
  const int fresh = openFile(sink.path);
  // Closing is not enough: a child process may share the lock.
  flock(sink.descriptor, LOCK_UN);
  if (fresh < 0)
    return;
  close(sink.descriptor);
  sink.descriptor = fresh;
}

void writeLine(Sink& sink, const char* text, std::size_t size) {
  const std::string message = (sink.goesOn ? "... " : "") + printable(text, size);
  sink.goesOn = size % messageBuffer == 0;
  if (sink.kind == Sink::Kind::systemLog) {
    syslog(LOG_NOTICE, "%s", message.c_str());
    return;
  }
  const std::string line = timeStamp(sink.stamp) + " " + sink.program + "[" +
                           std::to_string(getpid()) + "] " + message + "\n";
  if (sink.kind == Sink::Kind::file)
    makeRoom(sink, line.size());
  // A single write, so that lines of several processes do not mix. On a full disk the line is lost.
  if (write(sink.descriptor, line.data(), line.size()) < 0)
    return;
}

// Called by the C library, through which no exception may propagate: without memory the line is
// lost, too.
ssize_t writeMessage(void* cookie, const char* text, std::size_t size) {
  auto& sink = *static_cast<Sink*>(cookie);
  try {
    if (sink.kind != Sink::Kind::none)
      writeLine(sink, text, size);
  } catch (const std::exception&) {
  }
  return static_cast<ssize_t>(size);
}

}  // namespace

bool openLogSink(const char* program) {
  // Never destroyed: static objects may log at process exit.
  auto* sink = new Sink;
  sink->program = program;
  const char* setting = std::getenv("ULO_LOG");
  const std::string where = setting == nullptr ? "" : setting;
  bool opened = true;
  if (where == "stderr") {
    sink->kind = Sink::Kind::standardError;
    sink->descriptor = STDERR_FILENO;
  } else if (where == "syslog") {
    sink->kind = Sink::Kind::systemLog;
    openlog(sink->program.c_str(), LOG_PID, LOG_USER);
  } else if (where != "none") {
    const std::string directory = userDirectory("XDG_STATE_HOME", ".local/state");
    // Absolute, because the program may change its directory before the file is full.
    std::error_code ignored;
    sink->path = std::filesystem::absolute(
        where.empty() ? directory + "/" + program + ".log" : where, ignored);
    if (!where.empty() || makeUserDirectory(directory))
      sink->descriptor = openFile(sink->path);
    opened = sink->descriptor >= 0;
    if (opened)
      sink->kind = Sink::Kind::file;
  }
  FILE* stream = fopencookie(sink, "w", {nullptr, writeMessage, nullptr, nullptr});
  if (stream == nullptr)
    return false;
  std::setvbuf(stream, sink->buffer, _IOFBF, messageBuffer);
  libaplog_to_module_ptr = stream;
  return opened;
}

}  // namespace ulo
