#include "EMAIL_Util.h"

#include "module_log.h"
#include "well_formed.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include <iconv.h>

namespace {

// The character sets, and the C library's names for reading and writing them. Programs that declare
// GB2312, GBK or BIG5 use characters of the successors, which are therefore used for reading.
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

// The encoding of a QString. The C library's UTF-8 would accept numbers beyond Unicode.
constexpr const char* nativeUtf16 = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "UTF-16LE" : "UTF-16BE";

// Converts with the C library, which reports what it cannot convert; Qt's codecs hide it.
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

  // Appends the converted `bytes` to `result`. Returns how many of them were consumed: fewer than
  // all if the rest is invalid, incomplete, or not in the target character set.
  std::size_t run(QByteArray& result, std::string_view bytes) {
    char* in = const_cast<char*>(bytes.data());  // iconv only reads it
    std::size_t left = bytes.size();
    while (left > 0) {
      char buffer[4096];
      char* out = buffer;
      std::size_t room = sizeof buffer;
      const bool done = iconv(handle_, &in, &left, &out, &room) != static_cast<std::size_t>(-1);
      const int reason = errno;
      result.append(buffer, static_cast<qsizetype>(sizeof buffer - room));
      if (!done && reason != E2BIG)
        break;
    }
    return bytes.size() - left;
  }
  // Appends the final shift sequence of a stateful character set.
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

bool hasSurrogates(const QString& text) {
  // Without an early exit, the compiler uses vector instructions.
  bool found = false;
  for (const QChar unit : text)
    found |= unit.isSurrogate();
  return found;
}

// Returns the text with each unpaired surrogate replaced by U+FFFD.
QString withReplacements(const QString& text) {
  return hasSurrogates(text) ? ulo::wellFormed(text, QChar::ReplacementCharacter) : text;
}

// Returns true if quoted-printable text contains the character as it is, wherever it stands.
bool isLiteral(char c) {
  static constexpr auto literals = [] {
    std::array<bool, 256> table{};
    // Some readers of vCalendar texts treat a semicolon as a field separator.
    for (std::size_t byte = '!'; byte <= '~'; ++byte)
      table[byte] = byte != '=' && byte != ';';
    return table;
  }();
  return literals[static_cast<unsigned char>(c)];
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
  const QString clean = withReplacements(text);
  const QByteArray utf8 = clean.toUtf8();
  // UTF-8 can encode every text, but an initial byte order mark would be lost when reading.
  if (charset == charsetUtf8 && !text.startsWith(QChar::ByteOrderMark)) {
    bytes = utf8.isNull() ? QByteArray("") : utf8;
    return clean == text;
  }
  Conversion conversion(entry->encoder, "UTF-8");
  if (!conversion.isOpen()) {
    ULO_LOG_ERROR("This system can't write the character set %s", entry->name);
    return false;
  }
  QByteArray result("");
  bool fits = clean == text;
  std::string_view left(utf8.constData(), static_cast<std::size_t>(utf8.size()));
  left.remove_prefix(conversion.run(result, left));
  // After the first character that the set lacks, convert one by one: on a failure the C library
  // converts much of what follows again.
  while (!left.empty()) {
    std::size_t size = 1;
    while (size < left.size() && (static_cast<unsigned char>(left[size]) & 0xC0U) == 0x80)
      ++size;
    if (conversion.run(result, left.substr(0, size)) < size) {
      fits = false;
      conversion.run(result, "?");
    }
    left.remove_prefix(size);
  }
  conversion.finish(result);
  bytes = result;
  // The C library silently drops some characters; reading the result detects that.
  QString readBack;
  return fits && decFromCharset(bytes, readBack, charset) && readBack == text;
}

bool EMAIL_Util::decFromCharset(const QByteArray& bytes, QString& text, int charset) {
  text = QString::fromLatin1(bytes);
  const CharsetEntry* entry = entryOf(charset);
  if (entry == nullptr)
    return charset == charsetUnknown;
  if (bytes.isEmpty())
    return true;
  if (charset == charsetUtf8) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    if (const QString decoded = decoder(bytes); !decoder.hasError()) {
      text = decoded;
      return true;
    }
  }
  Conversion conversion(nativeUtf16, entry->decoder);
  if (!conversion.isOpen()) {
    ULO_LOG_ERROR("This system can't read the character set %s", entry->name);
    return false;
  }
  // The added line feed reveals a truncated text, which UTF-7 would drop silently.
  const std::string_view given(bytes.constData(), static_cast<std::size_t>(bytes.size()));
  QByteArray units;
  const std::size_t valid = conversion.run(units, given);
  if (valid < given.size() || conversion.run(units, "\n") == 0) {
    ULO_LOG_ERROR("Byte %zu is not valid in %s, the text is read as Latin-1", valid, entry->name);
    return false;
  }
  conversion.finish(units);
  constexpr qsizetype unitSize = sizeof(QChar);
  text.resize(units.size() / unitSize - 1);
  std::memcpy(text.data(), units.constData(), static_cast<std::size_t>(text.size() * unitSize));
  return true;
}

QCString EMAIL_Util::encQp(const char* bytes, unsigned long length, int) {
  constexpr int lineLimit = 76;  // RFC 2045, 6.7 (5), including the "=" of a soft break
  constexpr char hex[] = "0123456789ABCDEF";
  constexpr int encodedSize = 3;
  if (length == 0)
    return QCString();
  // At most three characters for each byte, and fewer than one for the soft breaks.
  QByteArray result(static_cast<qsizetype>(4 * length + 2), Qt::Uninitialized);
  char* out = result.data();
  const char* const last = bytes + length - 1;
  std::ptrdiff_t room = lineLimit - qpNameLength;
  bool atLineStart = true;
  for (const char* next = bytes; next <= last;) {
    const char* const run = next;
    const char* const limit = next + std::min(last + 1 - next, room - 1);
    // A blank at either end of a line would be read as a fold, or be lost in transport.
    while (next < limit &&
           (isLiteral(*next) || (*next == ' ' && next != last && !(atLineStart && next == run))))
      ++next;
    out = std::copy(run, next, out);
    room -= next - run;
    if (next > last)
      break;
    if (room - 1 < encodedSize) {
      out = std::copy_n("=\n", 2, out);
      room = lineLimit;
      atLineStart = true;
      continue;
    }
    const auto byte = static_cast<unsigned char>(*next++);
    *out++ = '=';
    *out++ = hex[byte >> 4U];
    *out++ = hex[byte & 15U];
    room -= encodedSize;
    atLineStart = false;
  }
  result.truncate(out - result.constData());
  return result;
}
