// What the user is told when a received to-do has been saved, or could not be.
#pragma once

#include "RES_ICON_Reader.h"
#include "ZMessageDlg.h"
#include "ulo/texts.h"

#include <QString>

namespace ulo {

inline void showMessage(const QString& title, const QString& text, const char* icon) {
  ZMessageDlg dialog(title, text, ZMessageDlg::message);
  dialog.setTitleIcon(RES_ICON_Reader::getIcon(QString::fromLatin1(icon), true));
  dialog.exec();
}

inline void showSaved(const QString& message) {
  showMessage(text("TXT_RID_HEADER_SAVED_TO_TASK_LIST", "Saved to Task List"), message,
              "save_pop.gif");
}

inline void showSavedTask(const QString& summary) {
  showSaved(
      text("FMT_RID_INSTRUCTIONALTXT_1_SAVED_TO_TASK_LIST", "%1 saved to Task List").arg(summary));
}

inline void showMemoryFull() {
  showMessage(text("TXT_RID_HEADER_MEMORY_FULL", "Memory Full"),
              text("TXT_RID_INSTRUCTIONALTXT_TASK_CANNOT_BE_CREATED_PHONE_MEMORY_IS_FULL_PLEASE_"
                   "DELETE_SOME_FILES_TO_CREATE_SPACE_IN_MEMORY",
                   "Task cannot be created because phone memory is full. Please delete some files "
                   "to create space in memory."),
              "alert_pop.gif");
}

}  // namespace ulo

// Reports that a to-do could not be saved, with this code of TASK_SyncML_Result: logs it, and tells
// the user if memory is full.
void reportSaveFailure(int code);
