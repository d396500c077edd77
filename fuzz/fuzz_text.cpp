// Fuzzes values: in each character set, in quoted-printable, and as a date. The first byte selects
// the character set.
#include "EMAIL_Util.h"
#include "UTIL_TimeConversion.h"

#include "fuzz_support.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int unknownCode = 99;
constexpr int codes[] = {EMAIL_Util::charsetUtf8,    EMAIL_Util::charsetUtf7,
                         EMAIL_Util::charsetGbk,     EMAIL_Util::charsetGb2312,
                         EMAIL_Util::charsetBig5,    EMAIL_Util::charsetUsAscii,
                         EMAIL_Util::charsetUnknown, unknownCode};
constexpr bool isSet(int code) {
  return code != EMAIL_Util::charsetUnknown && code != unknownCode;
}

// Requires that a text that was encoded without an error reads back.
void checkWritten(const QString& text, int code) {
  QCString bytes;
  const bool fits = EMAIL_Util::encWithCharset(bytes, text, code);
  FUZZ_REQUIRE(bytes.isNull() == (!isSet(code) || text.isNull()));
  FUZZ_REQUIRE(isSet(code) || !fits);
  QString again;
  if (!fits || text.isNull())
    return;
  FUZZ_REQUIRE(EMAIL_Util::decFromCharset(bytes, again, code));
  FUZZ_REQUIRE(again == text);
}

// Requires that no byte is lost: the text is decoded correctly or as Latin-1.
void checkRead(const QByteArray& bytes, int code) {
  QString text;
  const bool valid = EMAIL_Util::decFromCharset(bytes, text, code);
  if (!valid || !isSet(code)) {
    FUZZ_REQUIRE(text == QString::fromLatin1(bytes));
    FUZZ_REQUIRE(valid == (code == EMAIL_Util::charsetUnknown) || isSet(code));
    return;
  }
  if (code == EMAIL_Util::charsetUtf8 || code == EMAIL_Util::charsetUsAscii) {
    QCString written;
    FUZZ_REQUIRE(EMAIL_Util::encWithCharset(written, text, code) || text.isNull());
    FUZZ_REQUIRE(written == bytes);
  }
  checkWritten(text, code);
}

int hexDigit(char c) {
  FUZZ_REQUIRE((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'));
  return c <= '9' ? c - '0' : c - 'A' + 10;
}

// Requires short lines without unencoded trailing blanks, and the same bytes after decoding.
void checkQuotedPrintable(const std::string& bytes) {
  constexpr std::size_t lineLimit = 76;
  const std::string encoded = EMAIL_Util::encQp(bytes.data(), bytes.size(), 0).toStdString();
  std::string decoded;
  std::size_t column = EMAIL_Util::qpNameLength;
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    FUZZ_REQUIRE(++column <= lineLimit);
    if (encoded[i] != '=') {
      FUZZ_REQUIRE(encoded[i] >= ' ' && encoded[i] <= '~');
      decoded += encoded[i];
    } else if (i + 1 < encoded.size() && encoded[i + 1] == '\n') {
      ++i;
      column = 0;
    } else {
      FUZZ_REQUIRE(i + 2 < encoded.size());
      decoded += static_cast<char>(hexDigit(encoded[i + 1]) * 16 + hexDigit(encoded[i + 2]));
      i += 2;
      column += 2;
    }
  }
  FUZZ_REQUIRE(decoded == bytes);
}

void checkDate(const std::string& text) {
  const QDateTime read = UTIL_TimeConversion::fromISO8601(QCString(text.c_str()));
  const long seconds = UTIL_TimeConversion::toUTC(read);
  const QCString written = UTIL_TimeConversion::toISO8601(read);
  if (!read.isValid()) {
    FUZZ_REQUIRE(seconds == INT32_MAX && written.isEmpty());
    return;
  }
  const qint64 exact = read.toSecsSinceEpoch();
  FUZZ_REQUIRE(exact == INT32_MAX ? seconds == exact
                                  : seconds == std::clamp<qint64>(exact, INT32_MIN, INT32_MAX - 1));
  if (!written.isEmpty())
    FUZZ_REQUIRE(UTIL_TimeConversion::fromISO8601(written).toSecsSinceEpoch() == exact);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool isPrepared = (fuzz::prepare(), true);
  FUZZ_REQUIRE(isPrepared);
  if (size == 0)
    return 0;
  const int code = codes[data[0] % std::size(codes)];
  const std::string bytes = fuzz::textOf(data + 1, size - 1);
  checkRead(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())), code);

  // Any 16-bit units are a text, including unpaired surrogates.
  QString units(static_cast<qsizetype>(bytes.size() / sizeof(QChar)), Qt::Uninitialized);
  std::memcpy(units.data(), bytes.data(), static_cast<std::size_t>(units.size()) * sizeof(QChar));
  checkWritten(units, code);
  checkQuotedPrintable(bytes);
  checkDate(bytes);
  return 0;
}
