#pragma once

#include "aplog.h"

#include <cstdio>
#include <cstdlib>
#include <string>

// Collects all log messages during its lifetime.
class LogCapture {
public:
  LogCapture() : previous_(libaplog_to_module_ptr) {
    stream_ = open_memstream(&buffer_, &size_);
    libaplog_to_module_ptr = stream_;
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture() {
    libaplog_to_module_ptr = previous_;
    std::fclose(stream_);
    std::free(buffer_);
  }

  // Returns everything logged so far as one text. Messages have no line ends.
  [[nodiscard]] std::string text() {
    std::fflush(stream_);
    return std::string(buffer_, size_);
  }
  // The same with each "(file:line)" replaced by "(file)".
  [[nodiscard]] std::string withoutLines() {
    const std::string all = text();
    std::string result;
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i] == ':') {
        std::size_t end = i + 1;
        while (end < all.size() && all[end] >= '0' && all[end] <= '9')
          ++end;
        if (end > i + 1 && end < all.size() && all[end] == ')') {
          i = end - 1;
          continue;
        }
      }
      result += all[i];
    }
    return result;
  }

private:
  FILE* previous_;
  FILE* stream_ = nullptr;
  char* buffer_ = nullptr;
  std::size_t size_ = 0;
};
