// The components of a vCalendar text: which to-dos it has, which properties they have, and what in
// it is not part of a to-do.
#pragma once

#include "vcal_guard.h"
#include "vcal_property.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ulo {

// The repairs of a text, in order.
class RepairList {
public:
  void add(Repair repair, std::size_t line, std::string property = {});
  // The first loggedLimit repairs.
  [[nodiscard]] const std::vector<RepairNote>& first() const { return first_; }
  // The number of all.
  [[nodiscard]] std::size_t count() const { return count_; }

private:
  std::vector<RepairNote> first_;
  std::size_t count_ = 0;
};

// Iterates over the components of a text. To-dos are those directly within a calendar; components
// unknown to the library count as part of the calendar, as they do in the library.
class TodoScanner {
public:
  enum class Event { end, broken, calendar, beginTodo, property, endTodo };

  // Adds the omitted parts to `repairs`, unless that is null.
  explicit TodoScanner(ByteSource& source, RepairList* repairs = nullptr)
      : reader_(source), repairs_(repairs) {}

  // Returns the next event. `end` and `broken` are the last ones.
  Event next();
  [[nodiscard]] bool isFinished() const { return finished_; }
  // Valid after the event `property` until the next call.
  [[nodiscard]] const Property& property() const { return property_; }
  // Returns true if the library reads everything so far correctly.
  [[nodiscard]] bool isClean() const { return clean_; }
  // Returns true if calendars or vCards were found.
  [[nodiscard]] bool hasObjects() const { return objects_ > 0; }
  // The findings so far, without repairs. Complete after the last event.
  [[nodiscard]] const TextReport& report() const { return report_; }

private:
  struct Component {
    std::string name;
    std::size_t line;
  };
  // Indexes into `open_`: a calendar or vCard, its items, and components nested in those.
  static constexpr std::size_t itemPlace = 1;

  [[nodiscard]] bool inCalendar() const { return !open_.empty() && open_[0].name == "VCALENDAR"; }
  [[nodiscard]] bool inTodo() const {
    return inCalendar() && open_.size() > itemPlace && open_[itemPlace].name == "VTODO";
  }
  [[nodiscard]] std::size_t line() const { return property_.line; }
  void leaveOut(Repair repair) {
    clean_ = false;
    if (repairs_ != nullptr)
      repairs_->add(repair, line());
  }
  Event fail(TextProblem problem, std::size_t line) {
    report_ = {problem, line, 0, {}, {}, 0};
    return Event::broken;
  }
  Event scan();
  void record(Event event);
  std::optional<Event> open(const std::string& name);
  std::optional<Event> close(const std::string& name);
  std::optional<Event> take();
  std::optional<Event> takeStray();

  PropertyReader reader_;
  RepairList* repairs_;
  Property property_;
  std::vector<Component> open_;
  bool version2_ = false;
  bool clean_ = true;
  bool finished_ = false;
  bool calendar_ = false;
  std::size_t stray_ = 0;       // bytes outside calendars
  std::size_t objects_ = 0;     // calendars and vCards
  std::size_t items_ = 0;       // of the calendar
  std::size_t properties_ = 0;  // of the item
  TextReport report_;
};

}  // namespace ulo
