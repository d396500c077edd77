// Single messages of a captured log. Messages carry no line end.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

// Returns the messages in `log`, which LogCapture::withoutLines() returned, each without its
// "(file)". If `file` is given, returns only the messages of that source file.
inline std::vector<std::string> messagesOf(const std::string& log, const std::string& file = {}) {
  const auto nextMessage = [&log](std::size_t from) {
    return std::min({log.find("(utility/", from), log.find("(uistyle/", from),
                     log.find("(platform/", from), log.size()});
  };
  std::vector<std::string> found;
  for (std::size_t at = nextMessage(0); at < log.size();) {
    const std::size_t end = nextMessage(at + 1);
    const std::string message = log.substr(at, end - at);
    const std::size_t place = message.find(')');
    if (file.empty() || message.substr(1, place - 1) == file)
      found.push_back(message.substr(place + 1));
    at = end;
  }
  return found;
}
