// Tests for character sets and quoted-printable.

#include "EMAIL_Util.h"
#include "log_capture.h"

#include <gmock/gmock.h>

#include <climits>
#include <random>

namespace {

struct Name {
  int code;
  const char* name;
};
constexpr Name names[] = {{1, "US-ASCII"}, {12, "UTF-7"}, {13, "UTF-8"},
                          {14, "GB2312"},  {15, "GBK"},   {16, "BIG5"}};
constexpr int unknownCodes[] = {-1, 2, 11, 17, INT_MAX, INT_MIN};

TEST(Charsets, Names) {
  for (const Name& entry : names) {
    QCString name("before");
    EXPECT_TRUE(EMAIL_Util::charsetEnumToStr(entry.code, name));
    EXPECT_EQ(name, entry.name);
  }
  std::vector<int> unknown(std::begin(unknownCodes), std::end(unknownCodes));
  unknown.push_back(0);
  for (const int code : unknown) {
    QCString name("before");
    EXPECT_FALSE(EMAIL_Util::charsetEnumToStr(code, name)) << code;
    EXPECT_TRUE(name.isEmpty());
  }
}

struct Sample {
  int code;
  const char* bytes;
  const char16_t* text;
};
constexpr Sample samples[] = {
    {1, "Buy milk", u"Buy milk"},
    {12, "+ZeVnLIqe-", u"\u65E5\u672C\u8A9E"},
    {12, "1 +- 2 +AOk-!", u"1 + 2 \u00E9!"},
    {12, "+2D3eAA-", u"\U0001F600"},
    {13, "\xC3\xA9\xE4\xBB\xBB\xF0\x9F\x98\x80", u"\u00E9\u4EFB\U0001F600"},
    {14, "\xC8\xCE\xCE\xF1 1", u"\u4EFB\u52A1 1"},
    {15, "\xC8\xCE\xCE\xF1\x81\x40", u"\u4EFB\u52A1\u4E02"},
    {16, "\xA5\xF4\xB0\xC8", u"\u4EFB\u52D9"},
};

TEST(Charsets, Decode) {
  for (const Sample& sample : samples) {
    LogCapture log;
    QString text("before");
    EXPECT_TRUE(EMAIL_Util::decFromCharset(sample.bytes, text, sample.code)) << sample.bytes;
    EXPECT_EQ(text.toStdU16String(), sample.text) << sample.bytes;
    EXPECT_EQ(log.text(), "");
  }
}

TEST(Charsets, Encode) {
  for (const Sample& sample : samples) {
    QCString bytes("before");
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString::fromUtf16(sample.text), sample.code))
        << sample.bytes;
    EXPECT_EQ(bytes.toStdString(),
              // Decoding accepts "!" as it is, but encoding escapes it.
              sample.bytes == std::string("1 +- 2 +AOk-!") ? "1 +- 2 +AOkAIQ-" : sample.bytes);
  }
}

TEST(Charsets, TerminatesUtf7Sequences) {
  QCString bytes;
  EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString(QChar(0xE9)), 12));
  EXPECT_EQ(bytes, "+AOk-");
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes + "abc", text, 12));
  EXPECT_EQ(text, QString(QChar(0xE9)) + "abc");
}

TEST(Charsets, ReadsSuccessorsOfGb2312) {
  for (const int code : {14, 15}) {
    QString text;
    EXPECT_TRUE(EMAIL_Util::decFromCharset("\x81\x40\x81\x30\x81\x30", text, code));
    EXPECT_EQ(text.toStdU16String(), u"\u4E02\u0080");
  }
}

TEST(Charsets, ReadsInvalidBytesAsLatin1) {
  struct Invalid {
    int code;
    const char* bytes;
    int at;
    const char* name;
  };
  constexpr Invalid invalid[] = {
      {1, "ab\xE9", 2, "US-ASCII"},
      {12, "a\xFF", 1, "UTF-7"},
      {13,
       "ab\xFF"
       "c",
       2, "UTF-8"},
      {13, "a\xC3", 1, "UTF-8"},
      {13, "\xE4\xBB", 0, "UTF-8"},
      {13, "\xC0\x80", 0, "UTF-8"},
      {13, "\xED\xA0\x80", 0, "UTF-8"},
      {13, "\x80", 0, "UTF-8"},
      {13, "\xF5\x80\x80\x80", 0, "UTF-8"},
      {14, "\xC8\xCE\xCE", 2, "GB2312"},
      {14, "\xFF", 0, "GB2312"},
      {15, "x\x81", 1, "GBK"},
      {15, "\x81\x20", 0, "GBK"},
      {16, "\xA5", 0, "BIG5"},
      {16, "ok\xFF\xFF", 2, "BIG5"},
  };
  for (const Invalid& sample : invalid) {
    SCOPED_TRACE(std::string(sample.name) + " " + sample.bytes);
    LogCapture log;
    QString text("before");
    EXPECT_FALSE(EMAIL_Util::decFromCharset(sample.bytes, text, sample.code));
    EXPECT_EQ(text, QString::fromLatin1(sample.bytes));
    EXPECT_EQ(log.withoutLines(), "(platform/util/EMAIL_Util.cpp)Byte " +
                                      std::to_string(sample.at) + " is not valid in " +
                                      sample.name + ", the text is read as Latin-1");
  }
}

TEST(Charsets, ReadsUnknownCodesAsLatin1) {
  QByteArray all;
  for (int byte = 0; byte < 256; ++byte)
    all += static_cast<char>(byte);
  LogCapture log;
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset(all, text, 0));
  EXPECT_EQ(text, QString::fromLatin1(all));
  for (const int code : unknownCodes) {
    text = "before";
    EXPECT_FALSE(EMAIL_Util::decFromCharset(all, text, code)) << code;
    EXPECT_EQ(text, QString::fromLatin1(all));
  }
  EXPECT_EQ(log.text(), "");
}

TEST(Charsets, NullAndEmpty) {
  for (const int code : {0, 1, 12, 13, 14, 15, 16}) {
    SCOPED_TRACE(code);
    QString text("before");
    EXPECT_TRUE(EMAIL_Util::decFromCharset(QByteArray(), text, code));
    EXPECT_TRUE(text.isNull());
    EXPECT_TRUE(EMAIL_Util::decFromCharset(QByteArray(""), text, code));
    EXPECT_TRUE(text.isEmpty() && !text.isNull());
    if (code == 0)
      continue;
    QCString bytes("before");
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString(), code));
    EXPECT_TRUE(bytes.isNull());
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, QString(""), code));
    EXPECT_TRUE(bytes.isEmpty() && !bytes.isNull());
  }
}

TEST(Charsets, EncodingToUnknownCharsetFails) {
  std::vector<int> unknown(std::begin(unknownCodes), std::end(unknownCodes));
  unknown.push_back(0);
  for (const int code : unknown) {
    QCString bytes("before");
    EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, "text", code)) << code;
    EXPECT_TRUE(bytes.isNull());
  }
}

TEST(Charsets, ReplacesUnsupportedCharacters) {
  const QString text = QString::fromUtf16(u"a\u00E9b\u4EFB\U0001F600c");
  const auto encoded = [&](int code) {
    QCString bytes;
    EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, text, code));
    return bytes.toStdString();
  };
  EXPECT_EQ(encoded(1), "a?b??c");
  EXPECT_EQ(encoded(14), "a\xA8\xA6"
                         "b\xC8\xCE?c");
  EXPECT_EQ(encoded(15), "a\xA8\xA6"
                         "b\xC8\xCE?c");
  EXPECT_EQ(encoded(16), "a?b\xA5\xF4?c");
}

TEST(Charsets, ReplacesLoneSurrogates) {
  for (const char16_t unit : {u'\xD800', u'\xDC00'})
    for (const int code : {1, 12, 13, 14, 15, 16}) {
      const bool hasReplacement = code == 12 || code == 13;
      const QChar replacement = hasReplacement ? QChar(QChar::ReplacementCharacter) : QChar('?');
      for (const QString& place :
           {QString("a%1b"), QString("%1b"), QString("a%1"), QString::fromUtf16(u"%1\U0001F600")}) {
        if (!hasReplacement && place.size() == 4)
          continue;  // the set cannot encode the pair either
        QCString bytes;
        EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, place.arg(QChar(unit)), code));
        QString back;
        EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes, back, code));
        EXPECT_EQ(back, place.arg(replacement)) << code;
      }
    }
}

TEST(Charsets, RejectsTruncatedUtf7) {
  for (const char* bytes : {"+A", "+AG", "a+", "+2D0", "+2D0-", "+2D3eA", "+AGF-"}) {
    LogCapture log;
    QString text;
    EXPECT_FALSE(EMAIL_Util::decFromCharset(bytes, text, 12)) << bytes;
    EXPECT_EQ(text, QString::fromLatin1(bytes));
  }
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset("+AGE", text, 12));  // complete without a hyphen
  EXPECT_EQ(text, "a");
}

TEST(Charsets, ReadsCombinedCharactersAtTheEnd) {
  QString text;
  EXPECT_TRUE(EMAIL_Util::decFromCharset("a\x88\x62", text, 16));
  EXPECT_EQ(text.toStdU16String(), u"a\u00CA\u0304");
  EXPECT_TRUE(EMAIL_Util::decFromCharset("a\x88\x66", text, 16));
  EXPECT_EQ(text.toStdU16String(), u"a\u00CA");
}

// The C library drops language tags without an error.
TEST(Charsets, ReportsDroppedCharacters) {
  QCString bytes;
  EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, QString::fromUtf16(u"a\U000E0067z"), 1));
  EXPECT_EQ(bytes, "az");
}

// After each failure, the C library converts thousands of characters again.
TEST(Charsets, ReplacesManyUnsupportedCharacters) {
  QCString bytes;
  EXPECT_FALSE(EMAIL_Util::encWithCharset(bytes, QString(1000000, QChar(0x4E00)), 1));
  EXPECT_TRUE(bytes == QByteArray(1000000, '?'));
}

TEST(Charsets, ConvertsLongTexts) {
  QString text;
  for (int i = 0; i < 20000; ++i)
    text += QChar(0x4E00 + i % 5000);
  for (const int code : {12, 13}) {
    QCString bytes;
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, text, code));
    QString back;
    EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes, back, code));
    EXPECT_TRUE(back == text);
  }
}

TEST(Charsets, KeepsByteOrderMark) {
  const QString text = QString(QChar(0xFEFF)) + "a";
  for (const int code : {12, 13}) {
    QCString bytes;
    EXPECT_TRUE(EMAIL_Util::encWithCharset(bytes, text, code));
    QString back;
    EXPECT_TRUE(EMAIL_Util::decFromCharset(bytes, back, code));
    EXPECT_EQ(back.toStdU16String(), text.toStdU16String()) << code;
  }
}

// Quoted-printable

std::string encoded(const std::string& bytes) {
  const QCString result =
      EMAIL_Util::encQp(bytes.data(), static_cast<unsigned long>(bytes.size()), 0);
  return result.toStdString();
}

int hexDigit(char c) {
  const std::string digits = "0123456789ABCDEF";  // RFC 2045 wants them in upper case
  const std::size_t found = digits.find(c);
  return found == std::string::npos ? -1 : static_cast<int>(found);
}

// Decodes quoted-printable according to RFC 2045, 6.7. Sets `fault` if the text violates it or our
// own rules.
std::string decoded(const std::string& text, std::string& fault) {
  std::string bytes;
  std::size_t lineStart = 0;
  std::size_t limit = 76 - 52;
  const auto endLine = [&](std::size_t end) {
    const std::string line = text.substr(lineStart, end - lineStart);
    if (line.size() > limit)
      fault = "long line";
    if (!line.empty() && (line.front() == ' ' || line.back() == ' '))
      fault = "blank at an edge";
    lineStart = end + 1;
    limit = 76;
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '=' && i + 1 < text.size() && text[i + 1] == '\n') {
      endLine(i + 1);
      ++i;
      if (i + 1 == text.size())
        fault = "soft break at the end";
    } else if (c == '=') {
      const int high = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
      const int low = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
      if (high < 0 || low < 0)
        fault = "bad escape";
      bytes += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      if (c < ' ' || c > '~' || c == ';')
        fault = "raw byte";
      bytes += c;
    }
  }
  endLine(text.size());
  return bytes;
}

void expectSound(const std::string& bytes) {
  std::string fault;
  const std::string text = encoded(bytes);
  ASSERT_TRUE(decoded(text, fault) == bytes) << text;
  ASSERT_EQ(fault, "") << text;
}

TEST(QuotedPrintable, KnownTexts) {
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("Buy milk"), "Buy milk");
  EXPECT_EQ(encoded("a=b;c"), "a=3Db=3Bc");
  EXPECT_EQ(encoded("\xC3\xA9\x7F"), "=C3=A9=7F");
  EXPECT_EQ(encoded("a\r\nb\tc"), "a=0D=0Ab=09c");
  EXPECT_EQ(encoded(std::string("\0", 1)), "=00");
  EXPECT_EQ(encoded(" "), "=20");
  EXPECT_EQ(encoded(" a b "), "=20a b=20");
  EXPECT_EQ(EMAIL_Util::encQp(nullptr, 0, 0), "");
}

TEST(QuotedPrintable, BreaksLines) {
  EXPECT_EQ(encoded(std::string(23, 'x')), std::string(23, 'x'));
  const std::string many = encoded(std::string(200, 'x'));
  EXPECT_EQ(many, std::string(23, 'x') + "=\n" + std::string(75, 'x') + "=\n" +
                      std::string(75, 'x') + "=\n" + std::string(27, 'x'));
  EXPECT_EQ(
      EMAIL_Util::qpNameLength,
      static_cast<int>(std::string("DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:").size()));
}

TEST(QuotedPrintable, EveryLengthAndByteAtEveryPlace) {
  for (const char byte : {'x', ' ', '=', '\xE4', '\n'})
    for (std::size_t size = 0; size < 180; ++size) {
      expectSound(std::string(size, byte));
      expectSound(std::string(size, 'x') + byte);
      expectSound(std::string(size, 'x') + byte + "yy");
      expectSound(std::string(size, 'x') + std::string(3, byte) + "y");
    }
}

TEST(QuotedPrintable, RandomBytes) {
  std::mt19937 random(7);  // NOLINT: the same bytes each time
  for (int round = 0; round < 3000; ++round) {
    std::string bytes(random() % 400, '\0');
    const bool printable = round % 2 == 0;  // which includes many blanks
    for (char& byte : bytes)
      byte = static_cast<char>(printable ? " abc=;\xE9"[random() % 7] : random() % 256);
    expectSound(bytes);
  }
}

}  // namespace
