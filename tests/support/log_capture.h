#pragma once

#include "aplog.h"

#include <cstdio>
#include <cstdlib>
#include <string>

// Collects what is logged while the object lives.
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

  // Everything logged so far, in one text: messages carry no line end.
  [[nodiscard]] std::string text() {
    std::fflush(stream_);
    return std::string(buffer_, size_);
  }
  // The same with each "(file:line)" shown as "(file)", so that a test does not depend on lines.
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
