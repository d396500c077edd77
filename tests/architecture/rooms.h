// The rooms of the sources, and what each of them may include.
#pragma once

#include <string_view>
#include <vector>

// Libraries that only some rooms may use.
enum Library : unsigned { noLibrary = 0, sqlite = 1, qt = 2, widgets = 4 };

struct Room {
  std::string_view name;
  // The paths of its files begin with this; of several rooms the one with the longest counts.
  std::string_view prefix;
  // Names of rooms that come earlier in the list.
  std::vector<std::string_view> mayInclude;
  unsigned libraries = noLibrary;
};

// From the bottom to the top.
inline const std::vector<Room> allRooms = {
    {"qt2", "platform/qt2/", {}, qt},
    {"system", "platform/system/", {"qt2"}},
    {"log", "platform/log/", {"qt2", "system"}, qt},
    {"util", "platform/util/", {"qt2", "system", "log"}, qt},
    {"changes", "platform/changes/", {"qt2", "system", "log"}, sqlite},
    {"channel", "platform/channel/", {"qt2", "log"}, qt},
    {"vobject", "platform/vobject/", {"qt2", "system", "log"}, qt},

    {"odb/base", "platform/odb/base/", {}},
    {"odb/script", "platform/odb/script/", {"odb/base"}},
    {"odb/compile", "platform/odb/compile/", {"odb/base", "odb/script"}},
    {"odb/sqlite", "platform/odb/sqlite/", {"odb/base", "system", "changes"}, sqlite},
    {"odb/machine",
     "platform/odb/machine/",
     {"odb/base", "odb/script", "odb/compile", "odb/sqlite"},
     sqlite},
    {"odb/files", "platform/odb/files/", {"odb/base", "odb/sqlite", "system", "changes"}, sqlite},
    {"odb/api",
     "platform/odb/api/",
     {"odb/base", "odb/sqlite", "odb/machine", "odb/files", "qt2", "log"}},

    {"appbase", "platform/appbase/", {"qt2", "log"}, qt | widgets},
    {"services",
     "platform/services/",
     {"qt2", "system", "log", "util", "channel", "appbase"},
     qt | widgets},
    // The lock without its dialog, which the command line uses, too.
    {"lock code", "platform/security/lock_", {"qt2", "log"}, qt},
    {"app lock", "platform/security/app_lock", {"system", "log", "lock code"}, qt},
    {"security",
     "platform/security/",
     {"qt2", "log", "appbase", "app lock", "lock code"},
     qt | widgets},

    {"include", "include/", {"qt2"}, qt},
    {"utility",
     "utility/",
     {"include", "qt2", "system", "log", "util", "changes", "channel", "vobject", "odb/api"},
     qt},
    {"exchange", "exchange/", {"include", "utility", "qt2", "log", "util"}, qt},
    {"operations", "operations/", {"include", "utility", "exchange", "log", "util", "odb/api"}, qt},

    {"screens of include",
     "include/TASK_UI_",
     {"include", "qt2", "appbase", "services"},
     qt | widgets},
    {"menus of include", "include/tasksMenu", {"qt2", "appbase"}, qt | widgets},
    {"uistyle",
     "uistyle/",
     {"include", "screens of include", "menus of include", "utility", "qt2", "system", "log",
      "util", "appbase", "services"},
     qt | widgets},

    {"command line", "apps/command_line/", {}},
    {"ulotask",
     "apps/ulotask/",
     {"command line", "include", "utility", "exchange", "operations", "qt2", "system", "log",
      "util", "changes", "channel", "vobject", "odb/api", "app lock", "lock code"},
     qt},
    {"ulo-action",
     "apps/ulo-action/",
     {"command line", "include", "screens of include", "operations", "uistyle", "qt2", "log",
      "vobject", "appbase", "services", "security"},
     qt | widgets},
    {"tasks",
     "apps/tasks/",
     {"command line", "include", "screens of include", "menus of include", "utility", "exchange",
      "operations", "uistyle", "qt2", "system", "log", "util", "changes", "channel", "vobject",
      "appbase", "services", "security"},
     qt | widgets},
};
