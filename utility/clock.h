#pragma once

#include <QDateTime>

// The current local date and time, as every part of the engine asks for it. Not a member of
// anything, so that a test can link another definition in its place.
QDateTime engineNow();
