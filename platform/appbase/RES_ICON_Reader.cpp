#include "RES_ICON_Reader.h"

#include "module_log.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPixmap>

#include <algorithm>

namespace {

// Points of the side of an icon at the smallest font.
constexpr int side = 16;
// Pixels to the point of the forms that are kept.
constexpr int forms[] = {1, 2, 4};

QString fileOf(const QString& name, int form) {
  QString file = QStringLiteral(":/ulo/icons/") + name;
  if (form > 1)
    file.insert(file.lastIndexOf(u'.'), QStringLiteral("@%1x").arg(form));
  return file;
}

// How many points a point of the icon takes beside text.
int growth() {
  return std::max(1, (QFontMetrics(QApplication::font()).height() + side / 2) / side);
}

}  // namespace

QPixmap RES_ICON_Reader::getIcon(const QString& name, bool scaled) {
  const int points = side * (scaled ? growth() : 1);
  const qreal ratio = qApp->devicePixelRatio();
  // The smallest form that needs no enlarging.
  const auto* const form = std::find_if(std::begin(forms), std::end(forms) - 1, [&](int candidate) {
    return side * candidate >= points * ratio;
  });
  QPixmap icon(fileOf(name, *form));
  if (icon.isNull()) {
    ULO_LOG_ERROR("There is no icon %s", name.toUtf8().constData());
    return {};
  }
  icon.setDevicePixelRatio(static_cast<qreal>(icon.width()) / points);
  return icon;
}
