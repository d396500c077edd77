// Tests with widgets.
#pragma once

#include "tests.h"
#include "widgets.h"

#include <QPointer>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
