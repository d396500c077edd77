// Interface of the security settings for applications, in the library "libulosecuritysetup.so".
#pragma once

#include "ulo/export.h"

extern "C" {

// Returns nonzero if the user may use an application now. `applicationUuid` identifies it in the
// log, in the form "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}"; one lock guards all applications.
// Returns immediately if there is no lock. Otherwise a dialog asks for the code, and the function
// returns 0 if the user cancels it, if the lock's file is damaged, or if no dialog can be shown,
// that is outside the thread of a QApplication. Each of these is logged. `reserved` is ignored.
ULO_EXPORT int SETUP_SECURITY_Util_appLockCheck_modelUI(const char* applicationUuid, int reserved);

using SETUP_SECURITY_Util_appLockCheck_modelUI_t = int (*)(const char*, int);
}
