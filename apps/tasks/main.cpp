// ulo-tasks [FILE...]: the task list. Imports the calendar files.

#include "ZApplication.h"
#include "ZTASK_ENG_Model.h"
#include "gate.h"
#include "standard_descriptors.h"
#include "ulo/data_directory.h"
#include "ulo/log_sink.h"
#include "window/end_signals.h"
#include "window/task_window.h"
#include "window_program.h"

#include <QFile>
#include <QScreen>

#include <csignal>
#include <string>

namespace {

enum Exit : int { exitDone = 0, exitLocked = 1 };

// The whole screen of a handset, or a part of a larger screen.
QRect placeOn(const QRect& room) {
  constexpr QSize wanted(480, 720);
  QRect place(QPoint(0, 0), wanted.boundedTo(room.size()));
  if (room.width() < 2 * wanted.width())
    place.setSize(room.size());
  place.moveCenter(room.center());
  return place;
}

ulo::ProgramHelp help() {
  return {
      "ulo-tasks",
      "keep a to-do list",
      "[FILE...]",
      {{"FILE", "A vCalendar 1.0 or iCalendar 2.0 file, whose to-dos are imported at the start"}},
      {{exitDone, "done"},
       {exitLocked, "the application lock denied access, or the output can't be written"},
       {ulo::exitWrongCommandLine, "the command line is wrong"}},
      "Shows the list of tasks, for keys, touch and mouse, in English, German or Simplified\n"
      "Chinese. Type to search, press Space to complete a task, Delete to delete it. While the\n"
      "program runs, the alarms of tasks are shown as desktop notifications, or in its window\n"
      "if there is no notification server. Changes made by other programs on the same device\n"
      "appear by themselves.\n"
      "\n"
      "A to-do of iCalendar 2.0 whose UID is the UUID of a stored task updates that task. All\n"
      "other to-dos are added.\n"
      "\n"
      "The files and the environment are described in ulotaskengine(5).\n"
      "Examples:\n"
      "  ulo-tasks\n"
      "  ulo-tasks phone.vcs tasks.ics\n",
      {"ulotask(1)", "ulo-action(1)", "ulotaskengine(5)"}};
}

// Attachments of messages are created in the directory that the environment names, otherwise in the
// cache directory.
void chooseAttachmentDirectory() {
  constexpr char variable[] = "ULO_LOCAL_APP_WRITE_PATH";
  const std::string directory = ulo::userDirectory("XDG_CACHE_HOME", ".cache") + "/attachments";
  if (qgetenv(variable).isEmpty() && ulo::makeUserDirectory(directory))
    qputenv(variable, QByteArray::fromStdString(directory));
}

}  // namespace

int main(int count, char** arguments) {
  ulo::occupyStandardDescriptors();
  // If a limit on the size of files is reached, a write fails instead.
  std::signal(SIGXFSZ, SIG_IGN);
  ulo::WindowProgram program(help(), count, arguments);
  if (program.end())
    return *program.end();
  ZApplication application(program.toolkitCount(), program.toolkitArguments());
  QApplication::setDesktopFileName(QStringLiteral("ulo-tasks"));
  ulo::openLogSink("ulo-tasks");
  if (!ulo::passesLock(ZTASK_ENG_Model::identifier, "ulo-tasks"))
    return exitLocked;
  chooseAttachmentDirectory();
  ZTASK_ENG_Model store;
  tasks::TaskWindow window(store);
  const tasks::EndSignals endSignals(window);
  window.setGeometry(placeOn(QGuiApplication::primaryScreen()->availableGeometry()));
  window.show();
  QStringList files;
  for (const std::string& file : program.operands())
    files.append(QFile::decodeName(file.c_str()));
  window.import(files);
  return QApplication::exec();
}
