// Character sets and quoted-printable (RFC 2045).
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <QByteArray>
#include <QString>

class ULO_EXPORT EMAIL_Util {
public:
  // Character set codes.
  enum Charset : int {
    charsetUnknown = 0,  // read as Latin-1
    charsetUsAscii = 1,
    charsetUtf7 = 12,
    charsetUtf8 = 13,
    charsetGb2312 = 14,
    charsetGbk = 15,
    charsetBig5 = 16,
  };

  // Sets `name` to the character set's name as used in vCalendar texts ("UTF-8" for 13). If the
  // code has no name, as 0 has none, returns false and makes `name` empty.
  static bool charsetEnumToStr(int charset, QCString& name);

  // Sets `bytes` to `text`, encoded in the character set; a null text results in null bytes.
  // Returns false with null bytes if the code is not in the table, or if the C library does not
  // support the set, which is logged. Returns false if decoding would not restore the text: an
  // unpaired surrogate is encoded as U+FFFD, a character that the set lacks as "?".
  static bool encWithCharset(QCString& bytes, const QString& text, int charset);

  // Sets `text` to `bytes`, decoded from the character set. Code 0 means Latin-1. If the bytes are
  // not valid in the character set (which is logged) or the code is unknown, decodes them as
  // Latin-1, so that nothing is lost, and returns false. A byte order mark is kept as a character
  // of the text.
  static bool decFromCharset(const QByteArray& bytes, QString& text, int charset);

  // Number of characters that encQp leaves free on its first line for the property's name and
  // parameters; the longest is "DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:".
  static constexpr int qpNameLength = 52;

  // Returns `length` bytes encoded as quoted-printable (RFC 2045, 6.7). Decoding restores the same
  // bytes: line breaks are encoded byte by byte, as vCalendar 1.0 requires in a value. Lines have
  // at most 76 characters. A soft break is "=" and a line feed, which the vObject library writes as
  // "=" CR LF. `mode` is 0.
  static QCString encQp(const char* bytes, unsigned long length, int mode);
};
