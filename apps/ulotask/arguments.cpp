#include "arguments.h"

#include "exit_codes.h"
#include "task_format.h"

#include <QStringDecoder>

#include <algorithm>
#include <charconv>

namespace ulotask {
namespace {

// Dates before this one are read from calendars as no date at all.
const QDate earliestDate(1970, 1, 2);
// The last whole day before the no-date value in every time zone.
const QDate latestDate(2038, 1, 17);

constexpr char lowestPriority = '9';

}  // namespace

QString argumentText(const std::string& argument, const char* name) {
  QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  QString text = decoder(QByteArrayView(argument.data(), static_cast<qsizetype>(argument.size())));
  if (decoder.hasError())
    throw Failure(Exit::usage, std::string("the ") + name + " is not UTF-8: " + argument);
  return text;
}

unsigned int argumentUid(const std::string& argument) {
  unsigned int uid = 0;
  const char* end = argument.data() + argument.size();
  const auto [stop, error] = std::from_chars(argument.data(), end, uid);
  if (error != std::errc() || stop != end)
    throw Failure(Exit::usage, "\"" + argument + "\" is no UID");
  return uid;
}

std::vector<unsigned int> argumentUids(const std::vector<std::string>& arguments) {
  std::vector<unsigned int> uids;
  for (const std::string& argument : arguments) {
    const unsigned int uid = argumentUid(argument);
    if (std::find(uids.begin(), uids.end(), uid) == uids.end())
      uids.push_back(uid);
  }
  return uids;
}

QDateTime argumentDate(const std::string& text, const char* name) {
  constexpr qsizetype dateLength = 10;  // of yyyy-MM-dd
  const QString all = QString::fromStdString(text);
  const QDate date = QDate::fromString(all.left(dateLength), "yyyy-MM-dd");
  const QString rest = all.mid(dateLength);
  QDateTime result;
  if (rest.isEmpty()) {
    result = date.startOfDay();
  } else if (rest[0] == ' ' || rest[0] == 'T') {
    QTime time = QTime::fromString(rest.mid(1), "HH:mm");
    if (!time.isValid())
      time = QTime::fromString(rest.mid(1), "HH:mm:ss");
    if (date.isValid() && time.isValid()) {
      result = QDateTime(date, time);
      if (!result.isValid() || result.time() != time)
        throw Failure(Exit::usage, std::string(name) + ": there is no local time \"" + text +
                                       "\", the clocks change over it");
    }
  }
  if (!result.isValid())
    throw Failure(Exit::usage, std::string(name) + ": \"" + text +
                                   "\" is no date; write 2026-03-05 or \"2026-03-05 18:00\"");
  if (date < earliestDate || date > latestDate)
    throw Failure(Exit::usage, std::string(name) + ": \"" + text + "\" is not between " +
                                   earliestDate.toString(Qt::ISODate).toStdString() + " and " +
                                   latestDate.toString(Qt::ISODate).toStdString());
  return result;
}

QDateTime argumentDateOrNone(const std::string& text, const char* name) {
  return text == "none" ? ZTASK_ENG_Task::noDate() : argumentDate(text, name);
}

QString argumentCategory(const std::string& argument) {
  return argument.empty() ? QString() : argumentText(argument, "category");
}

std::vector<std::string> statusArguments() {
  std::vector<std::string> arguments(std::begin(statusWords), std::end(statusWords));
  for (std::string& argument : arguments)
    std::replace(argument.begin(), argument.end(), ' ', '-');
  return arguments;
}

int argumentStatus(const std::string& word) {
  const std::vector<std::string> arguments = statusArguments();
  std::string known;
  for (std::size_t status = 0; status < arguments.size(); ++status) {
    if (word == statusWords[status] || word == arguments[status])
      return static_cast<int>(status);
    known += (status == 0 ? "" : ", ") + arguments[status];
  }
  throw Failure(Exit::usage, "--status: \"" + word + "\" is none of " + known);
}

int argumentPriority(const std::string& text) {
  if (text.size() == 1 && text[0] >= '0' && text[0] <= lowestPriority)
    return text[0] - '0';
  for (const PriorityClass& entry : priorityClasses) {
    if (text == entry.word)
      return entry.priority;
  }
  throw Failure(Exit::usage, "--priority: \"" + text + "\" is not 0 to 9, high, normal or low");
}

}  // namespace ulotask
