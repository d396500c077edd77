#pragma once

#include "log_place.h"

// The engine's two ports of the platform log are shared by all stores of the process. The first
// store opens them, the first one destroyed closes them, and the next store opens them again.
void openLogPorts(LogPlace place = LogPlace::current());
void closeLogPorts(LogPlace place = LogPlace::current());
