#pragma once

// Asks the application lock, which may ask the user for a code. Returns a value other than 0 if the
// user may use the task application now, and 0 if not or if the lock is not installed.
// Defined in TASK_UI_DetailView.cpp, which its log lines name.
int appLockCheck();
