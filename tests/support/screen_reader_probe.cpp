#include "screen_reader_probe.h"

#include <algorithm>
#include <iterator>

namespace {

bool active = false;
std::vector<ScreenReader::Heard>& heard() {
  static std::vector<ScreenReader::Heard> all;
  return all;
}

// Alerts, focus, descriptions, and the check marks of items.
bool isRecorded(const QAccessibleEvent& event) {
  constexpr QAccessible::Event kinds[] = {QAccessible::Alert, QAccessible::Focus,
                                          QAccessible::DescriptionChanged};
  if (event.type() == QAccessible::StateChanged)
    return static_cast<const QAccessibleStateChangeEvent&>(event).changedStates().checked;
  return std::find(std::begin(kinds), std::end(kinds), event.type()) != std::end(kinds);
}

}  // namespace

ScreenReader::ScreenReader() {
  forget();
  active = true;
}

ScreenReader::~ScreenReader() {
  active = false;
}

std::vector<std::string> ScreenReader::names(QAccessible::Event event) {
  std::vector<std::string> found;
  for (const Heard& each : heard())
    if (each.event == event)
      found.push_back(each.name);
  return found;
}

ScreenReader::Heard ScreenReader::last(QAccessible::Event event) {
  const auto found = std::find_if(heard().rbegin(), heard().rend(),
                                  [&](const Heard& each) { return each.event == event; });
  return found == heard().rend() ? Heard() : *found;
}

void ScreenReader::forget() {
  heard().clear();
}

// Take the place of the functions in Qt's library.

bool QAccessible::isActive() {
  return active;
}

void QAccessible::updateAccessibility(QAccessibleEvent* event) {
  if (!active || !isRecorded(*event))
    return;
  if (QAccessibleInterface* about = event->accessibleInterface(); about != nullptr)
    heard().push_back({event->type(), about->text(QAccessible::Name).toStdString(), about->state(),
                       about->role()});
}
