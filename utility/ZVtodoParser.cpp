#include "ZVtodoParser.h"

#include "CAL_ENG_FileDirect.h"
#include "EMAIL_Util.h"
#include "UTIL_TimeConversion.h"
#include "codec_log.h"
#include "module_log.h"
#include "todo_values.h"
#include "vcal_guard.h"
#include "vobject_library.h"

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

void addTodo(VObject* calendar, ZTASK_ENG_Task& task, const QString& charset) {
  using Task = ZTASK_ENG_Task;
  const auto addText = [charset](VObject* todo, const char* name, const QString& text) {
    const QString full =
        QString("%1;CHARSET=%2;ENCODING=QUOTED-PRINTABLE").arg(QLatin1String(name), charset);
    vobject::addPropValue(todo, full.toLatin1().constData(), ulo::encodeText(text));
  };

  VObject* todo = vobject::addProp(calendar, "VTODO");
  vobject::addPropValue(todo, "STATUS", ulo::statusText(task.getStatusValue()));
  addText(todo, "SUMMARY", ulo::wellFormedText(task.getString(Task::TASK_FIELD_SUMMARY)));
  addText(todo, "DESCRIPTION", ulo::wellFormedText(task.getString(Task::TASK_FIELD_NOTE)));
  addText(todo, "CATEGORY", task.getString(Task::TASK_FIELD_CATEGORY));
  if (const QDateTime due = task.getDateTime(Task::TASK_FIELD_DUE); ulo::isSet(due))
    vobject::addPropValue(todo, "DUE", ulo::dueDateText(due));
  if (const QDateTime end = task.getDateTime(Task::TASK_FIELD_END); ulo::isSet(end))
    vobject::addPropValue(todo, "COMPLETED", ulo::dateTimeText(end));
  // A year of five digits has no value; an empty DALARM would take the place of none.
  if (const QDateTime alarm = task.getDateTime(Task::TASK_FIELD_ALARM); ulo::isSet(alarm))
    if (const QString runTime = ulo::dateTimeText(alarm); !runTime.isEmpty())
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
      if (task->getStatusValue() == ulo::statusNeedsAction)
        task->setStatus(ulo::statusCompleted);
      task->setDateTime(Task::TASK_FIELD_END, UTIL_TimeConversion::fromISO8601(value));
      break;
    case TodoProperty::status:
      task->setStatus(ulo::statusFromText(value));
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
      task->setDateTime(Task::TASK_FIELD_DUE, ulo::dueDateFromText(value));
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
      task->setPriority(ulo::priorityFromText(value));
      break;
    }
    return true;
  });
  return task;
}

QString ZVtodoParser::decodeCharset(VObject* property, const QCString& value) {
  QCString name;
  forEachProperty(property, [&](VObject* parameter) {
    if (isNamed(parameter, "CHARSET"))
      name = QCString(vobject::vObjectStringZValue(parameter));
    return true;
  });
  QString text;
  ulo::decodeText(value, name, text);
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
