#pragma once

#include "exit_codes.h"
#include "session.h"

#include <optional>

namespace ulotask {

// Runs `work` for each item. Items that fail because they are not found or exist already are
// reported, and the others are still processed; the last such Failure is thrown at the end. Any
// other Failure is thrown at once.
template <typename Items, typename Work>
void forEach(Session& session, const Items& items, const Work& work) {
  std::optional<Failure> last;
  for (const auto& item : items) {
    try {
      work(item);
    } catch (const Failure& failure) {
      if (failure.code() != Exit::notFound && failure.code() != Exit::exists)
        throw;
      if (last)
        session.output.notice(last->what());
      last = failure;
    }
  }
  if (last)
    throw Failure(*last);
}

}  // namespace ulotask
