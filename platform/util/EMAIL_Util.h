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

  // Sets `name` to the name of the character set as texts carry it ("UTF-8" for 13). An unknown
  // code gives an empty name and false.
  static bool charsetEnumToStr(int charset, QCString& name);

  // Sets `bytes` to `text` in the character set; a null text gives null bytes. False for an
  // unknown code or a text that the character set cannot hold in full (what it can't hold is
  // replaced).
  static bool encWithCharset(QCString& bytes, const QString& text, int charset);

  // Sets `text` to `bytes` read in the character set. Code 0 and bytes that are not valid in the
  // declared character set are read as Latin-1. False then, and `text` is set all the same.
  static bool decFromCharset(const QByteArray& bytes, QString& text, int charset);

  // Quoted-printable of `length` bytes (RFC 2045, 6.7): "=XX" in upper case, soft line breaks as
  // "=" and line feed, which the vObject library writes as "=" CR LF.
  // mode 0: line breaks of the text are encoded too (=0D, =0A), as vCalendar 1.0 wants them.
  static QCString encQp(const char* bytes, unsigned long length, int mode);
};
