// The plug-in that saves or shows a received to-do for an action framework.
#pragma once

#include "ActionInterface.h"
#include "ulo/export.h"

#include <QObject>

class ZTASK_ENG_Task;

// Its actions are "TASK_SAVE", which stores the first to-do of a file and tells the user, and
// "TASK_VIEW", which only shows the to-do. Use it in the main thread, while no other thread reads
// or writes calendar text (see ZVtodoParser).
class ULO_EXPORT TASK_UI_SDAction : public QObject, public ActionInterface {
  Q_OBJECT

public:
  TASK_UI_SDAction();
  ~TASK_UI_SDAction() override;

  // Supports QUnknownInterface and ActionInterface.
  unsigned long queryInterface(const QUuid& wanted, QUnknownInterface** answer) override;
  // Returns the number of references before the call.
  unsigned long addRef() override;
  // Returns the number of references left.
  unsigned long release() override;

  // Returns false if the user does not pass the application lock, the file cannot be read or
  // contains no to-do, or the store rejects the to-do. Unknown actions count as done.
  bool invokeAction(const QString& action, const SDData& data) override;
  QUuid getUuid() override;

private:
  friend struct SDActionAccess;  // for the tests

  bool act(const QString& action, const SDData& data);
  bool save(const QByteArray& bytes, const std::string& text);
  bool view(const std::string& text);
  void popupVTodoAddedDialog(unsigned int uid);
  void showVTodoView(ZTASK_ENG_Task& task);

  QUnknownInterface* held_ = nullptr;  // owned for one action, released when it ends
  unsigned int references_ = 0;
};

// The entry point of the framework. Returns a plug-in with one reference, or null.
extern "C" ULO_EXPORT QUnknownInterface* ucm_instantiate();
