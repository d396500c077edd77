// The pictures of the platform, by the names of their files.
#pragma once

#include "export.h"

#include <QPixmap>
#include <QString>

class ULO_EXPORT RES_ICON_Reader {
public:
  // The icon of that name, drawn for a line of text; for displays with two pixels to the point its
  // larger form. `scaled`: grows with the application's font. A null pixmap, which is logged, when
  // there is none of the name.
  static QPixmap getIcon(const QString& name, bool scaled);
};
