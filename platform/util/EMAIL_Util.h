// Character sets and quoted-printable (RFC 2045).
#pragma once

#include "export.h"
#include "qt2.h"

#include <QByteArray>
#include <QString>

class ULO_EXPORT EMAIL_Util {
public:
  // Codes of the character sets.
  enum Charset : int {
    charsetUnknown = 0,  // read as Latin-1
    charsetUsAscii = 1,
    charsetUtf7 = 12,
    charsetUtf8 = 13,
    charsetGb2312 = 14,
    charsetGbk = 15,
    charsetBig5 = 16,
  };

  // Sets `name` to the name of the character set as texts carry it ("UTF-8" for 13). A code that
  // names no set, 0 among them, gives an empty name and false.
  static bool charsetEnumToStr(int charset, QCString& name);

  // Sets `bytes` to `text` in the character set; a null text gives null bytes. False for a code
  // that is not in the table, which gives null bytes, and for a text that would not
  // be read back the same: a half of a surrogate pair becomes U+FFFD, a character that the set
  // lacks "?".
  static bool encWithCharset(QCString& bytes, const QString& text, int charset);

  // Sets `text` to `bytes` read in the character set. Code 0 means Latin-1. Bytes that are not
  // valid in the character set (logged), and a code that is not known, are read as Latin-1 too:
  // nothing is lost, and the result is false. A byte order mark stays a character of the text.
  static bool decFromCharset(const QByteArray& bytes, QString& text, int charset);

  // Room that encQp leaves on its first line for the property's name and parameters: the longest
  // is "DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:".
  static constexpr int qpNameLength = 52;

  // Quoted-printable of `length` bytes (RFC 2045, 6.7). Decoded, it gives the same bytes: line
  // breaks are encoded too, as they stand, for vCalendar 1.0 wants them so in a value. Lines have
  // at most 76 characters; a soft break is "=" and a line feed, which the vObject library writes as
  // "=" CR LF. mode: 0.
  static QCString encQp(const char* bytes, unsigned long length, int mode);
};
