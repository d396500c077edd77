// The sync engine, as the application asks it to run.
#pragma once

namespace tasks {

// Which program that is the launch table says, under AM_ActionData::synchroniser; the owner may
// change it at any time.
class Synchroniser {
public:
  // Whether the launch table has a sync engine.
  [[nodiscard]] static bool isSetUp();
  // Starts it and returns at once; what it changes shows as any program's changes do. False, with a
  // line in the log, when there is none or it can't be started.
  [[nodiscard]] static bool start();
};

}  // namespace tasks
