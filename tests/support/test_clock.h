#pragma once

#include <QDateTime>

// Replaces the engine's clock in a test program that links ulotaskengine_objects and
// ulo_test_clock: the time is `now` until it is set again. An invalid date-time restores the real
// clock, which is also the initial state.
void setEngineNow(const QDateTime& now);
