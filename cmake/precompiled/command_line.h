// The command line: an executable, which has other compiler options than the libraries.
#pragma once

#include "core.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
