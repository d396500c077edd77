// Starts several programs on the store at the same moment.
#pragma once

#include "process.h"

namespace company {

// Programs started with `number()` as their gate block at their first use of the store until the
// gate is opened.
class Gate {
public:
  Gate();
  [[nodiscard]] int number() const { return inside_.number(); }
  // Waits until this number of programs has reached the gate, for at most some seconds.
  void waitFor(int programs);
  void open();

private:
  Handle outside_;
  Handle inside_;
};

// Starts programs at the same moment and returns their outcomes. All `launches` must use a gate.
std::vector<Outcome> runTogether(std::vector<Launch> launches);

}  // namespace company
