#include "list/list_settings.h"

#include <QSettings>

#include <algorithm>

namespace tasks {

namespace {

constexpr const char* viewKey = "list/view";
constexpr const char* sortKey = "list/sort";

// In $XDG_CONFIG_HOME/ulo/tasks.ini. A value that this file lacks is read from ulo/tasks.ini in the
// directories of $XDG_CONFIG_DIRS; the first one counts.
class Settings : public QSettings {
public:
  Settings() : QSettings(IniFormat, UserScope, QStringLiteral("ulo"), QStringLiteral("tasks")) {}
};

}  // namespace

ulo::ListOrder readListOrder() {
  const Settings from;
  const int view = from.value(QLatin1String(viewKey)).toInt();
  const int sort = from.value(QLatin1String(sortKey)).toInt();
  ulo::ListOrder order;
  order.view = static_cast<ZTASK_ENG_Model::TASK_CATEGORY>(std::clamp<int>(
      view, ZTASK_ENG_Model::TASK_CATEGORY_ALL, ZTASK_ENG_Model::TASK_CATEGORY_COMPLETED));
  order.sort = sort == ZTASK_ENG_Model::TASK_SORT_PRIORITY ? ZTASK_ENG_Model::TASK_SORT_PRIORITY
                                                           : ZTASK_ENG_Model::TASK_SORT_DUE;
  return order;
}

void writeListOrder(const ulo::ListOrder& order) {
  Settings to;
  to.setValue(QLatin1String(viewKey), static_cast<int>(order.view));
  to.setValue(QLatin1String(sortKey), static_cast<int>(order.sort));
}

}  // namespace tasks
