#include "vcal_lines.h"

#include "vcal_guard.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulo {

File openRegularFile(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor == -1)
    return nullptr;
  struct stat status {};
  File file;
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
    file.reset(fdopen(descriptor, "rb"));
  if (file == nullptr)
    close(descriptor);
  return file;
}

std::size_t ByteSource::read(char* into, std::size_t size) {
  if (file_ == nullptr) {
    const std::size_t count = text_.copy(into, size, position_);
    position_ += count;
    return count;
  }
  const std::size_t count = std::fread(into, 1, size, file_.get());
  failed_ = failed_ || std::ferror(file_.get()) != 0;
  return count;
}

void ByteSource::rewind() {
  position_ = 0;
  if (file_ != nullptr)
    std::rewind(file_.get());
}

int LineReader::peekByte() {
  if (position_ == size_) {
    position_ = 0;
    size_ = source_.read(buffer_.data(), buffer_.size());
    if (size_ == 0)
      return EOF;
  }
  return static_cast<unsigned char>(buffer_[position_]);
}

int LineReader::byte() {
  const int result = peekByte();
  if (result != EOF)
    ++position_;
  return result;
}

// Reads the rest of a line end that began with CR. A run of CR is the end of one line when LF
// follows, else each of them ends one.
bool LineReader::finishCarriageReturn() {
  std::size_t run = 1;
  for (; peekByte() == '\r'; ++run)
    byte();
  if (peekByte() == '\n') {
    byte();
    return run > 1;
  }
  pendingEnds_ = run - 1;
  return true;
}

bool LineReader::read(Line& line) {
  line = Line{};
  if (pendingEnds_ > 0) {
    --pendingEnds_;
    line.number = ++number_;
    line.odd = true;
    return true;
  }
  int c = byte();
  if (c == EOF)
    return false;
  line.number = ++number_;
  for (; c != EOF && c != '\n' && c != '\r'; c = byte()) {
    if (c == 0 || c == 0xFF)
      line.odd = true;
    if (c == 0)
      continue;
    if (line.bytes.size() < propertyLimit)
      line.bytes += static_cast<char>(c);
    else
      line.tooLong = true;
  }
  if (c == '\r' && finishCarriageReturn())
    line.odd = true;
  return true;
}

bool LineReader::next(Line& line) {
  if (!hasPeeked_)
    return read(line);
  line = std::move(peeked_);
  hasPeeked_ = false;
  return true;
}

const Line* LineReader::peek() {
  if (!hasPeeked_)
    hasPeeked_ = read(peeked_);
  return hasPeeked_ ? &peeked_ : nullptr;
}

}  // namespace ulo
