// The plug-in by which an action framework saves or shows a received to-do.
#pragma once

#include "ActionInterface.h"
#include "export.h"

#include <QObject>

class ZTASK_ENG_Task;

// Its actions are "TASK_SAVE", which stores the first to-do of a file and says so, and "TASK_VIEW",
// which only shows it.
class ULO_EXPORT TASK_UI_SDAction : public QObject, public ActionInterface {
  Q_OBJECT

public:
  TASK_UI_SDAction();
  ~TASK_UI_SDAction() override;

  // Knows QUnknownInterface and ActionInterface.
  unsigned long queryInterface(const QUuid& wanted, QUnknownInterface** answer) override;
  // The number of references before this one.
  unsigned long addRef() override;
  // The number of references left.
  unsigned long release() override;

  // False when the user doesn't pass the application lock, the file can't be read, it holds no
  // to-do or the store doesn't take it. An action of another name counts as done.
  bool invokeAction(const QString& action, const SDData& data) override;
  QUuid getUuid() override;

private:
  friend struct SDActionAccess;  // of the tests

  bool act(const QString& action, const SDData& data);
  bool save(const QByteArray& bytes, const std::string& text);
  bool view(const std::string& text);
  void popupVTodoAddedDialog(unsigned int uid);
  void showVTodoView(ZTASK_ENG_Task& task);

  QUnknownInterface* held_ = nullptr;  // the framework's, for one action; released when that ends
  unsigned int references_ = 0;
};

// What the framework calls: a plug-in with one reference, or null.
extern "C" ULO_EXPORT QUnknownInterface* ucm_instantiate();
