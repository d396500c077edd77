#include "RES_ICON_Reader.h"

#include "module_log.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPixmap>

#include <algorithm>

namespace {

// Side of an icon in points, at the smallest font.
constexpr int side = 16;
// Pixels per point of the available images.
constexpr int forms[] = {1, 2, 4};

QString fileOf(const QString& name, int form) {
  QString file = QStringLiteral(":/ulo/icons/") + name;
  if (form > 1)
    file.insert(file.lastIndexOf(u'.'), QStringLiteral("@%1x").arg(form));
  return file;
}

// Factor by which icons grow with the font.
int growth() {
  return std::max(1, (QFontMetrics(QApplication::font()).height() + side / 2) / side);
}

}  // namespace

QPixmap RES_ICON_Reader::getIcon(const QString& name, bool scaled) {
  const int points = side * (scaled ? growth() : 1);
  const qreal ratio = qApp->devicePixelRatio();
  // The smallest image that need not be enlarged.
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
