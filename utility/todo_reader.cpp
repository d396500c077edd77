#include "todo_reader.h"

#include "UTIL_TimeConversion.h"
#include "codec_log.h"
#include "todo_values.h"
#include "vobject_library.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

namespace ulo {

namespace {

using Task = ZTASK_ENG_Task;

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

// Null if memory is short.
QCString valueOf(VObject* property) {
  const std::unique_ptr<char, decltype(&vobject::release)> value(
      vobject::vObjectUStringZValue(property), &vobject::release);
  return QCString(value.get());
}

// Calls `visit` for each property of the object until it returns false.
template <typename Visit> void forEachProperty(VObject* object, Visit visit) {
  VObjectIterator iterator{};
  vobject::initPropIterator(&iterator, object);
  while (vobject::moreIteration(&iterator) != 0) {
    VObject* property = vobject::nextVObject(&iterator);
    if (property == nullptr || !visit(property))
      return;
  }
}

void releaseFrom(VObject* object) {
  while (object != nullptr)
    vobject::cleanVObject(std::exchange(object, vobject::nextVObjectInList(object)));
}

// Calls `visit` for each VTODO of the calendars among the top-level objects, beginning with
// `first`, and releases the objects. If `visit` returns false, stops without releasing the
// remaining objects and returns false.
template <typename Visit> bool forEachTodoIn(VObject* first, Visit visit) {
  for (VObject* object = first; object != nullptr;) {
    bool goOn = true;
    try {
      if (isNamed(object, "VCALENDAR"))
        forEachProperty(object, [&](VObject* property) {
          goOn = !isNamed(property, "VTODO") || visit(property);
          return goOn;
        });
    } catch (...) {
      releaseFrom(object);
      throw;
    }
    if (!goOn)
      return false;
    VObject* following = vobject::nextVObjectInList(object);
    vobject::cleanVObject(object);
    object = following;
  }
  return true;
}

// Returns the value of the last CHARSET of the property; empty if it has none.
QCString charsetOf(VObject* property) {
  QCString name;
  forEachProperty(property, [&](VObject* parameter) {
    if (isNamed(parameter, "CHARSET"))
      name = QCString(vobject::vObjectStringZValue(parameter));
    return true;
  });
  return name;
}

// Leaves an instant in UTC as it is, because the store needs no local time.
void setInstant(Task& task, Task::TASK_FIELD_T field, const QDateTime& instant) {
  const qint64 seconds = instant.toSecsSinceEpoch();
  if (instant.timeSpec() == Qt::UTC && seconds >= INT32_MIN && seconds <= INT32_MAX)
    task.setSeconds(field, static_cast<int>(seconds));
  else
    task.setDateTime(field, UTIL_TimeConversion::toLocalTime(instant));
}

thread_local bool lacksValue = false;

// Reads one to-do. Calls `undecoded` with the field of each text that is not valid in its character
// set. If memory is short, returns null, or sets `valueIsLost` and goes on without the value.
template <typename Undecoded>
std::unique_ptr<Task> toTaskRec(VObject* todo, const Undecoded& undecoded, bool& valueIsLost) {
  std::unique_ptr<Task> task(new (std::nothrow) Task);
  if (task == nullptr) {
    codec_log::recordNotAllocated();
    return nullptr;
  }
  const auto valueOrLoss = [&](VObject* property) {
    QCString value = valueOf(property);
    valueIsLost |= value.isNull();
    return value;
  };
  const auto setText = [&](Task::TASK_FIELD_T field, VObject* property, const QCString& value) {
    QString text;
    if (!decodeCharset(value, charsetOf(property), text))
      undecoded(field);
    task->setString(field, text);
  };
  forEachProperty(todo, [&](VObject* property) {
    const char* name = vobject::vObjectName(property);
    const QCString value = valueOrLoss(property);
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
      setInstant(*task, Task::TASK_FIELD_END, UTIL_TimeConversion::instantFromISO8601(value));
      break;
    case TodoProperty::status:
      task->setStatus(getStatusValue(value));
      break;
    case TodoProperty::summary:
      setText(Task::TASK_FIELD_SUMMARY, property, value);
      break;
    case TodoProperty::description:
      setText(Task::TASK_FIELD_NOTE, property, value);
      break;
    case TodoProperty::categories:
      setText(Task::TASK_FIELD_CATEGORY, property, value);
      break;
    case TodoProperty::due:
      setInstant(*task, Task::TASK_FIELD_DUE, dueDateFromText(value));
      break;
    case TodoProperty::dalarm:
      forEachProperty(property, [&](VObject* field) {
        if (isNamed(field, "RUNTIME"))
          setInstant(*task, Task::TASK_FIELD_ALARM,
                     UTIL_TimeConversion::instantFromISO8601(valueOrLoss(field)));
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

}  // namespace

TodoReader::TodoReader(std::string_view text, std::string path, GuardedText guarded)
    : text_(text), path_(std::move(path)), guarded_(std::move(guarded)) {}

TodoReader TodoReader::fromMemory(std::string_view text, std::size_t kept) {
  return {text, {}, GuardedText::fromMemory(text, namesOfTodoProperties(), kept)};
}

TodoReader TodoReader::fromFile(std::string path) {
  GuardedText guarded = GuardedText::fromFile(path, namesOfTodoProperties());
  return {{}, std::move(path), std::move(guarded)};
}

// Parses the next part of the text. `first` is null if the library rejects it. Returns false at the
// end.
bool TodoReader::nextPart(VObject*& first) {
  if (isFinished_)
    return false;
  keepVObjectLibrary();
  if (guarded_.isClean()) {
    isFinished_ = true;
    first = path_.empty() ? vobject::Parse_MIME(text_.data(), text_.size())
                          : vobject::Parse_MIME_FromFileName(path_.c_str());
    return true;
  }
  isFinished_ = !guarded_.nextPiece(piece_);
  if (!isFinished_)
    first = vobject::Parse_MIME(piece_.data(), piece_.size());
  return !isFinished_;
}

bool TodoReader::readPart(std::vector<std::unique_ptr<Task>>& tasks, ReadReport& report) {
  VObject* first = nullptr;
  const bool isPart = nextPart(first);
  if (isPart) {
    hasParsed_ = first != nullptr;
    const auto take = [&](VObject* todo) {
      bool valueIsLost = false;
      const auto undecoded = [&](Task::TASK_FIELD_T field) {
        if (report.undecoded.size() < loggedLimit)
          report.undecoded.push_back({todos_, field});
      };
      std::unique_ptr<Task> task = toTaskRec(todo, undecoded, valueIsLost);
      if (valueIsLost) {
        lacksValue = true;
        report.failure = ReadFailure::memory;
      }
      if (task == nullptr) {
        codec_log::todoNotRead();
        report.failure = ReadFailure::memory;
        return false;
      }
      tasks.push_back(std::move(task));
      ++todos_;
      return true;
    };
    if (hasParsed_ && forEachTodoIn(first, take))
      return true;
    isFinished_ = true;
  }
  report.text = guarded_.report();
  if (!hasParsed_) {
    codec_log::textNotParsed();
    todos_ = 0;
    report.undecoded.clear();
  }
  if (report.text.problem != TextProblem::none)
    report.failure = ReadFailure::text;
  else if (report.failure == ReadFailure::none && todos_ != report.text.todos)
    report.failure = ReadFailure::library;
  return false;
}

TodosRead TodoReader::read() {
  lacksValue = false;
  TodosRead result;
  while (readPart(result.tasks, result.report)) {
  }
  if (!hasParsed_)
    result.tasks.clear();
  return result;
}

bool lastReadLacksValue() {
  return lacksValue;
}

bool TodoReader::hasTodo() {
  bool found = false;
  for (VObject* first = nullptr; nextPart(first) && first != nullptr;)
    forEachTodoIn(first, [&](VObject*) { return found = true; });
  return found;
}

struct TodoSlices::State {
  TodoReader reader;
  ReadReport report;
  std::optional<vobject::Library> library;
};

TodoSlices::TodoSlices(std::string_view text, std::size_t kept)
    : state_(new State{TodoReader::fromMemory(text, kept), {}, {}}) {
  ReadReport& report = state_->report;
  report.text = state_->reader.report();
  if (report.text.problem != TextProblem::none)
    report.failure = ReadFailure::text;
}

TodoSlices::~TodoSlices() = default;

const ReadReport& TodoSlices::report() const {
  return state_->report;
}

bool TodoSlices::next(std::vector<std::unique_ptr<ZTASK_ENG_Task>>& tasks) {
  tasks.clear();
  if (state_->report.failure != ReadFailure::none)
    return false;
  if (!state_->library)
    state_->library.emplace();
  const bool isRead =
      state_->reader.readPart(tasks, state_->report) && state_->report.failure == ReadFailure::none;
  if (!isRead) {
    state_->library.reset();
    tasks.clear();
  }
  return isRead;
}

TodosRead readTodos(std::string_view text) {
  TodoReader reader = TodoReader::fromMemory(text);
  if (reader.report().problem != TextProblem::none)
    return {{}, {ReadFailure::text, reader.report(), {}}};
  const vobject::Library library;
  TodosRead result = reader.read();
  if (result.report.failure == ReadFailure::memory)
    result.tasks.clear();
  return result;
}

}  // namespace ulo
