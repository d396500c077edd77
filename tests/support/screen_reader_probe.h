// Records what a screen reader would receive, for tests of widgets.
#pragma once

#include <QAccessible>
#include <QObject>

#include <gtest/gtest.h>

#include <algorithm>
#include <dlfcn.h>
#include <string>
#include <vector>

// Records the accessibility events of the program during its lifetime.
class ScreenReader {
public:
  struct Heard {
    QAccessible::Event event;
    std::string name;  // of the object concerned
    QAccessible::State state;
    QAccessible::Role role;
  };

  ScreenReader() {
    heard().clear();
    before_ = QAccessible::installUpdateHandler(hear);
    setActive(true);
  }
  ScreenReader(const ScreenReader&) = delete;
  ScreenReader& operator=(const ScreenReader&) = delete;
  ~ScreenReader() {
    setActive(false);
    QAccessible::installUpdateHandler(before_);
  }

  // Returns the names of the objects concerned by events of this kind, in order.
  [[nodiscard]] static std::vector<std::string> names(QAccessible::Event event) {
    std::vector<std::string> found;
    for (const Heard& each : heard())
      if (each.event == event)
        found.push_back(each.name);
    return found;
  }
  // Returns the last event of this kind.
  [[nodiscard]] static Heard last(QAccessible::Event event) {
    const auto found = std::find_if(heard().rbegin(), heard().rend(),
                                    [&](const Heard& each) { return each.event == event; });
    return found == heard().rend() ? Heard() : *found;
  }
  static void forget() { heard().clear(); }

private:
  // Qt sends no events unless its platform reports a screen reader, which the platform without a
  // display never does.
  static void setActive(bool active) {
    const auto find = [](const char* name) {
      void* symbol = dlsym(RTLD_DEFAULT, name);
      EXPECT_NE(symbol, nullptr) << name;
      return symbol;
    };
    void* platform =
        *static_cast<void**>(find("_ZN22QGuiApplicationPrivate20platform_integrationE"));
    const auto accessibilityOf =
        reinterpret_cast<void* (*)(void*)>(find("_ZNK20QPlatformIntegration13accessibilityEv"));
    const auto activate =
        reinterpret_cast<void (*)(void*, bool)>(find("_ZN22QPlatformAccessibility9setActiveEb"));
    activate(accessibilityOf(platform), active);
    EXPECT_EQ(QAccessible::isActive(), active);
  }
  static std::vector<Heard>& heard() {
    static std::vector<Heard> all;
    return all;
  }
  static void hear(QAccessibleEvent* event) {
    const QAccessible::Event kinds[] = {QAccessible::Alert, QAccessible::Focus,
                                        QAccessible::StateChanged, QAccessible::DescriptionChanged};
    if (std::find(std::begin(kinds), std::end(kinds), event->type()) == std::end(kinds))
      return;
    // Tests do not check whether keys are enabled.
    if (event->type() == QAccessible::StateChanged &&
        !static_cast<QAccessibleStateChangeEvent*>(event)->changedStates().checked)
      return;
    QAccessibleInterface* about = event->accessibleInterface();
    if (about != nullptr)
      heard().push_back({event->type(), about->text(QAccessible::Name).toStdString(),
                         about->state(), about->role()});
  }

  QAccessible::UpdateHandler before_ = nullptr;
};
