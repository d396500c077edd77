// ulo-tasks [FILE...]: the owner's task list. Calendar files that are named are taken into it.

#include "ZApplication.h"
#include "ZTASK_ENG_Model.h"
#include "data_directory.h"
#include "log_sink.h"
#include "window/lock_gate.h"
#include "window/task_window.h"

#include <QScreen>

#include <csignal>
#include <string>

namespace {

enum Exit : int { exitDone = 0, exitLocked = 1 };

// A handset's whole screen, or a part of a larger one.
QRect placeOn(const QRect& room) {
  constexpr QSize wanted(480, 720);
  QRect place(QPoint(0, 0), wanted.boundedTo(room.size()));
  if (room.width() < 2 * wanted.width())
    place.setSize(room.size());
  place.moveCenter(room.center());
  return place;
}

// Files that are attached to messages are made where the environment says, else among what may go
// at any time.
void chooseAttachmentDirectory() {
  constexpr char variable[] = "ULO_LOCAL_APP_WRITE_PATH";
  const std::string directory = ulo::userDirectory("XDG_CACHE_HOME", ".cache") + "/attachments";
  if (qgetenv(variable).isEmpty() && ulo::makeUserDirectory(directory))
    qputenv(variable, QByteArray::fromStdString(directory));
}

}  // namespace

int main(int count, char** arguments) {
  // A limit on the size of files shows as a failed write.
  std::signal(SIGXFSZ, SIG_IGN);
  ZApplication application(count, arguments);
  QApplication::setDesktopFileName(QStringLiteral("ulo-tasks"));
  ulo::openLogSink("ulo-tasks");
  if (!tasks::passesLock())
    return exitLocked;
  chooseAttachmentDirectory();
  ZTASK_ENG_Model store;
  tasks::TaskWindow window(store);
  window.setGeometry(placeOn(QGuiApplication::primaryScreen()->availableGeometry()));
  window.show();
  window.import(QApplication::arguments().mid(1));
  return QApplication::exec();
}
