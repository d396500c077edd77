#include "ulotask_runner.h"

#include <QJsonDocument>
#include <cstring>
#include <stdexcept>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <pty.h>
#include <sqlite3.h>
#include <sstream>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr int longestRun = 120'000;  // milliseconds; then the program counts as hanging

QJsonDocument parsed(const std::string& text) {
  QJsonParseError error;
  QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
  EXPECT_EQ(error.error, QJsonParseError::NoError)
      << error.errorString().toStdString() << " in " << text;
  return document;
}

}  // namespace

QJsonArray Outcome::array() const {
  const QJsonDocument document = parsed(out);
  EXPECT_TRUE(document.isArray()) << out;
  return document.array();
}

QJsonObject Outcome::object() const {
  const QJsonDocument document = parsed(out);
  EXPECT_TRUE(document.isObject()) << out;
  return document.object();
}

Running::Running(QProcess& process, const QStringList& arguments) : process_(process) {
  process_.start(ULOTASK_PROGRAM, arguments);
}

Running::~Running() {
  process_.kill();
  process_.waitForFinished();
}

std::string Running::line() {
  while (!process_.canReadLine() && process_.waitForReadyRead(longestRun))
    continue;
  return process_.readLine().toStdString();
}

int Running::endBy(int signal) {
  const auto process = static_cast<pid_t>(process_.processId());
  // 0 and negative numbers name groups of processes, among them the test's.
  if (process <= 0) {
    ADD_FAILURE() << "cannot send signal " << signal << ": the program is not running";
    return -1;
  }
  ::kill(process, signal);
  return code();
}

int Running::code() {
  EXPECT_TRUE(process_.waitForFinished(longestRun));
  EXPECT_EQ(process_.exitStatus(), QProcess::NormalExit);
  return process_.exitCode();
}

void UlotaskTest::prepare(QProcess& process) const {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* name : {"ULO_LOG", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"})
    environment.remove(name);
  environment.insert("ULOTASK", ULOTASK_PROGRAM);
  for (const auto& [name, value] : environment_)
    environment.insert(QString::fromStdString(name), QString::fromStdString(value));
  process.setProcessEnvironment(environment);
}

Outcome UlotaskTest::start(const std::string& program, const Arguments& arguments,
                           const std::string& input) {
  QProcess process;
  prepare(process);
  QStringList list;
  for (const std::string& argument : arguments)
    list.append(QString::fromStdString(argument));
  process.start(QString::fromStdString(program), list);
  process.write(QByteArray::fromStdString(input));
  process.closeWriteChannel();
  Outcome run;
  if (!process.waitForFinished(longestRun)) {
    ADD_FAILURE() << "does not end: " << testing::PrintToString(arguments);
    process.kill();
    process.waitForFinished();
    return run;
  }
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << testing::PrintToString(arguments);
  run.code = process.exitCode();
  run.out = process.readAllStandardOutput().toStdString();
  run.err = process.readAllStandardError().toStdString();
  return run;
}

Outcome UlotaskTest::ulotask(const Arguments& arguments, const std::string& input) {
  return start(ULOTASK_PROGRAM, arguments, input);
}

Outcome UlotaskTest::shell(const std::string& line) {
  return start("/bin/bash", {"-c", line}, {});
}

Outcome UlotaskTest::onTerminal(const Arguments& arguments, int columns,
                                const std::vector<Typed>& typed) {
  return startOnTerminal(ULOTASK_PROGRAM, arguments, columns, typed);
}

Outcome UlotaskTest::shellOnTerminal(const std::string& line, int columns,
                                     const std::vector<Typed>& typed) {
  return startOnTerminal("/bin/bash", {"-c", line}, columns, typed);
}

Outcome UlotaskTest::startOnTerminal(const std::string& program, const Arguments& arguments,
                                     int columns, const std::vector<Typed>& typed) {
  winsize size{};
  size.ws_row = 24;
  size.ws_col = static_cast<unsigned short>(columns);
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child < 0)
    throw std::runtime_error(std::string("no pseudo-terminal is available (/dev/ptmx, and a devpts "
                                         "file system mounted on /dev/pts): ") +
                             std::strerror(errno));
  if (child == 0) {
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
      argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    unsetenv("ULO_LOG");
    setenv("ULOTASK", ULOTASK_PROGRAM, 1);
    for (const auto& [name, value] : environment_)
      setenv(name.c_str(), value.c_str(), 1);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  Outcome run;
  char buffer[4096];
  ssize_t count = 0;
  auto next = typed.begin();
  std::size_t seen = 0;
  // Reading from a terminal whose last program has ended fails with EIO.
  while ((count = read(terminal, buffer, sizeof buffer)) > 0 || (count < 0 && errno == EINTR)) {
    if (count > 0)
      run.out.append(buffer, static_cast<std::size_t>(count));
    while (next != typed.end() && run.out.find(next->prompt, seen) != std::string::npos) {
      seen = run.out.find(next->prompt, seen) + next->prompt.size();
      EXPECT_EQ(write(terminal, next->text.data(), next->text.size()),
                static_cast<ssize_t>(next->text.size()));
      ++next;
    }
  }
  close(terminal);
  int status = 0;
  waitpid(child, &status, 0);
  run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

Outcome UlotaskTest::succeed(const Arguments& arguments, const std::string& input) {
  const Outcome run = ulotask(arguments, input);
  EXPECT_EQ(run.code, 0) << testing::PrintToString(arguments) << run.err;
  EXPECT_EQ(run.err, "") << testing::PrintToString(arguments);
  return run;
}

std::string UlotaskTest::add(const Arguments& arguments) {
  Arguments all = {"add", "--json"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return std::to_string(succeed(all).object()["uid"].toInt());
}

std::vector<int> UlotaskTest::uids(Arguments arguments) {
  arguments.push_back("--json");
  std::vector<int> result;
  for (const QJsonValue& task : succeed(arguments).array())
    result.push_back(task["uid"].toInt());
  return result;
}

void UlotaskTest::sql(const std::string& text, const std::string& file) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(path("data/" + file).c_str(), &database), SQLITE_OK);
  char* error = nullptr;
  EXPECT_EQ(sqlite3_exec(database, text.c_str(), nullptr, nullptr, &error), SQLITE_OK) << error;
  sqlite3_close(database);
}

void UlotaskTest::preload(const std::string& library) {
  std::string& libraries = environment_["LD_PRELOAD"];
  libraries += (libraries.empty() ? "" : ":") + library;
  // The sanitizers complain about a library that is preloaded before theirs, which is harmless
  // here.
  const char* options = std::getenv("ASAN_OPTIONS");
  environment_["ASAN_OPTIONS"] =
      std::string(options == nullptr ? "" : options) + ":verify_asan_link_order=0";
}

void UlotaskTest::limitStore(int pages) {
  preload(ULOTASK_FULL_STORE);
  environment_["ULO_TEST_MAX_PAGES"] = std::to_string(pages);
  environment_["ULO_TEST_FULL_FILE"] = path("data/tasks.db");
}

void UlotaskTest::stepClock(int milliseconds) {
  preload(ULOTASK_CLOCK);
  environment_["ULO_TEST_CLOCK_STEP"] = std::to_string(milliseconds);
}

void UlotaskTest::hideLibrary(const std::string& name) {
  preload(ULOTASK_NO_LIBRARY);
  environment_["ULO_TEST_NO_LIBRARY"] = name;
}

void UlotaskTest::breakTemporaryFiles(const std::string& how) {
  preload(ULOTASK_TEMPORARY);
  environment_["ULO_TEST_TEMPORARY"] = how;
}

std::string UlotaskTest::file(const std::string& name, const std::string& bytes) {
  std::ofstream(path(name), std::ios::binary) << bytes;
  return path(name);
}

std::string calendar(const std::string& content) {
  return "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n" + content + "END:VCALENDAR\r\n";
}

std::string todo(const std::string& lines) {
  return "BEGIN:VTODO\r\n" + lines + "END:VTODO\r\n";
}

std::string readWhole(const std::string& path) {
  std::ostringstream all;
  all << std::ifstream(path, std::ios::binary).rdbuf();
  return all.str();
}
