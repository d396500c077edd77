#include "ZVtodoParser.h"

#include "CAL_ENG_FileDirect.h"
#include "EMAIL_Util.h"
#include "UTIL_TimeConversion.h"
#include "codec_log.h"
#include "module_log.h"
#include "vcal_guard.h"
#include "vobject_library.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace codec_log {

void libraryNotOpened() {
  ULO_LOG_ERROR("Failed to open libicalvcal.so!!");
}

void functionMissing(const char* name) {
  ULO_LOG_ERROR("Cannot invoke call %s", name);
}

void valueNotAllocated() {
  ULO_LOG_ERROR("Unable to allocate memory");
}

void textNotWritten() {
  ULO_LOG_ERROR("Unable to write vcard");
}

void textNotParsed() {
  ULO_LOG_ERROR("open object failed!!");
}

void recordNotAllocated() {
  ULO_LOG_ERROR("Memary is full!!");
}

void todoNotRead() {
  ULO_LOG_ERROR("toTaskRec failed!");
}

void charsetFound(const char* name) {
  ULO_LOG_ERROR("Charset is %s", name);
}

void dueDateIgnored() {
  ULO_LOG_ERROR("It's local sync, no due");
}

void fileNotOpened() {
  ULO_LOG_ERROR("Unable to open vcard write");
}

}  // namespace codec_log

namespace {

// The status words of vCalendar 1.0 by their code.
constexpr std::array<const char*, 8> statusWords = {"COMPLETED", "NEEDS ACTION", "ACCEPTED",
                                                    "SENT",      "TENTATIVE",    "CONFIRMED",
                                                    "DECLINED",  "DELEGATED"};
constexpr int statusCompleted = 0;
constexpr int statusNeedsAction = 1;
constexpr int statusUnknown = 8;

// How a status is recognised: the first word that the text contains decides. The words in lower
// case are those of the platform's own export.
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

constexpr std::array<WordCode, 3> priorityWords = {{{"HIGH", 1}, {"NORMAL", 2}, {"LOW", 3}}};
constexpr int priorityNone = 0;

// Names of character sets, in upper case, as texts declare them.
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

// The properties of a VTODO that are read.
enum class TodoProperty {
  completed,
  status,
  summary,
  description,
  categories,
  due,
  dalarm,
  priority
};
struct PropertyName {
  const char* name;
  TodoProperty property;
};
constexpr std::array<PropertyName, 8> todoProperties = {{
    {"COMPLETED", TodoProperty::completed},
    {"STATUS", TodoProperty::status},
    {"SUMMARY", TodoProperty::summary},
    {"DESCRIPTION", TodoProperty::description},
    {"CATEGORIES", TodoProperty::categories},
    {"DUE", TodoProperty::due},
    {"DALARM", TodoProperty::dalarm},
    {"PRIORITY", TodoProperty::priority},
}};

std::vector<std::string> namesOfTodoProperties() {
  std::vector<std::string> names;
  names.reserve(todoProperties.size());
  for (const PropertyName& known : todoProperties)
    names.emplace_back(known.name);
  return names;
}

bool isNamed(VObject* object, const char* name) {
  const char* own = vobject::vObjectName(object);
  return own != nullptr && std::strcmp(own, name) == 0;
}

QCString valueOf(VObject* property) {
  const std::unique_ptr<char, decltype(&vobject::release)> value(
      vobject::vObjectUStringZValue(property), &vobject::release);
  return QCString(value.get());
}

// Calls `visit` with each property of the object; ends when it gives false.
template <typename Visit> void forEachProperty(VObject* object, Visit visit) {
  VObjectIterator iterator{};
  vobject::initPropIterator(&iterator, object);
  while (vobject::moreIteration(&iterator) != 0) {
    VObject* property = vobject::nextVObject(&iterator);
    if (property == nullptr || !visit(property))
      return;
  }
}

// Calls `visit` with each VTODO of the calendars among the top-level objects from `first` on, and
// releases the objects. False when `visit` ended it; what is left is then not released.
template <typename Visit> bool forEachTodo(VObject* first, Visit visit) {
  for (VObject* object = first; object != nullptr;) {
    bool goOn = true;
    if (isNamed(object, "VCALENDAR"))
      forEachProperty(object, [&](VObject* property) {
        goOn = !isNamed(property, "VTODO") || visit(property);
        return goOn;
      });
    if (!goOn)
      return false;
    VObject* following = vobject::nextVObjectInList(object);
    vobject::cleanVObject(object);
    object = following;
  }
  return true;
}

// The same for a whole text, which `parse` parses when it needs no repair. False when the library
// makes nothing of it.
template <typename Parse, typename Visit>
bool forEachTodo(ulo::GuardedText text, Parse parse, Visit visit) {
  ulo::keepVObjectLibrary();
  if (text.isClean()) {
    VObject* first = parse();
    forEachTodo(first, visit);
    return first != nullptr;
  }
  bool parsed = false;
  std::string piece;
  while (text.nextPiece(piece)) {
    VObject* first = vobject::Parse_MIME(piece.data(), piece.size());
    parsed = first != nullptr;
    if (!parsed || !forEachTodo(first, visit))
      break;
  }
  return parsed;
}

// The library makes nothing of a text: no record of it remains.
void giveUp(QList<ZTASK_ENG_Task>& tasks) {
  codec_log::textNotParsed();
  for (uint i = 0; i < tasks.count() && !tasks.autoDelete(); ++i)
    delete tasks.at(i);
  tasks.clear();
}

// Texts of local synchronisation carry a date of the first hours of 1970 for none.
QDateTime dueDate(const QCString& value) {
  QDateTime due = UTIL_TimeConversion::fromISO8601(value);
  if (due.isValid() && due >= QDateTime(QDate(1970, 1, 2), QTime(0, 0, 0, 0)))
    return due;
  codec_log::dueDateIgnored();
  return ZTASK_ENG_Task::noDate();
}

// Quoted-printable of the text in UTF-8.
QString encodeText(const QString& text) {
  QCString bytes;
  EMAIL_Util::encWithCharset(bytes, text, EMAIL_Util::charsetUtf8);
  const unsigned long length = bytes.isNull() ? 0 : std::strlen(bytes.constData());
  return QString::fromLatin1(EMAIL_Util::encQp(bytes.constData(), length, 0));
}

// A text field as it can be written: what UTF-8 cannot hold is replaced.
QString wellFormed(const QString& text) {
  const QByteArray utf8 = text.toUtf8();
  if (utf8.isEmpty() || utf8.front() == '\0')
    return QString();
  // QString::fromUtf8 would drop a byte order mark at the beginning.
  return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(utf8);
}

bool isSet(const QDateTime& dateTime) {
  return UTIL_TimeConversion::toUTC(dateTime) != ZTASK_ENG_Task::noDateSeconds;
}

QString twoDigits(int number) {
  return QString(number <= 9 ? "0%1" : "%1").arg(number);
}

// The local date at noon UTC, whatever the time of day.
QString dueValue(const QDate& date) {
  return QString("%1").arg(date.year()) + twoDigits(date.month()) + twoDigits(date.day()) +
         "T120000Z";
}

QString fullValue(const QDateTime& dateTime) {
  return QString::fromLatin1(UTIL_TimeConversion::toISO8601(dateTime));
}

void addTodo(VObject* calendar, ZTASK_ENG_Task& task, const QString& charset) {
  using Task = ZTASK_ENG_Task;
  const auto addText = [charset](VObject* todo, const char* name, const QString& text) {
    const QString full =
        QString("%1;CHARSET=%2;ENCODING=QUOTED-PRINTABLE").arg(QLatin1String(name), charset);
    vobject::addPropValue(todo, full.toLatin1().constData(), encodeText(text));
  };

  VObject* todo = vobject::addProp(calendar, "VTODO");
  const auto status = static_cast<unsigned int>(task.getStatusValue());
  vobject::addPropValue(
      todo, "STATUS",
      statusWords[status < statusWords.size() ? status : unsigned{statusNeedsAction}]);
  addText(todo, "SUMMARY", wellFormed(task.getString(Task::TASK_FIELD_SUMMARY)));
  addText(todo, "DESCRIPTION", wellFormed(task.getString(Task::TASK_FIELD_NOTE)));
  addText(todo, "CATEGORY", task.getString(Task::TASK_FIELD_CATEGORY));
  if (const QDateTime due = task.getDateTime(Task::TASK_FIELD_DUE); isSet(due))
    vobject::addPropValue(todo, "DUE", dueValue(UTIL_TimeConversion::toLocalTime(due).date()));
  if (const QDateTime end = task.getDateTime(Task::TASK_FIELD_END); isSet(end))
    vobject::addPropValue(todo, "COMPLETED", fullValue(end));
  // A year of five digits has no value; an empty DALARM would take the place of none.
  if (const QDateTime alarm = task.getDateTime(Task::TASK_FIELD_ALARM); isSet(alarm))
    if (const QString runTime = fullValue(alarm); !runTime.isEmpty())
      vobject::addPropValue(vobject::addProp(todo, "DALARM"), "RUNTIME", runTime);
  vobject::addPropValue(todo, "PRIORITY", QString::number(task.getPriorityValue()));
}

}  // namespace

ZVtodoParser::ZVtodoParser() {
  vobject::open();
}

ZVtodoParser::~ZVtodoParser() {
  vobject::close();
}

bool ZVtodoParser::isVtodo(const QString& fileName) {
  const QByteArray name = fileName.toUtf8();
  bool found = false;
  forEachTodo(
      ulo::GuardedText::fromFile(name.toStdString(), namesOfTodoProperties()),
      [&] { return vobject::Parse_MIME_FromFileName(name.constData()); },
      [&](VObject*) { return found = true; });
  return found;
}

void ZVtodoParser::readVtodo(const QCString& text, QList<ZTASK_ENG_Task>& tasks) {
  const std::string_view bytes =
      text.isNull() ? std::string_view() : std::string_view(text.constData());
  tasks.clear();
  const bool parsed = forEachTodo(
      ulo::GuardedText::fromMemory(bytes, namesOfTodoProperties()),
      [&] { return vobject::Parse_MIME(bytes.data(), bytes.size()); },
      [&](VObject* todo) { return appendTaskRec(todo, tasks); });
  if (!parsed)
    giveUp(tasks);
}

void ZVtodoParser::readVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks) {
  const QByteArray name = fileName.toUtf8();
  tasks.clear();
  const bool parsed = forEachTodo(
      ulo::GuardedText::fromFile(name.toStdString(), namesOfTodoProperties()),
      [&] { return vobject::Parse_MIME_FromFileName(name.constData()); },
      [&](VObject* todo) { return appendTaskRec(todo, tasks); });
  if (!parsed)
    giveUp(tasks);
}

bool ZVtodoParser::appendTaskRec(VObject* todo, QList<ZTASK_ENG_Task>& tasks) {
  const ZTASK_ENG_Task* task = toTaskRec(todo);
  if (task == nullptr) {
    codec_log::todoNotRead();
    return false;
  }
  tasks.append(task);
  return true;
}

ZTASK_ENG_Task* ZVtodoParser::toTaskRec(VObject* todo) {
  using Task = ZTASK_ENG_Task;
  auto* task = new (std::nothrow) Task;
  if (task == nullptr) {
    codec_log::recordNotAllocated();
    return nullptr;
  }
  forEachProperty(todo, [&](VObject* property) {
    const char* name = vobject::vObjectName(property);
    const QCString value = valueOf(property);
    if (name == nullptr || *name == '\0' || value.isEmpty())
      return true;
    const auto* known = std::find_if(
        todoProperties.begin(), todoProperties.end(),
        [name](const PropertyName& candidate) { return std::strcmp(candidate.name, name) == 0; });
    if (known == todoProperties.end())
      return true;
    switch (known->property) {
    case TodoProperty::completed:
      if (task->getStatusValue() == statusNeedsAction)
        task->setStatus(statusCompleted);
      task->setDateTime(Task::TASK_FIELD_END, UTIL_TimeConversion::fromISO8601(value));
      break;
    case TodoProperty::status:
      task->setStatus(getStatusValue(value));
      break;
    case TodoProperty::summary:
      task->setString(Task::TASK_FIELD_SUMMARY, decodeCharset(property, value));
      break;
    case TodoProperty::description:
      task->setString(Task::TASK_FIELD_NOTE, decodeCharset(property, value));
      break;
    case TodoProperty::categories:
      task->setString(Task::TASK_FIELD_CATEGORY, decodeCharset(property, value));
      break;
    case TodoProperty::due:
      task->setDateTime(Task::TASK_FIELD_DUE, dueDate(value));
      break;
    case TodoProperty::dalarm:
      forEachProperty(property, [&](VObject* field) {
        if (isNamed(field, "RUNTIME"))
          task->setDateTime(Task::TASK_FIELD_ALARM,
                            UTIL_TimeConversion::fromISO8601(valueOf(field)));
        return true;
      });
      break;
    case TodoProperty::priority:
      task->setPriority(getPriorityValue(value));
      break;
    }
    return true;
  });
  return task;
}

int ZVtodoParser::getStatusValue(const QCString& text) {
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

int ZVtodoParser::getPriorityValue(const QCString& text) {
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

QString ZVtodoParser::decodeCharset(VObject* property, const QCString& value) {
  QCString name;
  forEachProperty(property, [&](VObject* parameter) {
    if (isNamed(parameter, "CHARSET"))
      name = QCString(vobject::vObjectStringZValue(parameter));
    return true;
  });
  name = name.upper();
  CharsetName charset = unknownCharset;
  for (const CharsetName& known : charsetNames)
    if (name == known.name)
      charset = known;
  codec_log::charsetFound(charset.logged);

  QString text = QString::fromLatin1(value);
  EMAIL_Util::decFromCharset(value, text, charset.charset);
  return text;
}

void ZVtodoParser::writeVtodo(const QString& fileName, QList<ZTASK_ENG_Task>& tasks) {
  CAL_ENG_FileDirect file(fileName);
  if (!file.open(QIODevice::WriteOnly) || file.stream() == nullptr) {
    codec_log::fileNotOpened();
    return;
  }
  ulo::keepVObjectLibrary();
  VObject* calendar = buildVCalendar(tasks);
  vobject::writeVObject(file.stream(), calendar);
  vobject::cleanVObject(calendar);
}

void ZVtodoParser::writeVtodo(const QString& fileName, ZTASK_ENG_Task* task) {
  if (task == nullptr)
    return;
  QList<ZTASK_ENG_Task> tasks;
  tasks.append(task);
  writeVtodo(fileName, tasks);
}

VObject* ZVtodoParser::buildVCalendar(QList<ZTASK_ENG_Task>& tasks) {
  VObject* calendar = vobject::newVObject("VCALENDAR");
  vobject::addPropValue(calendar, "VERSION", "1.0");
  QCString charset;
  EMAIL_Util::charsetEnumToStr(EMAIL_Util::charsetUtf8, charset);
  for (uint i = 0; i < tasks.count(); ++i)
    if (ZTASK_ENG_Task* task = tasks.at(i))
      addTodo(calendar, *task, QString::fromLatin1(charset));
  return calendar;
}
