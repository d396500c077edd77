// ulo-action ACTION FILE: performs an action on a file, like an action framework: loads the task
// engine's library, requests its plug-in, and invokes the action. iCalendar 2.0 files, which the
// plug-in does not read, are handled here.

#include "ActionInterface.h"
#include "TASK_ENG_Ical.h"
#include "ZApplication.h"
#include "ZMessageDlg.h"
#include "ical_action.h"
#include "standard_descriptors.h"
#include "ulo/log_sink.h"
#include "ulo/texts.h"
#include "vcal_guard.h"
#include "window_program.h"

#include <QFile>
#include <QWidget>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <memory>
#include <string>

namespace {

enum Exit : int { exitDone = 0, exitNotDone = 1, exitNoPlugin = 3 };

ulo::ProgramHelp help() {
  return {
      "ulo-action",
      "save or show the to-do of a calendar file",
      "ACTION FILE",
      {{"ACTION", "TASK_SAVE to store the to-do of the file, or TASK_VIEW to show it"},
       {"FILE", "A vCalendar 1.0 or iCalendar 2.0 file"}},
      {{exitDone, "done, also for an unknown action, which has no effect"},
       {exitNotDone, "the action failed, the application lock denied access, or the output can't "
                     "be written"},
       {ulo::exitWrongCommandLine, "the command line is wrong"},
       {exitNoPlugin, "the task engine's library can't be loaded"}},
      "Performs an action of the task engine's plug-in on a file, and ends when the user has\n"
      "closed the screen that shows the result. Action frameworks and file managers call it\n"
      "when a to-do has been received. TASK_SAVE stores the first to-do of a vCalendar 1.0 file,\n"
      "or all of an iCalendar 2.0 file, and says so; TASK_VIEW shows the first one.\n"
      "\n"
      "The files and the environment are described in ulotaskengine(5).\n"
      "Examples:\n"
      "  ulo-action TASK_SAVE item.vcs\n"
      "  ulo-action TASK_VIEW item.ics\n",
      {"ulotask(1)", "ulo-tasks(1)", "ulotaskengine(5)"}};
}

struct ReleaseInterface {
  void operator()(QUnknownInterface* interface) const { interface->release(); }
};
template <typename Interface> using Held = std::unique_ptr<Interface, ReleaseInterface>;

// Returns null, after a message on standard error, if there is no plug-in.
Held<ActionInterface> loadPlugin() {
  // The library stays loaded: it has the code of the screens that an action shows.
  void* library = dlopen(ULO_ENGINE_LIBRARY, RTLD_NOW);
  const auto instantiate =
      library == nullptr ? nullptr
                         : reinterpret_cast<ucm_instantiate_t>(dlsym(library, "ucm_instantiate"));
  if (instantiate == nullptr) {
    static_cast<void>(std::fprintf(stderr, "ulo-action: %s\n", dlerror()));
    return nullptr;
  }
  const Held<QUnknownInterface> plugin(instantiate());
  QUnknownInterface* action = nullptr;
  if (plugin == nullptr || plugin->queryInterface(ActionInterface::uuid, &action) != QS_OK) {
    static_cast<void>(std::fprintf(stderr, "ulo-action: the plug-in has no actions\n"));
    return nullptr;
  }
  return Held<ActionInterface>(static_cast<ActionInterface*>(action));
}

// Returns the bytes of an iCalendar 2.0 file; nothing for any other file, for one that cannot be
// read and for one of more than 64 MB.
QByteArray readIcalendar(const QString& path) {
  constexpr qint64 limit = 64LL * 1024 * 1024;
  constexpr qint64 head = 4096;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || !TASK_ENG_Ical::isIcalendar(file.peek(head)))
    return {};
  const QByteArray text = file.read(limit + 1);
  return text.size() > limit ? QByteArray() : text;
}

// An action fails without the vObject library. Says so on standard error, and to the user of a
// desktop in a message.
void reportMissingLibrary() {
  const std::string failure = ulo::vObjectLibraryFailure();
  if (failure.empty())
    return;
  static_cast<void>(std::fprintf(stderr, "ulo-action: %s\n", failure.c_str()));
  ZMessageDlg dialog(
      ulo::text("TXT_RID_HEADER_VCALENDAR", "vCalendar"),
      ulo::text("TXT_RID_INSTRUCTIONALTXT_VCALENDAR_NEEDS_LIBICAL",
                "vCalendar files can't be read: libical (libical3) is not installed."),
      ZMessageDlg::message);
  dialog.exec();
}

bool showsWindow() {
  const QWidgetList windows = QApplication::topLevelWidgets();
  return std::any_of(windows.begin(), windows.end(),
                     [](const QWidget* window) { return window->isVisible(); });
}

}  // namespace

int main(int count, char** arguments) {
  ulo::occupyStandardDescriptors();
  // If a limit on the size of files is reached, a write fails instead.
  std::signal(SIGXFSZ, SIG_IGN);
  ulo::WindowProgram program(help(), count, arguments);
  if (program.end())
    return *program.end();
  if (program.operands().size() != 2)
    return program.refuse("ACTION and FILE are required");
  ZApplication application(program.toolkitCount(), program.toolkitArguments());
  ulo::openLogSink("ulo-action");
  const QString action = QString::fromStdString(program.operands()[0]);
  const QString path = QFile::decodeName(program.operands()[1].c_str());
  if (const QByteArray text = readIcalendar(path); !text.isEmpty()) {
    if (!actOnIcalendar(action, text))
      return exitNotDone;
  } else {
    const Held<ActionInterface> plugin = loadPlugin();
    if (plugin == nullptr)
      return exitNoPlugin;
    SDData data;
    data.fileName = path;
    if (!plugin->invokeAction(action, data)) {
      reportMissingLibrary();
      return exitNotDone;
    }
  }
  // Screens stay until the user closes them.
  if (showsWindow())
    QApplication::exec();
  return exitDone;
}
