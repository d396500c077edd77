#pragma once

#include "exit_codes.h"
#include "session.h"

#include <optional>

namespace ulotask {

// Does `work` for each item. One that isn't there, or is there already, doesn't keep it from the
// others; what is wrong with the last such item is the Failure in the end.
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
