#pragma once

#include <functional>
#include <string>

namespace ulo::odb {

// Receives text for the user, one line or sentence at a time.
using LineSink = std::function<void(const std::string&)>;

}  // namespace ulo::odb
