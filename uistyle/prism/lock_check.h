#pragma once

// Non-zero when the user may use the task application now: asks the platform's lock, which may ask
// the user for a code. 0 when it refuses or is not there.
int appLockCheck();
