#include "ical_action.h"

#include "TASK_ENG_Ical.h"
#include "TASK_UI_DetailView.h"
#include "ZTASK_ENG_Model.h"
#include "gate.h"
#include "module_log.h"
#include "save_messages.h"
#include "take_in_ical.h"
#include "ulo/texts.h"
#include "write_transaction.h"

#include <vector>

namespace {

using Todos = std::vector<TASK_ENG_Ical::Todo>;

QString summaryOf(const TASK_ENG_Ical::Todo& todo) {
  return todo.task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY);
}

// Returns a result of the store; unless it is TASK_ENG_OK, nothing was stored.
int store(const Todos& todos) {
  ZTASK_ENG_Model model;
  ulo::WriteTransaction transaction;
  if (!transaction)
    return ulo::storeCode(transaction.result());
  std::vector<QString> uuids;
  for (const TASK_ENG_Ical::Todo& todo : todos)
    uuids.push_back(todo.task.getString(ZTASK_ENG_Task::TASK_FIELD_UUID));
  ulo::IcalIntake intake(model);
  if (const int code = intake.find(uuids); code != TASK_ENG_OK)
    return code;
  for (const TASK_ENG_Ical::Todo& todo : todos) {
    ulo::TakenIn taken;
    if (const int code = intake.take(todo, taken); code != TASK_ENG_OK)
      return code;
  }
  return ulo::storeCode(transaction.commit());
}

bool save(const Todos& todos) {
  const int code = store(todos);
  if (code == TASK_ENG_OK) {
    if (todos.size() == 1)
      ulo::showSavedTask(summaryOf(todos.front()));
    else
      ulo::showSaved(
          ulo::text("FMT_RID_INSTRUCTIONALTXT_1_TASKS_SAVED", "%1 tasks saved to Task List")
              .arg(todos.size()));
    return true;
  }
  ULO_LOG_ERROR("the to-dos can't be stored, ret = %d", code);
  if (code == TASK_ENG_MEMORY_FULL)
    ulo::showMemoryFull();
  return false;
}

// The screen closes and deletes itself.
void view(TASK_ENG_Ical::Todo todo) {
  auto* screen = new TASK_UI_DetailView(nullptr, nullptr, 0);
  screen->openStandaloneView(todo.task);
  screen->show();
}

}  // namespace

bool actOnIcalendar(const QString& action, const QByteArray& text) {
  if (!ulo::passesLock(ZTASK_ENG_Model::identifier, "ulo-action"))
    return false;
  TASK_ENG_Ical::Report report;
  const Todos todos = TASK_ENG_Ical::read(text, &report);
  if (todos.empty()) {
    ULO_LOG_ERROR("the text can't be read, failure = %d", static_cast<int>(report.failure));
    return false;
  }
  if (action == QLatin1String("TASK_SAVE"))
    return save(todos);
  if (action == QLatin1String("TASK_VIEW"))
    view(todos.front());
  return true;
}
