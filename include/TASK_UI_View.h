// What the screens of the task list have in common: the store that they work on, and the wish to
// give way to another screen.
#pragma once

#include "ZKbMainWidget.h"
#include "ZTASK_ENG_Task.h"
#include "export.h"

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

  // The store must outlive the screen. Required before anything on the screen reaches for it.
  void setEngine(ZTASK_ENG_Model* engine) { engine_ = engine; }

Q_SIGNALS:
  // Asks for the screen `to` in the place of `from`, with the task to show or edit there; null for
  // none. The task is the sender's: who needs it for longer than the call copies it.
  void changeView(TASK_UI_View::TASK_VIEW_TYPE from, TASK_UI_View::TASK_VIEW_TYPE to,
                  ZTASK_ENG_Task* task);
  // Asks the owner to destroy the screen, after the event that it is sent from.
  void disposeView(TASK_UI_View::TASK_VIEW_TYPE type);

protected:
  [[nodiscard]] ZTASK_ENG_Model* engine() const { return engine_; }

private:
  ZTASK_ENG_Model* engine_;  // set by setEngine alone
};
