// What applications ask of the security settings, in the library "libulosecuritysetup.so".
#pragma once

#include "export.h"

extern "C" {

// Non-zero when the user may use an application now. `applicationUuid` names it, in the form
// "{9a4cdb74-34ec-415e-ba36-b8c2a35d0071}", for the log; one lock guards all applications. Without
// a lock it answers at once. With one, a dialog asks for the code, and the answer is 0 when the
// user cancels it, when the lock's file is damaged, and where no dialog can be shown: outside of
// a QApplication's own thread. Each is logged. The integer has no meaning.
ULO_EXPORT int SETUP_SECURITY_Util_appLockCheck_modelUI(const char* applicationUuid, int reserved);

using SETUP_SECURITY_Util_appLockCheck_modelUI_t = int (*)(const char*, int);
}
