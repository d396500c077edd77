#include "list/share_task.h"

#include "TASK_UI_DetailView.h"
#include "foreign_text.h"
#include "message_composer.h"
#include "module_log.h"
#include "stored_text.h"
#include "vcal_guard.h"

#include <QDateTime>
#include <QFile>

#include <string>

namespace tasks {

namespace {

// Sends a calendar file by the message composer, which deletes it. Returns false if the file cannot
// be written.
bool sendFile(const QString& summary, const QByteArray& text) {
  constexpr qsizetype nameLength = 20;
  QString name = ulo::wholeLetters(summary, nameLength).replace(u'/', u'_');
  if (!name.isEmpty())
    name += u'-';
  name += QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
  const QString path =
      QFile::decodeName(qgetenv("ULO_LOCAL_APP_WRITE_PATH")) + u'/' + name + QStringLiteral(".ics");
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.flush()) {
    ULO_LOG_ERROR("the attachment %s can't be written", path.toUtf8().constData());
    file.remove();
    return false;
  }
  file.close();
  ulo::composeMessage(path);
  return true;
}

// Returns true if the task came as iCalendar text and has been sent with it.
bool sendIcalendar(const ZTASK_ENG_Task& task) {
  QByteArray text;
  if (ulo::readText(task.getUINT32(ZTASK_ENG_Task::TASK_FIELD_UID), text) != TASK_ENG_OK ||
      text.isEmpty() || ulo::currentText(task, text) != TASK_ENG_OK)
    return false;
  return sendFile(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY), text);
}

}  // namespace

bool shareTask(ZTASK_ENG_Model& store, ZTASK_ENG_Task& task, ShareBy way) {
  if (way == ShareBy::message && sendIcalendar(task))
    return true;
  if (const std::string failure = ulo::vObjectLibraryFailure(); !failure.empty()) {
    ULO_LOG_ERROR("the task isn't sent: %s", failure.c_str());
    return false;
  }
  TASK_UI_DetailView view(nullptr, nullptr, 0);
  view.setEngine(&store);
  view.openView(&task);
  if (way == ShareBy::bluetooth)
    view.sendToBluetooth();
  else
    view.sendToMessage();
  return true;
}

}  // namespace tasks
