#include "plan.h"

#include <algorithm>

namespace ulo::odb {

int CursorPlan::fetch(int column) {
  const auto found = std::find(fetched.begin(), fetched.end(), column);
  const auto place = static_cast<int>(found - fetched.begin());
  if (found == fetched.end())
    fetched.push_back(column);
  return place;
}

}  // namespace ulo::odb
