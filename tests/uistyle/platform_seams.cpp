// Stubs for the parts of the platform that the screens call. The linker redirects the calls to the
// loader.

#include "screen_test.h"

#include "AM_ActionData.h"
#include "SHARE_Tool.h"
#include "ZOptionsMenu.h"
#include "ulo/export.h"

#include <cstring>

Platform* platform = nullptr;

namespace {

constexpr char lockLibrary[] = "libulosecuritysetup.so";
constexpr char lockFunction[] = "SETUP_SECURITY_Util_appLockCheck_modelUI";
char lockHandle;

int checkLock(const char* application, int mode) {
  platform->lockCalls.push_back(std::string(application) + ' ' + std::to_string(mode));
  return platform->lockResult;
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
}

// The following functions replace those of the platform libraries.

bool AM_ActionData::invoke(bool wait) {
  platform->launched.push_back(QStringLiteral("%1 %2 Files=%3 AutoDelete=%4 %5")
                                   .arg(openAppUuid(), action(), value(QStringLiteral("Files")),
                                        value(QStringLiteral("AutoDelete")),
                                        QLatin1String(wait ? "wait" : "go on"))
                                   .toStdString());
  return true;
}

bool SHARE_Tool::shareByBt(const OBJECT_INFO& info, const QArray<char>& data) {
  ++platform->shares;
  platform->sharedName = info.name;
  platform->sharedType = info.mimeType;
  platform->sharedBytes.assign(data.data(), data.size());
  return platform->shareResult;
}

QValueList<int> ZOptionsMenu::getAllItemIds() const {
  QValueList<int> ids = ids_;
  if (platform->unknownMenuItem != 0)
    ids.append(platform->unknownMenuItem);
  return ids;
}
