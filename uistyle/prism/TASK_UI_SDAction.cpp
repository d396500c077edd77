// The log texts in this file are contracts: see docs/compatibility.md.
#include "TASK_UI_SDAction.h"

#include "TASK_ENG_SyncML.h"
#include "TASK_UI_DetailView.h"
#include "lock_check.h"
#include "module_log.h"
#include "save_messages.h"

#include <QFile>

#include <utility>

void reportSaveFailure(int code) {
  ULO_LOG_ERROR("add VTodo failed! the ret is %d", code);
  if (code == TASK_SYNCML_NOMEMORY)
    ulo::showMemoryFull();
}

TASK_UI_SDAction::TASK_UI_SDAction() = default;
TASK_UI_SDAction::~TASK_UI_SDAction() = default;

unsigned long TASK_UI_SDAction::queryInterface(const QUuid& wanted, QUnknownInterface** answer) {
  ULO_LOG_ERROR("Enter queryInterface");
  *answer = nullptr;
  if (wanted != QUnknownInterface::uuid && wanted != ActionInterface::uuid)
    return QE_NOINTERFACE;
  *answer = static_cast<ActionInterface*>(this);
  (*answer)->addRef();
  return QS_OK;
}

unsigned long TASK_UI_SDAction::addRef() {
  return references_++;
}

unsigned long TASK_UI_SDAction::release() {
  const unsigned int left = --references_;
  if (left == 0)
    delete this;
  return left;
}

QUuid TASK_UI_SDAction::getUuid() {
  return ActionInterface::uuid;
}

bool TASK_UI_SDAction::invokeAction(const QString& action, const SDData& data) {
  ULO_LOG_ERROR("Entering invokeAction");
  const bool done = act(action, data);
  if (QUnknownInterface* held = std::exchange(held_, nullptr); held != nullptr)
    held->release();
  if (done)
    ULO_LOG_ERROR("Leaving invoke Action");
  return done;
}

bool TASK_UI_SDAction::act(const QString& action, const SDData& data) {
  if (appLockCheck() == 0) {
    ULO_LOG_ERROR("for applock");
    return false;
  }
  QFile file(data.fileName);
  if (!file.open(QIODevice::ReadOnly)) {
    ULO_LOG_ERROR("Can not open vtodo file: %s\n", data.fileName.toUtf8().constData());
    return false;
  }
  const QByteArray bytes = file.readAll();
  file.close();
  // Latin-1 keeps the bytes of the file.
  const QByteArray text = QString::fromLatin1(bytes).toLatin1();
  moduleLog(logDump, "(%s:%d)String passed to parser: \n%s", __FILE__, __LINE__, text.constData());
  if (action == QLatin1String("TASK_SAVE"))
    return save(bytes, text.toStdString());
  if (action == QLatin1String("TASK_VIEW"))
    return view(text.toStdString());
  return true;
}

bool TASK_UI_SDAction::save(const QByteArray& bytes, const std::string& text) {
  ULO_LOG_ERROR("Save a vTodo");
  TASK_ENG_SyncML adaptor;
  unsigned int uid = 0;
  const int code = adaptor.addEvent(text, uid);
  ULO_LOG_ERROR("after add to db the vtodo is %s", bytes.constData());
  if (code == TASK_SYNCML_OK) {
    popupVTodoAddedDialog(uid);
    return true;
  }
  reportSaveFailure(code);
  return false;
}

bool TASK_UI_SDAction::view(const std::string& text) {
  ULO_LOG_ERROR("View a vTodo");
  TASK_ENG_SyncML adaptor;
  ZTASK_ENG_Task task;
  const bool read = adaptor.stringToTask(text, task);
  if (read)
    showVTodoView(task);
  else
    ULO_LOG_ERROR("show VTodo failed! the ret is %d", static_cast<int>(read));
  return read;
}

void TASK_UI_SDAction::popupVTodoAddedDialog(unsigned int uid) {
  ZTASK_ENG_Model store;
  ZTASK_ENG_Task task;
  if (store.getTask(uid, task) != TASK_ENG_OK) {
    ULO_LOG_ERROR("for model error");
    return;
  }
  ulo::showSavedTask(task.getString(ZTASK_ENG_Task::TASK_FIELD_SUMMARY));
}

void TASK_UI_SDAction::showVTodoView(ZTASK_ENG_Task& task) {
  auto* view = new TASK_UI_DetailView(nullptr, nullptr, 0);
  view->openStandaloneView(task);
  view->show();
}

QUnknownInterface* ucm_instantiate() {
  auto* plugin = new TASK_UI_SDAction;
  QUnknownInterface* answer = nullptr;
  if (plugin->queryInterface(QUnknownInterface::uuid, &answer) != QS_OK) {
    delete plugin;
    return nullptr;
  }
  return answer;
}
