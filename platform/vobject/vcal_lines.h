// The lines of a vCalendar text: physical lines with every kind of line end, and properties that
// run over several of them.
#pragma once

#include "descriptor.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// Opens a regular file for reading; closed for anything else. Never waits (as for a pipe).
Descriptor openRegularFile(const std::string& path);

// The bytes of a file or of a text in memory, as often as wanted.
class ByteSource {
public:
  explicit ByteSource(std::string_view text) : text_(text) {}
  explicit ByteSource(Descriptor file) : file_(std::move(file)) {}

  // Number of bytes read; 0 at the end and after a failure.
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

// One line without its end and without zero bytes; beyond propertyLimit it is cut.
struct Line {
  std::string bytes;
  std::size_t number = 0;
  bool odd = false;      // zero bytes, 0xFF, or a line end other than LF and CR LF
  bool tooLong = false;  // cut

  // Empties it, with the memory kept.
  void clear();
  // Appends what there is room for.
  void add(std::string_view more);
};

// Takes LF, CR LF, CR CR LF (what a text that was converted twice has) and CR as line ends.
class LineReader {
public:
  explicit LineReader(ByteSource& source)
      : source_(source), buffer_(std::make_unique_for_overwrite<char[]>(bufferSize)) {}

  // False at the end of the text.
  bool next(Line& line);
  // The line that `next` will give; null at the end. Valid until the next call.
  const Line* peek();

private:
  static constexpr std::size_t bufferSize = 65536;
  bool read(Line& line);
  void takePlain(Line& line);
  bool finishCarriageReturn();
  int byte();
  int peekByte();

  ByteSource& source_;
  std::unique_ptr<char[]> buffer_;
  std::size_t position_ = 0;
  std::size_t size_ = 0;
  std::size_t number_ = 0;
  std::size_t pendingEnds_ = 0;  // line ends of a run of CR that were read ahead
  Line peeked_;
  bool hasPeeked_ = false;
};

}  // namespace ulo
