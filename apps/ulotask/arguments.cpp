#include "arguments.h"

#include "dates.h"
#include "exit_codes.h"

#include <QStringDecoder>

#include <algorithm>
#include <charconv>

namespace ulotask {
namespace {

constexpr char lowestPriority = '9';

std::string reasonOf(ulo::DateProblem problem, const std::string& text) {
  const std::string quoted = '"' + text + '"';
  switch (problem) {
  case ulo::DateProblem::skipped:
    return "the clocks skip the local time " + quoted;
  case ulo::DateProblem::outOfRange:
    return quoted + " is not between " + ulo::earliestDay().toString(Qt::ISODate).toStdString() +
           " and " + ulo::latestDay().toString(Qt::ISODate).toStdString();
  case ulo::DateProblem::none:
  case ulo::DateProblem::notDate:
    break;
  }
  return "invalid date " + quoted + "; use 2026-03-05 or \"2026-03-05 18:00\"";
}

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
    throw Failure(Exit::usage, "\"" + argument + "\" is not a valid UID");
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

QDateTime argumentDateOrNone(const std::string& text, const char* name) {
  if (text == "none")
    return ZTASK_ENG_Task::noDate();
  const ulo::ParsedDate parsed = ulo::parseDate(QString::fromStdString(text));
  if (parsed.problem != ulo::DateProblem::none)
    throw Failure(Exit::usage, std::string(name) + ": " + reasonOf(parsed.problem, text));
  return parsed.dateTime;
}

QString argumentCategory(const std::string& argument) {
  return argument.empty() ? QString() : argumentText(argument, "category");
}

std::vector<std::string> statusArguments() {
  std::vector<std::string> arguments;
  for (const ulo::StatusEntry& entry : ulo::statuses) {
    arguments.emplace_back(entry.word);
    std::replace(arguments.back().begin(), arguments.back().end(), ' ', '-');
  }
  return arguments;
}

ulo::Status argumentStatus(const std::string& word) {
  const std::vector<std::string> arguments = statusArguments();
  std::string known;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (word == ulo::statuses[i].word || word == arguments[i])
      return ulo::statuses[i].status;
    known += (i == 0 ? "" : ", ") + arguments[i];
  }
  throw Failure(Exit::usage, "--status: \"" + word + "\" is not one of " + known);
}

int argumentPriority(const std::string& text) {
  if (text.size() == 1 && text[0] >= '0' && text[0] <= lowestPriority)
    return text[0] - '0';
  for (const ulo::PriorityEntry& entry : ulo::priorities) {
    if (text == entry.word)
      return codeOf(entry.priority);
  }
  throw Failure(Exit::usage, "--priority: \"" + text + "\" is not 0 to 9, high, normal or low");
}

}  // namespace ulotask
