// The base of the task list's screens: the store they work on, and requests to switch screens.
#pragma once

#include "ZKbMainWidget.h"
#include "ZTASK_ENG_Task.h"
#include "ulo/export.h"

class ZTASK_ENG_Model;

class ULO_EXPORT TASK_UI_View : public ZKbMainWidget {
  Q_OBJECT

public:
  enum TASK_VIEW_TYPE : int {
    TASK_LIST_VIEW = 0,
    TASK_FORM_VIEW = 2,
    TASK_DETAIL_VIEW = 3,
  };
  Q_ENUM(TASK_VIEW_TYPE)

  TASK_UI_View(QWidget* parent, const char* name, unsigned int flags);
  ~TASK_UI_View() override;

  // Sets the store, which must outlive the screen. Must be called before the screen uses a store.
  void setEngine(ZTASK_ENG_Model* engine) { engine_ = engine; }

Q_SIGNALS:
  // Requests the screen `to` in place of `from`, with the task to show or edit there, or null. The
  // sender owns the task: a receiver that needs it after the call must copy it.
  void changeView(TASK_UI_View::TASK_VIEW_TYPE from, TASK_UI_View::TASK_VIEW_TYPE to,
                  ZTASK_ENG_Task* task);
  // Asks the owner to delete the screen, but only after the current event.
  void disposeView(TASK_UI_View::TASK_VIEW_TYPE type);

protected:
  [[nodiscard]] ZTASK_ENG_Model* engine() const { return engine_; }

private:
  ZTASK_ENG_Model* engine_;  // uninitialized until setEngine
};
