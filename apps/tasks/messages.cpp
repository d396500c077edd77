#include "messages.h"

#include "RES_ICON_Reader.h"
#include "ZMessageDlg.h"
#include "ZTASK_ENG_Model.h"
#include "foreign_text.h"
#include "modal.h"
#include "task_dates.h"
#include "task_texts.h"
#include "ulo/texts.h"
#include "window/import.h"

#include <QFileInfo>

namespace tasks {

void tellNotStored(int code, QWidget* parent) {
  const bool full = code == TASK_ENG_MEMORY_FULL;
  const QString title = full ? ulo::text("TXT_RID_HEADER_MEMORY_FULL", "Memory Full")
                             : ulo::text("TXT_RID_HEADER_NOT_SAVED", "Not Saved");
  const QString words =
      full ? ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_CANNOT_BE_CREATED_PHONE_MEMORY_IS_FULL_"
                       "PLEASE_DELETE_SOME_FILES_TO_CREATE_SPACE_IN_MEMORY",
                       "Task cannot be created because phone memory is full. Please delete some "
                       "files to create space in memory.")
           : ulo::text("TXT_RID_INSTRUCTIONALTXT_TASK_NOT_SAVED", "The task could not be saved.");
  ulo::Modal<ZMessageDlg> message(title, words, ZMessageDlg::message, parent);
  message->setTitleIcon(RES_ICON_Reader::getIcon(QStringLiteral("alert_pop.gif"), true));
  message.exec();
}

QString nextDateText(TASK_ENG_Ical::NextDate next, const ZTASK_ENG_Task& task, const QDate& today) {
  if (next == TASK_ENG_Ical::lastDate)
    return ulo::text("TXT_RID_STANDARD_LAST_DATE", "Completed: this was the last date.");
  if (next != TASK_ENG_Ical::moved)
    return ulo::text("TXT_RID_STANDARD_NO_NEXT_DATE",
                     "Completed: the next date can't be computed.");
  if (!ulo::hasDate(task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE)))
    return ulo::text("TXT_RID_STANDARD_TASK_REPEATS", "The task repeats.");
  return ulo::text("FMT_RID_STANDARD_NEXT_DATE_1", "Next date: %1")
      .arg(dayText(task.getDateTime(ZTASK_ENG_Task::TASK_FIELD_DUE).date(), today));
}

QString importText(unsigned int stored, unsigned int all) {
  return ulo::text("FMT_RID_STANDARD_1_OF_2_IMPORTED", "%1 of %2 tasks imported\xe2\x80\xa6")
      .arg(stored)
      .arg(all);
}

QString importText(const ImportResult& result, bool isShown) {
  constexpr qsizetype nameLimit = 40;  // characters of a file's name
  QStringList parts;
  if (result.imported == 1)
    parts.append(ulo::text("TXT_RID_STANDARD_TASK_IMPORTED", "Task imported."));
  else if (result.imported > 1)
    parts.append(
        ulo::text("FMT_RID_STANDARD_1_TASKS_IMPORTED", "%1 tasks imported.").arg(result.imported));
  if (result.updated == 1)
    parts.append(ulo::text("TXT_RID_STANDARD_TASK_UPDATED", "Task updated."));
  else if (result.updated > 1)
    parts.append(
        ulo::text("FMT_RID_STANDARD_1_TASKS_UPDATED", "%1 tasks updated.").arg(result.updated));
  if (result.present > 0 && parts.isEmpty())
    parts.append(ulo::text("TXT_RID_STANDARD_NOTHING_NEW", "Nothing new in the file."));
  if (result.imported == 1 && !isShown)
    parts.append(
        ulo::text("TXT_RID_INSTRUCTIONALTXT_VIEW_WITHOUT_IT", "This view does not show it."));
  else if (result.imported > 1 && !isShown)
    parts.append(ulo::text("TXT_RID_INSTRUCTIONALTXT_VIEW_WITHOUT_ALL",
                           "This view does not show all of them."));
  if (result.failed)
    parts.append(
        ulo::text("TXT_RID_INSTRUCTIONALTXT_NOT_ALL_IMPORTED", "Not all tasks could be imported."));
  if (result.libraryMissing)
    parts.append(ulo::text("TXT_RID_INSTRUCTIONALTXT_VCALENDAR_NEEDS_LIBICAL",
                           "vCalendar files can't be read: libical (libical3) is not installed."));
  for (const QString& path : result.libraryMissing ? QStringList() : result.unread)
    parts.append(ulo::text("FMT_RID_INSTRUCTIONALTXT_NO_TASK_IN_1", "There is no task in %1.")
                     .arg(ulo::oneLine(QFileInfo(path).fileName(), nameLimit)));
  // Longer messages do not fit.
  constexpr qsizetype mostParts = 3;
  if (parts.size() > mostParts) {
    parts.resize(mostParts);
    parts.append(QStringLiteral("\u2026"));
  }
  return parts.join(u' ');
}

}  // namespace tasks
