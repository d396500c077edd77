#include "todo_writer.h"

#include "EMAIL_Util.h"
#include "todo_values.h"
#include "vcal_guard.h"
#include "vobject_library.h"

#include <deque>
#include <future>
#include <optional>
#include <utility>

namespace ulo {

namespace {

using Task = ZTASK_ENG_Task;

// The library's tree of a calendar. The destructor calls the library even if there is no tree, so
// that a missing function is logged.
class CalendarTree {
public:
  CalendarTree() : object_(vobject::newVObject("VCALENDAR")) {}
  CalendarTree(CalendarTree&& other) noexcept
      : object_(std::exchange(other.object_, std::nullopt)) {}
  CalendarTree(const CalendarTree&) = delete;
  CalendarTree& operator=(const CalendarTree&) = delete;
  ~CalendarTree() {
    if (object_)
      vobject::cleanVObject(*object_);
  }

  // Null if the library failed.
  [[nodiscard]] VObject* get() const { return object_.value_or(nullptr); }

private:
  std::optional<VObject*> object_;
};

// Builds a calendar.
class CalendarBuilder {
public:
  CalendarBuilder();

  // `index` is that of the task in the list.
  void addTodo(std::size_t index, const Task& task);

  // Null if the library failed.
  [[nodiscard]] VObject* calendar() const { return calendar_.get(); }
  [[nodiscard]] WriteReport& report() { return report_; }

private:
  VObject* addProperty(VObject* object, const char* name);
  void addValue(VObject* object, const char* name, const QByteArray& value);
  // A name and the parameters of a text.
  [[nodiscard]] static QByteArray textName(const char* name);
  void noteLoss(std::size_t index, Task::TASK_FIELD_T field) {
    report_.lossy.push_back({index, field});
  }

  CalendarTree calendar_;
  QByteArray summary_;
  QByteArray description_;
  QByteArray category_;
  WriteReport report_;
};

CalendarBuilder::CalendarBuilder() {
  if (calendar() == nullptr)
    report_.failure = WriteFailure::library;
  addValue(calendar(), "VERSION", "1.0");
  summary_ = textName("SUMMARY");
  description_ = textName("DESCRIPTION");
  // Contracts: not CATEGORIES, which the reader expects, and not repaired.
  category_ = textName("CATEGORY");
}

QByteArray CalendarBuilder::textName(const char* name) {
  QCString charset;
  EMAIL_Util::charsetEnumToStr(EMAIL_Util::charsetUtf8, charset);
  return QByteArray(name) + ";CHARSET=" + charset + ";ENCODING=QUOTED-PRINTABLE";
}

VObject* CalendarBuilder::addProperty(VObject* object, const char* name) {
  VObject* property = vobject::addProp(object, name);
  if (property == nullptr)
    report_.failure = WriteFailure::library;
  return property;
}

// An empty value adds nothing.
void CalendarBuilder::addValue(VObject* object, const char* name, const QByteArray& value) {
  if (vobject::addPropBytes(object, name, value) == nullptr && !value.isEmpty())
    report_.failure = WriteFailure::library;
}

void CalendarBuilder::addTodo(std::size_t index, const Task& task) {
  VObject* todo = addProperty(calendar(), "VTODO");
  if (todo != nullptr)
    ++report_.todos;
  addValue(todo, "STATUS", statusText(task.getStatusValue()));

  const auto addText = [&](const QByteArray& name, Task::TASK_FIELD_T field, bool isRepaired) {
    const QString text = task.getString(field);
    const bool isLossy = !isWritable(text);
    if (isLossy)
      noteLoss(index, field);
    addValue(todo, name.constData(),
             encodeText(isLossy && isRepaired ? wellFormedText(text) : text));
  };
  addText(summary_, Task::TASK_FIELD_SUMMARY, true);
  addText(description_, Task::TASK_FIELD_NOTE, true);
  addText(category_, Task::TASK_FIELD_CATEGORY, false);

  const auto timeOf = [&](Task::TASK_FIELD_T field) {
    const QDateTime dateTime = task.getInstant(field);
    if (!isSet(dateTime))
      return QByteArray();
    QByteArray text = dateTimeText(dateTime);
    if (text.isEmpty())
      noteLoss(index, field);
    return text;
  };
  if (const QDateTime due = task.getInstant(Task::TASK_FIELD_DUE); isSet(due))
    addValue(todo, "DUE", dueDateText(due));
  addValue(todo, "COMPLETED", timeOf(Task::TASK_FIELD_END));
  // Readers that use the library take the next line for the value of an empty DALARM.
  if (const QByteArray runTime = timeOf(Task::TASK_FIELD_ALARM); !runTime.isEmpty())
    addValue(addProperty(todo, "DALARM"), "RUNTIME", runTime);
  addValue(todo, "PRIORITY", QByteArray::number(task.getPriorityValue()));
}

CalendarBuilder buildVCalendar(const QList<Task>& tasks) {
  CalendarBuilder builder;
  for (uint i = 0; i < tasks.count(); ++i)
    if (const Task* task = tasks.at(i))
      builder.addTodo(i, *task);
  return builder;
}

TodosWritten writtenBy(CalendarBuilder& builder, std::optional<std::string> text) {
  TodosWritten result{std::move(text).value_or(std::string()), std::move(builder.report())};
  if (result.text.empty())
    result.report = {WriteFailure::library, 0, {}};
  return result;
}

}  // namespace

struct TodoPages::State {
  struct Page {
    CalendarBuilder builder;
    std::future<std::optional<std::string>> text;
  };

  vobject::Library library;
  std::deque<Page> pages;
};

TodoPages::TodoPages() : state_(std::make_unique<State>()) {
  keepVObjectLibrary();
}

TodoPages::~TodoPages() {
  while (count() > 0)
    static_cast<void>(take());
}

void TodoPages::add(const QList<ZTASK_ENG_Task>& tasks) {
  CalendarBuilder builder = buildVCalendar(tasks);
  // Without a thread, take() writes the text.
  auto text =
      std::async(std::launch::async | std::launch::deferred, vobject::textTask(builder.calendar()));
  state_->pages.push_back({std::move(builder), std::move(text)});
}

std::size_t TodoPages::count() const {
  return state_->pages.size();
}

TodosWritten TodoPages::take() {
  State::Page page = std::move(state_->pages.front());
  state_->pages.pop_front();
  return writtenBy(page.builder, page.text.get());
}

TodosWritten writeTodos(const QList<ZTASK_ENG_Task>& tasks) {
  const vobject::Library library;
  keepVObjectLibrary();
  CalendarBuilder builder = buildVCalendar(tasks);
  return writtenBy(builder, vobject::textOf(builder.calendar()));
}

void writeTodos(std::FILE* stream, const QList<ZTASK_ENG_Task>& tasks) {
  keepVObjectLibrary();
  const CalendarBuilder builder = buildVCalendar(tasks);
  vobject::writeVObject(stream, builder.calendar());
}

}  // namespace ulo
