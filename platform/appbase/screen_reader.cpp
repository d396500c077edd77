#include "screen_reader.h"

#include <QAccessible>
#include <QWidget>

namespace ulo {

void announce(QWidget* widget, [[maybe_unused]] const QString& text) {
  if (!QAccessible::isActive())
    return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  QAccessibleAnnouncementEvent announcement(widget, text);
  QAccessible::updateAccessibility(&announcement);
#endif
  QAccessibleEvent alert(widget, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}

}  // namespace ulo
