// The subject of an action.
#pragma once

#include <QString>

struct SDData {
  QString fileName;
  QString mimeType;  // may be empty
};
