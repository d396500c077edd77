#include "task_json.h"

#include "dates.h"
#include "task_dates.h"
#include "task_words.h"
#include "text.h"

#include <QChar>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ulotask {
namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

void appendUtf8(std::string& json, char32_t c) {
  const auto tail = [&](unsigned shift) {
    json += static_cast<char>(0x80U | ((c >> shift) & 0x3FU));
  };
  if (c < 0x800) {
    json += static_cast<char>(0xC0U | (c >> 6U));
  } else if (c < 0x10000) {
    json += static_cast<char>(0xE0U | (c >> 12U));
    tail(6);
  } else {
    json += static_cast<char>(0xF0U | (c >> 18U));
    tail(12);
    tail(6);
  }
  tail(0);
}

void appendEscape(std::string& json, char32_t c) {
  constexpr std::string_view escaped = "\"\\\b\f\n\r\t";
  constexpr std::string_view letters = "\"\\bfnrt";
  json += '\\';
  if (const std::size_t i = escaped.find(static_cast<char>(c)); c < 0x80 && i != escaped.npos) {
    json += letters[i];
    return;
  }
  json += "u00";
  json += hexDigits[(c >> 4U) & 15U];
  json += hexDigits[c & 15U];
}

// Some terminals interpret U+007F to U+009F.
bool isEscaped(char32_t c) {
  return c < 0x20 || c == '"' || c == '\\' || (c >= 0x7F && c < 0xA0);
}

bool isPlain(QChar unit) {
  return unit.unicode() < 0x80 && !isEscaped(unit.unicode());
}

// Half a surrogate pair becomes U+FFFD, because JSON texts are UTF-8.
void appendText(std::string& json, const QString& text) {
  json += '"';
  for (auto next = text.begin(); next != text.end(); ++next) {
    const auto run = next;
    next = std::find_if_not(run, text.end(), isPlain);
    json.resize(json.size() + static_cast<std::size_t>(next - run));
    std::transform(run, next, json.end() - (next - run),
                   [](QChar unit) { return static_cast<char>(unit.unicode()); });
    if (next == text.end())
      break;
    const QChar unit = *next;
    char32_t c = unit.unicode();
    if (unit.isHighSurrogate() && next + 1 != text.end() && next[1].isLowSurrogate())
      c = QChar::surrogateToUcs4(unit, *++next);
    else if (unit.isSurrogate())
      c = replacementCharacter;
    if (isEscaped(c))
      appendEscape(json, c);
    else
      appendUtf8(json, c);
  }
  json += '"';
}

// Appends the members of an object, one per line.
class Members {
public:
  Members(std::string& json, std::size_t indent) : json_(json), indent_(indent) {}

  void add(std::string_view name, const QString& text) {
    begin(name);
    if (text.isNull())
      json_ += "null";
    else
      appendText(json_, text);
  }
  void add(std::string_view name, const QDateTime& date) {
    begin(name);
    if (ulo::hasDate(date))
      json_.append(1, '"').append(ulo::formatUtc(date).toStdString()).append(1, '"');
    else
      json_ += "null";
  }
  void addNumber(std::string_view name, std::int64_t number) {
    begin(name);
    json_ += std::to_string(number);
  }
  void addWord(std::string_view name, std::string_view word) {
    begin(name);
    json_.append(1, '"').append(word).append(1, '"');
  }
  void addFlag(std::string_view name, bool flag) {
    begin(name);
    json_ += flag ? "true" : "false";
  }

private:
  void begin(std::string_view name) {
    json_ += isFirst_ ? "\n" : ",\n";
    isFirst_ = false;
    json_.append(indent_, ' ').append(1, '"').append(name).append("\": ");
  }

  std::string& json_;
  std::size_t indent_;
  bool isFirst_ = true;
};

void append(std::string& json, const ZTASK_ENG_Task& task, const JsonExtras& extras,
            std::size_t indent) {
  using Task = ZTASK_ENG_Task;
  json += '{';
  Members members(json, indent + 4);
  members.add("alarm", task.getInstant(Task::TASK_FIELD_ALARM));
  members.add("category", task.getString(Task::TASK_FIELD_CATEGORY));
  members.addFlag("completed", ulo::isCompleted(task));
  members.add("due", task.getInstant(Task::TASK_FIELD_DUE));
  members.add("end", task.getInstant(Task::TASK_FIELD_END));
  if (extras.import != nullptr)
    members.addWord("import", extras.import);
  members.add("note", task.getString(Task::TASK_FIELD_NOTE));
  members.addNumber("priority", task.getPriorityValue());
  members.addWord("priorityClass", ulo::entryOf(ulo::priorityOf(task)).word);
  if (extras.repeats)
    members.addFlag("repeats", *extras.repeats);
  members.add("revision", task.getInstant(Task::TASK_FIELD_REVISION));
  members.addNumber("status", task.getStatusValue());
  members.addWord("statusWord", ulo::entryOf(task.getStatusValue()).word);
  members.add("summary", task.getString(Task::TASK_FIELD_SUMMARY));
  members.addNumber("uid", task.getUINT32(Task::TASK_FIELD_UID));
  members.add("uuid", task.getString(Task::TASK_FIELD_UUID));
  json.append(1, '\n').append(indent, ' ').append(1, '}');
}

}  // namespace

std::string jsonOf(const ZTASK_ENG_Task& task, const JsonExtras& extras) {
  std::string json;
  append(json, task, extras, 0);
  return json + '\n';
}

std::string TaskArray::add(const ZTASK_ENG_Task& task, const JsonExtras& extras) {
  constexpr std::size_t indent = 4;
  std::string json = isEmpty_ ? "[\n" : ",\n";
  isEmpty_ = false;
  json.append(indent, ' ');
  append(json, task, extras, indent);
  return json;
}

}  // namespace ulotask
