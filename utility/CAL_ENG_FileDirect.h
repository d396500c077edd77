// The log text in this file is a contract: see docs/compatibility.md.
#pragma once

#include "module_log.h"

#include <QFile>

#include <cstdio>
#include <memory>
#include <unistd.h>

// A file with access to a standard I/O stream.
class CAL_ENG_FileDirect : public QFile {
public:
  using QFile::QFile;

  // Returns a stream that writes to the file, or null if it cannot be opened. The file owns the
  // stream and closes it before itself. Requires: the file is open for writing.
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
