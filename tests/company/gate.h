// Lets several programs loose on the store at the same moment.
#pragma once

#include "process.h"

namespace company {

// Programs that are started with `number()` as their gate stop at their first use of the store
// until the gate is opened.
class Gate {
public:
  Gate();
  [[nodiscard]] int number() const { return inside_.number(); }
  // Waits until so many programs have come to the gate; one that never comes is not waited for
  // longer than some seconds.
  void waitFor(int programs);
  void open();

private:
  Handle outside_;
  Handle inside_;
};

// Runs programs from the same moment on. `launches` have to hold at a gate. Returns their
// outcomes.
std::vector<Outcome> runTogether(std::vector<Launch> launches);

}  // namespace company
