// ulo-tasks [FILE...]: the task list. Imports the calendar files.

#include "ZApplication.h"
#include "ZTASK_ENG_Model.h"
#include "gate.h"
#include "ulo/data_directory.h"
#include "ulo/log_sink.h"
#include "window/task_window.h"

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
  // If a limit on the size of files is reached, a write fails instead.
  std::signal(SIGXFSZ, SIG_IGN);
  ZApplication application(count, arguments);
  QApplication::setDesktopFileName(QStringLiteral("ulo-tasks"));
  ulo::openLogSink("ulo-tasks");
  if (!ulo::passesLock(ZTASK_ENG_Model::identifier, "ulo-tasks"))
    return exitLocked;
  chooseAttachmentDirectory();
  ZTASK_ENG_Model store;
  tasks::TaskWindow window(store);
  window.setGeometry(placeOn(QGuiApplication::primaryScreen()->availableGeometry()));
  window.show();
  window.import(QApplication::arguments().mid(1));
  return QApplication::exec();
}
