// ulo-tasks [FILE...]: the owner's task list. Calendar files that are named are taken into it.

#include "SETUP_SECURITY_Util.h"

#include "ZApplication.h"
#include "ZTASK_ENG_Model.h"
#include "log_sink.h"
#include "task_window.h"

#include <QScreen>

#include <cstdio>
#include <dlfcn.h>

namespace {

enum Exit : int { exitDone = 0, exitLocked = 1 };

// Whether the user may see the tasks: asks the platform's lock, which may ask for a code. Without
// the lock nobody is let in.
bool passesLock() {
  void* library = dlopen("libulosecuritysetup.so", RTLD_LAZY);
  const auto check = library == nullptr
                         ? nullptr
                         : reinterpret_cast<SETUP_SECURITY_Util_appLockCheck_modelUI_t>(
                               dlsym(library, "SETUP_SECURITY_Util_appLockCheck_modelUI"));
  if (check == nullptr) {
    static_cast<void>(
        std::fprintf(stderr, "ulo-tasks: the application lock is missing: %s\n", dlerror()));
    return false;
  }
  return check("{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}", 1) != 0;
}

// A handset's whole screen, or a part of a larger one.
QRect placeOn(const QRect& room) {
  constexpr QSize wanted(480, 720);
  QRect place(QPoint(0, 0), wanted.boundedTo(room.size()));
  if (room.width() < 2 * wanted.width())
    place.setSize(room.size());
  place.moveCenter(room.center());
  return place;
}

}  // namespace

int main(int count, char** arguments) {
  ZApplication application(count, arguments);
  QApplication::setDesktopFileName(QStringLiteral("ulo-tasks"));
  ulo::openLogSink("ulo-tasks");
  if (!passesLock())
    return exitLocked;
  ZTASK_ENG_Model store;
  tasks::TaskWindow window(store);
  window.setGeometry(placeOn(QGuiApplication::primaryScreen()->availableGeometry()));
  window.show();
  window.import(QApplication::arguments().mid(1));
  return QApplication::exec();
}
