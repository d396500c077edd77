#pragma once

#include "module_log.h"

#include <QFile>

#include <cstdio>
#include <memory>
#include <unistd.h>

// A file that can also be written to through a standard I/O stream.
class CAL_ENG_FileDirect : public QFile {
public:
  using QFile::QFile;

  // Owned by the file and closed before it. Null on failure. Requires: open for writing.
  std::FILE* stream() {
    if (stream_ == nullptr) {
      const int descriptor = dup(handle());
      stream_.reset(descriptor == -1 ? nullptr : fdopen(descriptor, "w"));
      if (stream_ == nullptr && descriptor != -1)
        ::close(descriptor);
    }
    return stream_.get();
  }

private:
  struct Close {
    void operator()(std::FILE* stream) const {
      if (std::fclose(stream) != 0)
        ULO_LOG_ERROR("Unable to write vcard");
    }
  };
  std::unique_ptr<std::FILE, Close> stream_;
};
