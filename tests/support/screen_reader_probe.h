// What a screen reader hears, for tests of widgets.
#pragma once

#include <QAccessible>

#include <string>
#include <vector>

// While it lives, Qt and our programs are told that a screen reader is active, and the events that
// they send to it are recorded. One at a time.
//
// The platform without a display never has a screen reader. Programs tested with ulo_gui_test
// therefore define QAccessible::isActive and QAccessible::updateAccessibility themselves.
class ScreenReader {
public:
  struct Heard {
    QAccessible::Event event;
    std::string name;  // of the object that the event is about
    QAccessible::State state;
    QAccessible::Role role;
  };

  ScreenReader();
  ScreenReader(const ScreenReader&) = delete;
  ScreenReader& operator=(const ScreenReader&) = delete;
  ~ScreenReader();

  // The names of the objects that events of this kind were about, oldest first.
  [[nodiscard]] static std::vector<std::string> names(QAccessible::Event event);
  // The last event of this kind.
  [[nodiscard]] static Heard last(QAccessible::Event event);
  static void forget();
};
