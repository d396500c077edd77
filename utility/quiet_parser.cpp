#include "quiet_parser.h"

#include <atomic>
#include <cstdlib>

namespace {

constinit std::atomic<std::FILE*> output = nullptr;
constinit thread_local bool parses = false;

// The stream is unbuffered, so this runs in the thread that prints.
ssize_t writeOthers(void*, const char* text, std::size_t size) {
  if (!parses)
    std::fwrite(text, 1, size, output);
  return static_cast<ssize_t>(size);
}

// Never closed, since another thread may still print to it. Null if memory is short.
std::FILE* streamForOthers() {
  static std::FILE* const stream = [] {
    std::FILE* made = fopencookie(nullptr, "w", {nullptr, writeOthers, nullptr, nullptr});
    if (made != nullptr)
      std::setvbuf(made, nullptr, _IONBF, 0);
    return made;
  }();
  return stream;
}

bool parserPrints() {
  static bool seen = false;
  seen = seen || std::getenv("YYDEBUG") != nullptr;
  return seen;
}

}  // namespace

QuietParser::QuietParser() {
  if (!parserPrints())
    return;
  std::FILE* const others = streamForOthers();
  if (others == nullptr)
    return;
  output_ = stdout;
  output = output_;
  parses = true;
  stdout = others;
}

QuietParser::~QuietParser() {
  if (output_ == nullptr)
    return;
  stdout = output_;
  parses = false;
}
