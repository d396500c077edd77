// The physical lines of a vCalendar text, with any kind of line end.
#pragma once

#include "ulo/descriptor.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// Opens a regular file for reading. Returns a closed descriptor for anything else. Never blocks (as
// on a pipe).
Descriptor openRegularFile(const std::string& path);

// The bytes of a file or of a text in memory. Can be read repeatedly.
class ByteSource {
public:
  explicit ByteSource(std::string_view text) : text_(text) {}
  explicit ByteSource(Descriptor file) : file_(std::move(file)) {}

  // Returns the number of bytes read; 0 at the end and after a failure.
  std::size_t read(char* into, std::size_t size);
  void rewind();
  [[nodiscard]] bool failed() const { return failed_; }

private:
  Descriptor file_;
  std::string_view text_;
  std::size_t position_ = 0;
  bool ended_ = false;
  bool failed_ = false;
};

// One line without its line end and without zero bytes, truncated at propertyLimit.
struct Line {
  std::string bytes;
  std::size_t number = 0;
  bool odd = false;      // contains zero bytes or 0xFF, or ends in something other than LF or CR LF
  bool tooLong = false;  // truncated

  // Clears the line but keeps its memory.
  void clear();
  // Appends as much as fits.
  void add(std::string_view more);
};

// Accepts LF, CR LF, CR CR LF (found in texts that were converted twice) and CR as line ends.
class LineReader {
public:
  explicit LineReader(ByteSource& source)
      : source_(source), buffer_(std::make_unique_for_overwrite<char[]>(bufferSize + 1)) {}

  // Returns false at the end of the text.
  bool next(Line& line);
  // Returns the line that `next` will return, or null at the end. Valid until the next call.
  const Line* peek();

private:
  static constexpr std::size_t bufferSize = 65536;
  bool read(Line& line);
  void takePlain(Line& line);
  bool finishCarriageReturn();
  int byte();
  int peekByte();

  ByteSource& source_;
  std::unique_ptr<char[]> buffer_;  // its bytes are followed by a zero byte
  std::size_t position_ = 0;
  std::size_t size_ = 0;
  std::size_t number_ = 0;
  std::size_t pendingEnds_ = 0;  // line ends of a run of CRs that were read ahead
  Line peeked_;
  bool hasPeeked_ = false;
};

}  // namespace ulo
