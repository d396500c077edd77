#include "vcal_lines.h"

#include "vcal_guard.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ulo {
namespace {

// Bytes that end a line or make it odd, as does a zero byte.
constexpr char specialBytes[] = "\n\r\xFF";

bool isSpecial(char c) {
  return c == '\0' || std::strchr(specialBytes, c) != nullptr;
}

}  // namespace

void Line::clear() {
  bytes.clear();
  number = 0;
  odd = false;
  tooLong = false;
}

void Line::add(std::string_view more) {
  const std::size_t room = propertyLimit - bytes.size();
  bytes.append(more.substr(0, room));
  tooLong = tooLong || more.size() > room;
}

Descriptor openRegularFile(const std::string& path) {
  Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (file.isOpen() && (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)))
    file.reset();
  return file;
}

std::size_t ByteSource::read(char* into, std::size_t size) {
  if (!file_.isOpen()) {
    const std::size_t count = text_.copy(into, size, position_);
    position_ += count;
    return count;
  }
  std::size_t count = 0;
  while (count < size && !ended_) {
    const ssize_t got = ::read(file_.get(), into + count, size - count);
    if (got < 0 && errno == EINTR)
      continue;
    failed_ = failed_ || got < 0;
    // A regular file returns fewer bytes than requested only at its end.
    ended_ = got < static_cast<ssize_t>(size - count);
    count += got > 0 ? static_cast<std::size_t>(got) : 0;
  }
  return count;
}

void ByteSource::rewind() {
  position_ = 0;
  ended_ = false;
  if (file_.isOpen() && lseek(file_.get(), 0, SEEK_SET) != 0)
    failed_ = true;
}

int LineReader::peekByte() {
  if (position_ == size_) {
    position_ = 0;
    size_ = source_.read(buffer_.get(), bufferSize);
    buffer_[size_] = '\0';
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

// Reads the rest of a line end that began with CR. A run of CRs followed by LF ends one line;
// otherwise each CR ends one.
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

// Consumes the bytes in the buffer up to the first special one.
void LineReader::takePlain(Line& line) {
  const char* const first = buffer_.get() + position_;
  const std::size_t count = std::strcspn(first, specialBytes);
  line.add({first, count});
  position_ += count;
}

bool LineReader::read(Line& line) {
  line.clear();
  if (pendingEnds_ > 0) {
    --pendingEnds_;
    line.number = ++number_;
    line.odd = true;
    return true;
  }
  if (peekByte() == EOF)
    return false;
  line.number = ++number_;
  for (;;) {
    takePlain(line);
    const int c = byte();
    if (c == '\r' && finishCarriageReturn())
      line.odd = true;
    if (c == EOF || c == '\n' || c == '\r')
      return true;
    if (isSpecial(static_cast<char>(c)))
      line.odd = true;
    // A byte read after refilling the buffer may also be an ordinary one.
    if (const char plain = static_cast<char>(c); c != 0)
      line.add({&plain, 1});
  }
}

bool LineReader::next(Line& line) {
  if (!hasPeeked_)
    return read(line);
  std::swap(line, peeked_);
  hasPeeked_ = false;
  return true;
}

const Line* LineReader::peek() {
  if (!hasPeeked_)
    hasPeeked_ = read(peeked_);
  return hasPeeked_ ? &peeked_ : nullptr;
}

}  // namespace ulo
