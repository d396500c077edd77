// The calls from the screens to the platform, which the linker redirects.

#include "screen_test.h"

#include "AM_ActionData.h"
#include "SHARE_Tool.h"
#include "TASK_ENG_SyncML.h"
#include "ZOptionsMenu.h"
#include "ZVtodoParser.h"
#include "export.h"

#include <cstring>

Platform* platform = nullptr;

namespace {

constexpr char lockLibrary[] = "libulosecuritysetup.so";
constexpr char lockFunction[] = "SETUP_SECURITY_Util_appLockCheck_modelUI";
char lockHandle;

int checkLock(const char* application, int mode) {
  platform->lockCalls.push_back(std::string(application) + ' ' + std::to_string(mode));
  return platform->lockAnswer;
}

}  // namespace

extern "C" {
void* __real_dlopen(const char* name, int flags);
ULO_EXPORT void* __wrap_dlopen(const char* name, int flags);
void* __wrap_dlopen(const char* name, int flags) {
  if (platform == nullptr || name == nullptr || std::strcmp(name, lockLibrary) != 0)
    return __real_dlopen(name, flags);
  if (!platform->hasLockLibrary)
    return nullptr;
  ++platform->librariesOpen;
  return &lockHandle;
}

void* __real_dlsym(void* handle, const char* name);
ULO_EXPORT void* __wrap_dlsym(void* handle, const char* name);
void* __wrap_dlsym(void* handle, const char* name) {
  if (handle != &lockHandle)
    return __real_dlsym(handle, name);
  return platform->hasLockFunction && std::strcmp(name, lockFunction) == 0
             ? reinterpret_cast<void*>(checkLock)
             : nullptr;
}

int __real_dlclose(void* handle);
ULO_EXPORT int __wrap_dlclose(void* handle);
int __wrap_dlclose(void* handle) {
  if (handle != &lockHandle)
    return __real_dlclose(handle);
  --platform->librariesOpen;
  return 0;
}

// AM_ActionData::invoke(bool)
ULO_EXPORT bool __wrap__ZN13AM_ActionData6invokeEb(AM_ActionData* request, bool wait);
bool __wrap__ZN13AM_ActionData6invokeEb(AM_ActionData* request, bool wait) {
  platform->launched.push_back(
      QStringLiteral("%1 %2 Files=%3 AutoDelete=%4 %5")
          .arg(request->openAppUuid(), request->action(), request->value(QStringLiteral("Files")),
               request->value(QStringLiteral("AutoDelete")), QLatin1String(wait ? "wait" : "go on"))
          .toStdString());
  return true;
}

// SHARE_Tool::shareByBt(const OBJECT_INFO&, const QArray<char>&)
ULO_EXPORT bool __wrap__ZN10SHARE_Tool9shareByBtERKNS_11OBJECT_INFOERK6QArrayIcE(
    const SHARE_Tool::OBJECT_INFO& info, const QArray<char>& data);
bool __wrap__ZN10SHARE_Tool9shareByBtERKNS_11OBJECT_INFOERK6QArrayIcE(
    const SHARE_Tool::OBJECT_INFO& info, const QArray<char>& data) {
  ++platform->shares;
  platform->sharedName = info.name;
  platform->sharedType = info.mimeType;
  platform->sharedBytes.assign(data.data(), data.size());
  return platform->shareAnswer;
}

// ZVtodoParser::readVtodo(const QCString&, QList<ZTASK_ENG_Task>&)
void __real__ZN12ZVtodoParser9readVtodoERK8QCStringR5QListI14ZTASK_ENG_TaskE(
    ZVtodoParser* parser, const QCString& text, QList<ZTASK_ENG_Task>& tasks);
ULO_EXPORT void __wrap__ZN12ZVtodoParser9readVtodoERK8QCStringR5QListI14ZTASK_ENG_TaskE(
    ZVtodoParser* parser, const QCString& text, QList<ZTASK_ENG_Task>& tasks);
void __wrap__ZN12ZVtodoParser9readVtodoERK8QCStringR5QListI14ZTASK_ENG_TaskE(
    ZVtodoParser* parser, const QCString& text, QList<ZTASK_ENG_Task>& tasks) {
  if (platform->nullTask)
    tasks.append(nullptr);
  else
    __real__ZN12ZVtodoParser9readVtodoERK8QCStringR5QListI14ZTASK_ENG_TaskE(parser, text, tasks);
}

// TASK_ENG_SyncML::addEvent(const std::string&, unsigned int&)
int __real__ZN15TASK_ENG_SyncML8addEventERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERj(
    TASK_ENG_SyncML* adaptor, const std::string& text, unsigned int& uid);
ULO_EXPORT int
__wrap__ZN15TASK_ENG_SyncML8addEventERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERj(
    TASK_ENG_SyncML* adaptor, const std::string& text, unsigned int& uid);
int __wrap__ZN15TASK_ENG_SyncML8addEventERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERj(
    TASK_ENG_SyncML* adaptor, const std::string& text, unsigned int& uid) {
  return platform->addAnswer >= 0
             ? platform->addAnswer
             : __real__ZN15TASK_ENG_SyncML8addEventERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERj(
                   adaptor, text, uid);
}

// ZOptionsMenu::getAllItemIds() const
QValueList<int> __real__ZNK12ZOptionsMenu13getAllItemIdsEv(const ZOptionsMenu* menu);
ULO_EXPORT QValueList<int> __wrap__ZNK12ZOptionsMenu13getAllItemIdsEv(const ZOptionsMenu* menu);
QValueList<int> __wrap__ZNK12ZOptionsMenu13getAllItemIdsEv(const ZOptionsMenu* menu) {
  QValueList<int> ids = __real__ZNK12ZOptionsMenu13getAllItemIdsEv(menu);
  if (platform->strangeMenuItem != 0)
    ids.append(platform->strangeMenuItem);
  return ids;
}
}
