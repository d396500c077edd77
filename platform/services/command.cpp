#include "command.h"

#include "module_log.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QProcess>
#include <QThread>

#include <memory>
#include <set>

#include <unistd.h>

namespace ulo {
namespace {

bool hasEventLoop() {
  const QCoreApplication* application = QCoreApplication::instance();
  return application != nullptr && application->thread() == QThread::currentThread();
}

void prepare(QProcess& process, const QStringList& command) {
  process.setProgram(command.first());
  process.setArguments(command.mid(1));
  process.setStandardInputFile(QProcess::nullDevice());
  process.setStandardOutputFile(QProcess::nullDevice());
  process.setStandardErrorFile(QProcess::nullDevice());
}

bool logFailedStart(const QProcess& process) {
  ULO_LOG_ERROR("The command %s can't be started: %s", process.program().toUtf8().constData(),
                process.errorString().toUtf8().constData());
  return false;
}

// Returns true if a command that has exited was successful; logs a failure.
bool succeeded(const QProcess& process) {
  if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
    return true;
  const bool crashed = process.exitStatus() != QProcess::NormalExit;
  ULO_LOG_ERROR("The command %s failed with %s %d", process.program().toUtf8().constData(),
                crashed ? "signal" : "code", process.exitCode());
  return false;
}

// Running commands. Destroying a QProcess kills its process, so the objects are kept until their
// processes have exited, even if this program exits first.
std::set<QProcess*>& underWay() {
  static auto* const processes = new std::set<QProcess*>;
  return *processes;
}

// Deleted later: it may be the sender of the current signal.
void forget(QProcess* process) {
  underWay().erase(process);
  process->deleteLater();
}

// Starts a command and calls `ended` when it exits. Returns null if it cannot be started.
QProcess* follow(const QStringList& command, const std::function<void(const QProcess&)>& ended) {
  auto* const process = new QProcess;
  underWay().insert(process);
  prepare(*process, command);
  process->setChildProcessModifier([] { setsid(); });
  QObject::connect(process, &QProcess::finished, process, [process, ended] {
    ended(*process);
    forget(process);
  });
  process->start(QIODevice::NotOpen);
  if (!process->waitForStarted(-1)) {
    logFailedStart(*process);
    forget(process);
    return nullptr;
  }
  return process;
}

bool runBlocking(const QStringList& command, const std::function<void()>& ended) {
  QProcess process;
  prepare(process, command);
  process.setChildProcessModifier([] { setsid(); });
  process.start(QIODevice::NotOpen);
  if (!process.waitForStarted(-1))
    return logFailedStart(process);
  process.waitForFinished(-1);
  ended();
  return succeeded(process);
}

}  // namespace

bool startCommand(const QStringList& command) {
  QProcess process;
  prepare(process, command);
  return process.startDetached() || logFailedStart(process);
}

bool followCommand(const QStringList& command, const std::function<void()>& ended) {
  if (!hasEventLoop())
    return startCommand(command);
  return follow(command, [ended](const QProcess& process) {
           ended();
           static_cast<void>(succeeded(process));
         }) != nullptr;
}

bool runCommand(const QStringList& command, const std::function<void()>& ended) {
  if (!hasEventLoop())
    return runBlocking(command, ended);
  // Outlives this call if the application quits while waiting.
  struct Result {
    QEventLoop* loop = nullptr;
    bool hasEnded = false;
    bool isSuccess = false;
  };
  const auto result = std::make_shared<Result>();
  const QProcess* process = follow(command, [ended, result](const QProcess& of) {
    ended();
    result->hasEnded = true;
    result->isSuccess = succeeded(of);
    if (result->loop != nullptr)
      result->loop->quit();
  });
  if (process == nullptr)
    return false;
  QEventLoop loop;
  result->loop = &loop;
  if (!result->hasEnded)
    loop.exec(QEventLoop::ExcludeUserInputEvents);
  result->loop = nullptr;
  if (!result->hasEnded)
    ULO_LOG_ERROR("The command %s is still under way", command.first().toUtf8().constData());
  return result->isSuccess;
}

}  // namespace ulo
