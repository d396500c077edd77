#pragma once

#include "log_place.h"

// The engine's two ports of the platform log belong to the whole process: the first store to be
// made opens them, the first to go closes them for all, and a later one opens them again.
void openLogPorts(LogPlace place = LogPlace::current());
void closeLogPorts(LogPlace place = LogPlace::current());
