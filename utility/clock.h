#pragma once

#include <QDateTime>

// Returns the current local date and time. All parts of the engine use this function. It is linked
// as a separate object, so that test programs can define it themselves.
QDateTime engineNow();
