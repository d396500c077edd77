#include "EMAIL_Util.h"

#include "module_log.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>

#include <iconv.h>

namespace {

// The character sets, and what the C library calls the ones that read and write them. Programs
// that declare GB2312 use characters of its successors, so those read it.
struct CharsetEntry {
  int code;
  const char* name;
  const char* decoder;
  const char* encoder;
};
constexpr CharsetEntry charsets[] = {
    {EMAIL_Util::charsetUsAscii, "US-ASCII", "US-ASCII", "US-ASCII"},
    {EMAIL_Util::charsetUtf7, "UTF-7", "UTF-7", "UTF-7"},
    {EMAIL_Util::charsetUtf8, "UTF-8", "UTF-8", "UTF-8"},
    {EMAIL_Util::charsetGb2312, "GB2312", "GB18030", "GB2312"},
    {EMAIL_Util::charsetGbk, "GBK", "GB18030", "GBK"},
    {EMAIL_Util::charsetBig5, "BIG5", "BIG5-HKSCS", "BIG5"},
};

const CharsetEntry* entryOf(int code) {
  const auto* found = std::find_if(std::begin(charsets), std::end(charsets),
                                   [&](const CharsetEntry& entry) { return entry.code == code; });
  return found == std::end(charsets) ? nullptr : found;
}

// Converts through the C library, which reports what it can't convert; Qt's codecs hide it.
class Conversion {
public:
  Conversion(const char* to, const char* from) : handle_(iconv_open(to, from)) {}
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;
  ~Conversion() {
    if (isOpen())
      iconv_close(handle_);
  }
  [[nodiscard]] bool isOpen() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

  // False when `bytes` are not all valid; `result` then ends before the first that is not, and
  // `bytes` begins there.
  bool run(QByteArray& result, QByteArray& bytes) {
    char* in = bytes.data();
    auto left = static_cast<std::size_t>(bytes.size());
    bool valid = true;
    while (valid && left > 0) {
      char buffer[4096];
      char* out = buffer;
      std::size_t room = sizeof buffer;
      valid =
          iconv(handle_, &in, &left, &out, &room) != static_cast<std::size_t>(-1) || errno == E2BIG;
      result.append(buffer, static_cast<qsizetype>(sizeof buffer - room));
    }
    bytes = bytes.last(static_cast<qsizetype>(left));
    return valid;
  }
  // What ends the text, where the character set has states.
  void finish(QByteArray& result) {
    char buffer[64];
    char* out = buffer;
    std::size_t room = sizeof buffer;
    iconv(handle_, nullptr, nullptr, &out, &room);
    result.append(buffer, static_cast<qsizetype>(sizeof buffer - room));
  }

private:
  iconv_t handle_;
};

bool isLiteral(char c) {
  // A semicolon would separate fields for some readers of vCalendar texts.
  return c >= ' ' && c <= '~' && c != '=' && c != ';';
}

}  // namespace

bool EMAIL_Util::charsetEnumToStr(int charset, QCString& name) {
  const CharsetEntry* entry = entryOf(charset);
  name = entry == nullptr ? QCString() : QCString(entry->name);
  return entry != nullptr;
}

bool EMAIL_Util::encWithCharset(QCString& bytes, const QString& text, int charset) {
  bytes = QCString();
  const CharsetEntry* entry = entryOf(charset);
  if (entry == nullptr)
    return false;
  if (text.isNull())
    return true;
  QByteArray utf8 = text.toUtf8();  // lone halves of surrogate pairs become question marks
  const bool whole = text.isValidUtf16();
  if (charset == charsetUtf8) {
    bytes = utf8;
    return whole;
  }
  Conversion conversion(entry->encoder, "UTF-8");
  if (!conversion.isOpen()) {
    ULO_LOG_ERROR("This system can't write the character set %s", entry->name);
    return false;
  }
  QByteArray result("");
  bool fits = whole;
  while (!conversion.run(result, utf8)) {
    // One character that the set lacks: a question mark for it, then on behind it.
    fits = false;
    qsizetype size = 1;
    while (size < utf8.size() && (static_cast<unsigned char>(utf8[size]) & 0xC0U) == 0x80)
      ++size;
    QByteArray mark("?");
    conversion.run(result, mark);
    utf8.remove(0, size);
  }
  conversion.finish(result);
  bytes = result;
  return fits;
}

bool EMAIL_Util::decFromCharset(const QByteArray& bytes, QString& text, int charset) {
  text = QString::fromLatin1(bytes);
  const CharsetEntry* entry = entryOf(charset);
  if (entry == nullptr)
    return charset == charsetUnknown;
  // To 16-bit units: towards UTF-8 the C library lets through what is no Unicode.
  Conversion conversion(Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "UTF-16LE" : "UTF-16BE", entry->decoder);
  if (!conversion.isOpen()) {
    ULO_LOG_ERROR("This system can't read the character set %s", entry->name);
    return false;
  }
  QByteArray units;
  QByteArray left = bytes;
  if (!conversion.run(units, left)) {
    ULO_LOG_ERROR("Byte %lld is not valid in %s, the text is read as Latin-1",
                  static_cast<long long>(bytes.size() - left.size()), entry->name);
    return false;
  }
  conversion.finish(units);
  // Unlike fromUtf16 this keeps a byte order mark, which is text like any other here.
  if (!bytes.isEmpty())
    text = QString(reinterpret_cast<const QChar*>(units.constData()), units.size() / 2);
  return true;
}

QCString EMAIL_Util::encQp(const char* bytes, unsigned long length, int) {
  constexpr int lineLimit = 76;  // RFC 2045, 6.7 (5), the "=" of a soft break included
  constexpr char hex[] = "0123456789ABCDEF";
  QByteArray result;
  int room = lineLimit - qpNameLength;
  bool atLineStart = true;
  for (unsigned long i = 0; i < length; ++i) {
    const char c = bytes[i];
    // A blank at either end of a line would be taken for a fold, or be lost on the way.
    const bool blankAtEdge = c == ' ' && (atLineStart || i + 1 == length);
    const bool literal = isLiteral(c) && !blankAtEdge;
    const int size = literal ? 1 : 3;
    if (size > room - 1) {
      result += "=\n";
      room = lineLimit;
      atLineStart = true;
      --i;  // the same byte again, at the start of a line
      continue;
    }
    if (literal) {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      const char encoded[] = {'=', hex[byte >> 4U], hex[byte & 15U]};
      result.append(encoded, sizeof encoded);
    }
    room -= size;
    atLineStart = false;
  }
  return result;
}
