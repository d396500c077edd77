// What an action is about.
#pragma once

#include <QString>

struct SDData {
  QString fileName;
  QString mimeType;  // may be empty
};
