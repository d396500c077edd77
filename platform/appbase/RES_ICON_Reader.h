// Loads the platform's icons by file name.
#pragma once

#include "ulo/export.h"

#include <QPixmap>
#include <QString>

class ULO_EXPORT RES_ICON_Reader {
public:
  // Returns the icon with that name, in the size of a line of text; high-density displays get a
  // larger image. With `scaled` the icon grows with the application's font. Returns a null pixmap
  // and logs it if the icon does not exist.
  static QPixmap getIcon(const QString& name, bool scaled);
};
