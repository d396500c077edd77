#pragma once

#include <QDateTime>

// Replaces the engine's clock in a test program that links ulotaskengine_objects and
// ulo_test_clock: the time stands at `now` until it is set again. An invalid date-time lets the
// real clock run, as it does at the start.
void setEngineNow(const QDateTime& now);
