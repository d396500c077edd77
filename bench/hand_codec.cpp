#include "hand_codec.h"

#include "utc_zone.h"

#include <QDateTime>

#include <libical/vcc.h>
#include <libical/vobject.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace bench {
namespace {

constexpr const char* statusWords[] = {"COMPLETED", "NEEDS ACTION", "ACCEPTED", "SENT",
                                       "TENTATIVE", "CONFIRMED",    "DECLINED", "DELEGATED"};
constexpr int needsAction = 1;
constexpr int noDate = ZTASK_ENG_Task::noDateSeconds;

// The library stores bytes in wide characters.
QByteArray valueOf(VObject* property) {
  const wchar_t* wide = vObjectUStringZValue(property);
  if (wide == nullptr)
    return {};
  QByteArray bytes(static_cast<qsizetype>(std::wcslen(wide)), Qt::Uninitialized);
  for (qsizetype i = 0; i < bytes.size(); ++i)
    bytes[i] = wide[i] == 0x2028 ? '\n' : wide[i] == 0x2029 ? '\r' : static_cast<char>(wide[i]);
  return bytes;
}

// "20060305T120000Z"
QDateTime dateOf(const QByteArray& text) {
  int part[6] = {};
  if (std::sscanf(text.constData(), "%4d%2d%2dT%2d%2d%2dZ", &part[0], &part[1], &part[2], &part[3],
                  &part[4], &part[5]) != 6)
    throw std::runtime_error("a date of another form: " + text.toStdString());
  return QDateTime(QDate(part[0], part[1], part[2]), QTime(part[3], part[4], part[5]), ulo::utcZone)
      .toLocalTime();
}

int statusOf(const QByteArray& word) {
  for (std::size_t i = 0; i < std::size(statusWords); ++i)
    if (word == statusWords[i])
      return static_cast<int>(i);
  return needsAction;
}

template <typename Visit> void forEachProperty(VObject* object, Visit visit) {
  VObjectIterator iterator;
  initPropIterator(&iterator, object);
  while (moreIteration(&iterator) != 0)
    visit(nextVObject(&iterator));
}

void readProperty(VObject* property, Task& task) {
  const QByteArray value = valueOf(property);
  if (value.isEmpty())
    return;
  const char* name = vObjectName(property);
  const auto is = [name](const char* other) { return std::strcmp(name, other) == 0; };
  if (is(VCSummaryProp)) {
    task.setString(Task::TASK_FIELD_SUMMARY, QString::fromUtf8(value));
  } else if (is(VCDescriptionProp)) {
    task.setString(Task::TASK_FIELD_NOTE, QString::fromUtf8(value));
  } else if (is(VCCategoriesProp)) {
    task.setString(Task::TASK_FIELD_CATEGORY, QString::fromUtf8(value));
  } else if (is(VCStatusProp)) {
    task.setStatus(statusOf(value));
  } else if (is(VCDueProp)) {
    task.setDateTime(Task::TASK_FIELD_DUE, dateOf(value));
  } else if (is(VCCompletedProp)) {
    if (task.getStatusValue() == needsAction)
      task.setStatus(0);
    task.setDateTime(Task::TASK_FIELD_END, dateOf(value));
  } else if (is(VCPriorityProp)) {
    task.setPriority(std::atoi(value.constData()));
  } else if (is(VCDAlarmProp)) {
    if (VObject* time = isAPropertyOf(property, VCRunTimeProp))
      task.setDateTime(Task::TASK_FIELD_ALARM, dateOf(valueOf(time)));
  }
}

void readTodos(VObject* first, QList<Task>& tasks) {
  if (first == nullptr)
    throw std::runtime_error("the vObject library reads nothing");
  for (VObject* object = first; object != nullptr;) {
    if (std::strcmp(vObjectName(object), VCCalProp) == 0)
      forEachProperty(object, [&](VObject* todo) {
        if (std::strcmp(vObjectName(todo), VCTodoProp) != 0)
          return;
        auto task = std::make_unique<Task>();
        forEachProperty(todo, [&](VObject* property) { readProperty(property, *task); });
        tasks.append(task.release());
      });
    VObject* next = nextVObjectInList(object);
    cleanVObject(object);
    object = next;
  }
}

// Encodes quoted-printable (RFC 2045) in lines of 76 characters, with soft breaks in the form that
// the library's writer passes on. The first line leaves `room` characters for the property's name.
QByteArray quotedPrintable(const QByteArray& text, int room) {
  constexpr char hex[] = "0123456789ABCDEF";
  QByteArray result;
  result.reserve(text.size() * 3 / 2);
  bool atStart = true;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const auto fits = [&](bool start) {
      return c > ' ' ? c <= '~' && c != '=' && c != ';' : c == ' ' && !start && i + 1 < text.size();
    };
    if ((fits(atStart) ? 1 : 3) > room - 1) {
      result += "=\n";
      room = 76;
      atStart = true;
    }
    if (fits(atStart)) {
      result += c;
      room -= 1;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      const char encoded[] = {'=', hex[byte >> 4U], hex[byte & 15U]};
      result.append(encoded, sizeof encoded);
      room -= 3;
    }
    atStart = false;
  }
  return result;
}

// The space in the first line after the longest name.
constexpr int firstLine = 76 - int{sizeof "DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE"};

void addText(VObject* todo, const char* name, const QString& text) {
  if (!text.isEmpty())
    addPropValue(todo, name, quotedPrintable(text.toUtf8(), firstLine).constData());
}

void addDate(VObject* object, const char* name, const QDateTime& date) {
  addPropValue(object, name, date.toUTC().toString(u"yyyyMMdd'T'HHmmss'Z'").toLatin1().constData());
}

bool isSet(const QDateTime& date) {
  return date.toSecsSinceEpoch() != noDate;
}

void addTodo(VObject* calendar, const Task& task) {
  VObject* todo = addProp(calendar, VCTodoProp);
  const auto status = static_cast<unsigned>(task.getStatusValue());
  addPropValue(todo, VCStatusProp,
               statusWords[status < std::size(statusWords) ? status : unsigned{needsAction}]);
  addText(todo, "SUMMARY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE",
          task.getString(Task::TASK_FIELD_SUMMARY));
  addText(todo, "DESCRIPTION;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE",
          task.getString(Task::TASK_FIELD_NOTE));
  addText(todo, "CATEGORY;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE",
          task.getString(Task::TASK_FIELD_CATEGORY));
  if (const QDateTime due = task.getDateTime(Task::TASK_FIELD_DUE); isSet(due))
    addPropValue(todo, VCDueProp,
                 (due.date().toString(u"yyyyMMdd") + "T120000Z").toLatin1().constData());
  if (const QDateTime end = task.getDateTime(Task::TASK_FIELD_END); isSet(end))
    addDate(todo, VCCompletedProp, end);
  if (const QDateTime alarm = task.getDateTime(Task::TASK_FIELD_ALARM); isSet(alarm))
    addDate(addProp(todo, VCDAlarmProp), VCRunTimeProp, alarm);
  addPropValue(todo, VCPriorityProp, QByteArray::number(task.getPriorityValue()).constData());
}

}  // namespace

void readTodosFromMemory(const QByteArray& text, QList<Task>& tasks) {
  readTodos(Parse_MIME(text.constData(), static_cast<unsigned long>(text.size())), tasks);
}

void readTodosFromFile(const std::string& fileName, QList<Task>& tasks) {
  readTodos(Parse_MIME_FromFileName(fileName.c_str()), tasks);
}

void writeTodos(const std::string& fileName, const QList<Task>& tasks) {
  VObject* calendar = newVObject(VCCalProp);
  addPropValue(calendar, VCVersionProp, "1.0");
  for (uint i = 0; i < tasks.count(); ++i)
    addTodo(calendar, *tasks.at(i));
  std::FILE* file = std::fopen(fileName.c_str(), "wb");
  if (file == nullptr)
    throw std::runtime_error("can't write " + fileName);
  int length = 0;
  char* text = writeMemVObject(nullptr, &length, calendar);
  const std::size_t size = std::strlen(text);
  const bool written = std::fwrite(text, 1, size, file) == size;
  std::free(text);
  cleanVObject(calendar);
  if (std::fclose(file) != 0 || !written)
    throw std::runtime_error("can't write " + fileName);
}

}  // namespace bench
