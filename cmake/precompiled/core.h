// Sources without widgets: the platform, the engine, what programs do with it.
#pragma once

#include "standard.h"

#include <QByteArray>
#include <QDateTime>
#include <QFile>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringDecoder>
