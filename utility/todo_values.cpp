// The log texts in this file are contracts: see docs/compatibility.md.
#include "todo_values.h"

#include "EMAIL_Util.h"
#include "UTIL_TimeConversion.h"
#include "ZTASK_ENG_Task.h"
#include "codec_log.h"
#include "module_log.h"
#include "well_formed.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace ulo {

namespace {

// The status words of vCalendar 1.0 by their code.
constexpr std::array<const char*, 8> statusWords = {"COMPLETED", "NEEDS ACTION", "ACCEPTED",
                                                    "SENT",      "TENTATIVE",    "CONFIRMED",
                                                    "DECLINED",  "DELEGATED"};

// How a status is recognized: the first of these words that the text contains decides. The words in
// lower case are those of the platform's own export.
struct WordCode {
  const char* word;
  int code;
};
constexpr std::array<WordCode, 10> statusTests = {{
    {statusWords[0], 0},
    {statusWords[1], 1},
    {"uncompleted", statusNeedsAction},
    {"completed", statusCompleted},
    {statusWords[2], 2},
    {statusWords[3], 3},
    {statusWords[4], 4},
    {statusWords[5], 5},
    {statusWords[6], 6},
    {statusWords[7], 7},
}};

// The codes are a contract: 2 and 3 are shown as high.
constexpr std::array<WordCode, 3> priorityWords = {{{"HIGH", 1}, {"NORMAL", 2}, {"LOW", 3}}};
constexpr int priorityNone = 0;

// The names by which texts declare character sets, in upper case.
struct CharsetName {
  const char* name;
  int charset;
  const char* logged;
};
constexpr std::array<CharsetName, 9> charsetNames = {{
    {"GBK", EMAIL_Util::charsetGbk, "GBK"},
    {"GB2312", EMAIL_Util::charsetGb2312, "GB2312"},
    {"BIG5", EMAIL_Util::charsetBig5, "BIG5"},
    {"UTF-7", EMAIL_Util::charsetUtf7, "UTF-7"},
    {"UTF7", EMAIL_Util::charsetUtf7, "UTF-7"},
    {"UTF-8", EMAIL_Util::charsetUtf8, "UTF-8"},
    {"UTF8", EMAIL_Util::charsetUtf8, "UTF-8"},
    {"USASCII", EMAIL_Util::charsetUsAscii, "USASCII"},
    {"US-ASCII", EMAIL_Util::charsetUsAscii, "USASCII"},
}};
constexpr CharsetName unknownCharset = {"", EMAIL_Util::charsetUnknown, "default unknow"};

}  // namespace

int getStatusValue(const QCString& text) {
  moduleLog(logTrace, "Entering function %s\nbegin getStatusValue", "getStatusValue");
  int code = statusUnknown;
  for (const WordCode& test : statusTests) {
    if (text.contains(test.word, true) != 0) {
      code = test.code;
      break;
    }
  }
  moduleLog(logTrace, "Exiting function %s\nend getStatusValue", "getStatusValue");
  return code;
}

int getPriorityValue(const QCString& text) {
  moduleLog(logTrace, "Entering function %s\nbegin getPriorityValue", "getPriorityValue");
  bool isNumber = false;
  int code = QString::fromLatin1(text).toInt(&isNumber, 10);
  if (!isNumber) {
    code = priorityNone;
    for (const WordCode& known : priorityWords)
      if (text == known.word)
        code = known.code;
  }
  moduleLog(logTrace, "Exiting function %s\nend getPriorityValue", "getPriorityValue");
  return code;
}

QDateTime dueDateFromText(const QCString& text) {
  QDateTime due = UTIL_TimeConversion::instantFromISO8601(text);
  // Later than the beginning of that day in any zone, whose conversion takes longer.
  constexpr qint64 surelyLater = qint64{3} * 86400;
  if (due.isValid() && (due.toSecsSinceEpoch() >= surelyLater ||
                        due >= QDateTime(QDate(1970, 1, 2), QTime(0, 0, 0, 0))))
    return due;
  codec_log::dueDateIgnored();
  return ZTASK_ENG_Task::noDate();
}

bool decodeCharset(const QCString& bytes, const QCString& charsetName, QString& text) {
  const QCString name = charsetName.upper();
  CharsetName charset = unknownCharset;
  for (const CharsetName& known : charsetNames)
    if (name == known.name)
      charset = known;
  codec_log::charsetFound(charset.logged);

  text = QString::fromLatin1(bytes);
  return EMAIL_Util::decFromCharset(bytes, text, charset.charset);
}

const char* statusText(int status) {
  const auto index = static_cast<unsigned int>(status);
  return statusWords[index < statusWords.size() ? index : unsigned{statusNeedsAction}];
}

QByteArray dueDateText(const QDateTime& due) {
  // Only the day is needed, which Qt finds faster if the time is valid.
  const QDateTime local = due.isValid() ? due.toLocalTime() : UTIL_TimeConversion::toLocalTime(due);
  const QDate date = local.date();
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%d%02d%02dT120000Z", date.year(), date.month(),
                date.day());
  return text.data();
}

QByteArray dateTimeText(const QDateTime& dateTime) {
  return UTIL_TimeConversion::toISO8601(dateTime);
}

bool isWritable(const QString& text) {
  return text.isValidUtf16() && !text.contains(QChar(0));
}

QString wellFormedText(const QString& text) {
  if (text.isEmpty() || text.front().isNull())
    return QString();
  return wellFormed(text, u'?');
}

QByteArray encodeText(const QString& text) {
  QCString bytes;
  EMAIL_Util::encWithCharset(bytes, text, EMAIL_Util::charsetUtf8);
  const unsigned long length = bytes.isNull() ? 0 : std::strlen(bytes.constData());
  return EMAIL_Util::encQp(bytes.constData(), length, 0);
}

bool isSet(const QDateTime& dateTime) {
  return UTIL_TimeConversion::toUTC(dateTime) != ZTASK_ENG_Task::noDateSeconds;
}

}  // namespace ulo
