#include "SETUP_SECURITY_Util.h"

#include "LockDialog.h"
#include "modal.h"
#include "module_log.h"

#include <QApplication>
#include <QThread>

namespace {

bool canShowDialogs() {
  const auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
  return application != nullptr && application->thread() == QThread::currentThread();
}

// Returns false and logs it unless the user enters the code.
bool askForCode(ulo::AppLock& lock, const char* application) {
  if (!canShowDialogs()) {
    ULO_LOG_ERROR("The lock of %s can't be opened: there is no application to ask in", application);
    return false;
  }
  // The parent window may be deleted while the dialog is open, which deletes the dialog, too.
  ulo::Modal<LockDialog> dialog(lock, QApplication::activeWindow());
  if (dialog.exec())
    return true;
  ULO_LOG_ERROR("The lock of %s was not opened", application);
  return false;
}

}  // namespace

int SETUP_SECURITY_Util_appLockCheck_modelUI(const char* applicationUuid, int) {
  const char* application = applicationUuid == nullptr ? "an application" : applicationUuid;
  ulo::AppLock lock;
  switch (lock.state()) {
  case ulo::AppLock::State::open:
    return 1;
  case ulo::AppLock::State::damaged:
    ULO_LOG_ERROR("%s stays closed: its lock is damaged", application);
    return 0;
  case ulo::AppLock::State::locked:
    break;
  }
  return askForCode(lock, application) ? 1 : 0;
}
