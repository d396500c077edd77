#include "vcal_guard.h"

#include "module_log.h"
#include "vcal_property.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <dlfcn.h>
#include <optional>
#include <utility>

namespace ulo {

namespace {

// Parser stack depth of the library: it needs one level for each item of a calendar, each property
// of the item and each parameter, two for each calendar and three for each field of a value, and
// fails at 490.
constexpr std::size_t libraryDepth = 450;
constexpr std::size_t depthOfCalendar = 2;
// A piece is complete when it has this many to-dos or bytes.
constexpr std::size_t pieceTodos = 100;
constexpr std::size_t pieceBytes = std::size_t{1} << 20;

constexpr char pieceStart[] = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n";
constexpr char pieceEnd[] = "END:VCALENDAR\r\n";
constexpr char todoStart[] = "BEGIN:VTODO\r\n";
constexpr char todoEnd[] = "END:VTODO\r\n";

// The components that the library knows.
constexpr std::array<std::string_view, 4> knownComponents = {"VCALENDAR", "VCARD", "VEVENT",
                                                             "VTODO"};

bool isKnown(std::string_view name) {
  return std::any_of(knownComponents.begin(), knownComponents.end(),
                     [name](std::string_view known) { return sameWord(known, name); });
}

// Logs the changes made to a text, up to loggedLimit lines.
class RepairLog {
public:
  void note(std::size_t line, const char* what) {
    if (++count_ <= loggedLimit)
      ULO_LOG_ERROR("vCalendar text, line %zu: %s", line, what);
  }
  void finish() {
    if (count_ > loggedLimit)
      ULO_LOG_ERROR("vCalendar text: %zu more lines left out or written anew",
                    count_ - loggedLimit);
    count_ = 0;
  }

private:
  std::size_t count_ = 0;
};

// Iterates over the components of a text. To-dos are those directly within a calendar; components
// unknown to the library count as part of the calendar, as they do in the library.
class TodoScanner {
public:
  enum class Event { end, broken, calendar, beginTodo, property, endTodo };

  explicit TodoScanner(ByteSource& source, RepairLog* log) : reader_(source), log_(log) {}

  Event next();
  // Valid after the event `property` until the next call.
  [[nodiscard]] const Property& property() const { return property_; }
  [[nodiscard]] std::size_t line() const { return property_.line; }
  // Returns true if the library reads everything so far correctly.
  [[nodiscard]] bool isClean() const { return clean_; }
  // After the event `broken`: the problem, and its line.
  [[nodiscard]] TextProblem problem() const { return problem_; }
  [[nodiscard]] std::size_t problemLine() const { return problemLine_; }
  // Returns true if calendars or vCards were found.
  [[nodiscard]] bool hasObjects() const { return objects_ > 0; }

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
  void leaveOut(const char* why) {
    clean_ = false;
    if (log_ != nullptr)
      log_->note(line(), why);
  }
  Event fail(TextProblem problem, std::size_t line) {
    problem_ = problem;
    problemLine_ = line;
    return Event::broken;
  }
  std::optional<Event> open(const std::string& name);
  std::optional<Event> close(const std::string& name);
  std::optional<Event> take();
  std::optional<Event> takeStray();

  PropertyReader reader_;
  RepairLog* log_;
  Property property_;
  std::vector<Component> open_;
  bool version2_ = false;
  bool clean_ = true;
  std::size_t stray_ = 0;       // bytes outside calendars
  std::size_t objects_ = 0;     // calendars and vCards
  std::size_t items_ = 0;       // of the calendar
  std::size_t properties_ = 0;  // of the item
  TextProblem problem_ = TextProblem::none;
  std::size_t problemLine_ = 0;
};

TodoScanner::Event TodoScanner::next() {
  while (reader_.next(property_, version2_)) {
    clean_ = clean_ && property_.clean;
    if (property_.blank)
      continue;
    const std::size_t depth = objects_ * depthOfCalendar + items_ + properties_;
    clean_ = clean_ && depth + property_.weight() <= libraryDepth;
    const bool begins = property_.isBegin();
    const std::string name = begins || property_.isEnd() ? property_.component() : std::string();
    const std::optional<Event> event = name.empty() ? take() : begins ? open(name) : close(name);
    if (event)
      return *event;
  }
  return open_.empty() ? Event::end : fail(TextProblem::truncated, open_.back().line);
}

std::optional<TodoScanner::Event> TodoScanner::open(const std::string& name) {
  const bool known = isKnown(name);
  if (open_.empty()) {
    if (name != "VCALENDAR" && name != "VCARD")
      return takeStray();
    open_.push_back({name, line()});
    ++objects_;
    items_ = properties_ = 0;
    version2_ = false;
    return name == "VCALENDAR" ? std::optional(Event::calendar) : std::nullopt;
  }
  if (name == "VCALENDAR")
    return fail(TextProblem::truncated, open_.back().line);
  if (open_.size() == itemPlace) {
    ++items_;
    properties_ = 0;
    if (!known)
      return std::nullopt;
    open_.push_back({name, line()});
    clean_ = clean_ && inCalendar() && name != "VCARD";
    return inTodo() ? std::optional(Event::beginTodo) : std::nullopt;
  }
  if (open_.size() == nestingLimit)
    return fail(TextProblem::malformed, line());
  ++properties_;
  clean_ = clean_ && !known;
  if (inTodo() && open_.size() == itemPlace + 1)
    leaveOut("component in a to-do left out");
  open_.push_back({name, line()});
  return std::nullopt;
}

std::optional<TodoScanner::Event> TodoScanner::close(const std::string& name) {
  if (open_.empty())
    return takeStray();
  const auto found = std::find_if(open_.rbegin(), open_.rend(),
                                  [&](const Component& open) { return open.name == name; });
  const auto place = static_cast<std::size_t>(open_.rend() - found) - 1;
  if (found == open_.rend()) {
    ++(open_.size() > itemPlace ? properties_ : items_);
    if (isKnown(name))
      leaveOut("END without its BEGIN left out");
    return std::nullopt;
  }
  if (place < itemPlace && open_.size() > itemPlace)
    return fail(TextProblem::truncated, open_[itemPlace].line);
  if (place + 1 < open_.size())
    leaveOut("END of a nested component is missing");
  const bool todo = place == itemPlace && inTodo();
  open_.resize(place);
  properties_ = place > itemPlace ? properties_ + 1 : 0;
  return todo ? std::optional(Event::endTodo) : std::nullopt;
}

std::optional<TodoScanner::Event> TodoScanner::take() {
  if (open_.empty())
    return takeStray();
  if (open_.size() == itemPlace) {
    ++items_;
    // The library would read it as a component with that name.
    clean_ = clean_ && !isKnown(property_.header.name);
    if (sameWord(property_.header.name, "VERSION"))
      version2_ = property_.value.find_first_not_of(" \t") == property_.value.find('2');
    return std::nullopt;
  }
  ++properties_;
  if (!inTodo() || open_.size() > itemPlace + 1)
    return std::nullopt;
  if (!property_.header.name.empty())
    return Event::property;
  leaveOut("is no property, left out");
  return std::nullopt;
}

std::optional<TodoScanner::Event> TodoScanner::takeStray() {
  leaveOut("outside of any calendar, left out");
  stray_ += property_.size;
  return stray_ > strayLimit ? std::optional(fail(TextProblem::notCalendar, 0)) : std::nullopt;
}

struct Verdict {
  TextReport report;
  bool clean = false;
  bool rejected = false;
};

Verdict examine(ByteSource& source) {
  TodoScanner scanner(source, nullptr);
  Verdict verdict;
  TextReport& report = verdict.report;
  bool calendar = false;
  bool more = true;
  while (more) {
    switch (scanner.next()) {
    case TodoScanner::Event::calendar:
      calendar = true;
      break;
    case TodoScanner::Event::endTodo:
      ++report.todos;
      break;
    case TodoScanner::Event::broken:
      report = {scanner.problem(), scanner.problemLine(), 0, {}};
      more = false;
      break;
    case TodoScanner::Event::end:
      report.problem = !calendar           ? TextProblem::notCalendar
                       : report.todos == 0 ? TextProblem::noTodo
                                           : TextProblem::none;
      verdict.clean = scanner.isClean() && scanner.hasObjects();
      more = false;
      break;
    case TodoScanner::Event::property:
      if (const Property& property = scanner.property(); property.tooLong)
        report.tooLarge.push_back({property.header.name, property.line});
      break;
    case TodoScanner::Event::beginTodo:
      break;
    }
  }
  if (source.failed()) {
    report = {TextProblem::unreadable, 0, 0, {}};
    verdict.clean = false;
  }
  verdict.rejected = !verdict.clean && report.problem != TextProblem::none &&
                     report.problem != TextProblem::noTodo;
  return verdict;
}

const Verdict unreadable{{TextProblem::unreadable, 0, 0, {}}, false, true};

const char* describe(TextProblem problem) {
  switch (problem) {
  case TextProblem::none:
    break;
  case TextProblem::unreadable:
    return "cannot be read";
  case TextProblem::notCalendar:
    return "holds no calendar";
  case TextProblem::noTodo:
    return "holds no to-do";
  case TextProblem::truncated:
    return "BEGIN without its END";
  case TextProblem::malformed:
    return "components nested too deep";
  }
  return "is right";
}

}  // namespace

struct GuardedText::State {
  State(ByteSource bytes, std::vector<std::string> names)
      : source(std::move(bytes)), verdict(examine(source)), properties(std::move(names)) {}
  explicit State(const Verdict& without) : source(std::string_view()), verdict(without) {}

  void appendTo(std::string& piece, const Property& property);

  ByteSource source;
  Verdict verdict;
  std::vector<std::string> properties;
  RepairLog log;
  std::optional<TodoScanner> scanner;  // scanner of the pieces
  bool finished = false;
  bool hasPiece = false;
  std::size_t todoStart = 0;       // offset of the to-do's properties in the piece
  std::size_t todoProperties = 0;  // properties of the to-do so far
};

void GuardedText::State::appendTo(std::string& piece, const Property& property) {
  if (std::none_of(properties.begin(), properties.end(),
                   [&](const std::string& name) { return sameWord(name, property.header.name); }))
    return;
  if (property.tooLong) {
    log.note(property.line, "property too long, left out");
    return;
  }
  if (todoProperties == todoPropertyLimit) {
    log.note(property.line, "too many properties in a to-do, left out");
    return;
  }
  const std::size_t before = piece.size();
  const Written written = appendProperty(piece, property);
  if (piece.size() - todoStart > todoLimit) {
    piece.resize(before);
    log.note(property.line, "to-do too large, left out");
    return;
  }
  switch (written) {
  case Written::asItIs:
    break;
  case Written::anew:
    log.note(property.line, "written anew");
    break;
  case Written::empty:
    log.note(property.line, "property without a value left out");
    return;
  case Written::unfit:
    log.note(property.line, "value that cannot be handed over left out");
    return;
  }
  ++todoProperties;
}

GuardedText::GuardedText(std::unique_ptr<State> state) : state_(std::move(state)) {}
GuardedText::GuardedText(GuardedText&& other) noexcept = default;
GuardedText::~GuardedText() = default;

GuardedText GuardedText::fromFile(const std::string& path, std::vector<std::string> properties) {
  Descriptor file = openRegularFile(path);
  return GuardedText(
      !file.isOpen() ? std::make_unique<State>(unreadable)
                     : std::make_unique<State>(ByteSource(std::move(file)), std::move(properties)));
}

GuardedText GuardedText::fromMemory(std::string_view text, std::vector<std::string> properties) {
  return GuardedText(std::make_unique<State>(ByteSource(text), std::move(properties)));
}

const TextReport& GuardedText::report() const {
  return state_->verdict.report;
}

bool GuardedText::isClean() const {
  return state_->verdict.clean;
}

bool GuardedText::nextPiece(std::string& piece) {
  State& state = *state_;
  if (state.finished)
    return false;
  if (state.verdict.rejected) {
    state.finished = true;
    ULO_LOG_ERROR("vCalendar text rejected, line %zu: %s", report().line,
                  describe(report().problem));
    return false;
  }
  if (!state.scanner) {
    state.source.rewind();
    state.scanner.emplace(state.source, &state.log);
  }

  piece = pieceStart;
  std::size_t todos = 0;
  std::size_t whole = piece.size();  // size up to the end of the last to-do
  while (!state.finished && todos < pieceTodos && whole < pieceBytes) {
    switch (state.scanner->next()) {
    case TodoScanner::Event::beginTodo:
      piece += todoStart;
      state.todoStart = piece.size();
      state.todoProperties = 0;
      break;
    case TodoScanner::Event::property:
      state.appendTo(piece, state.scanner->property());
      break;
    case TodoScanner::Event::endTodo:
      piece += todoEnd;
      whole = piece.size();
      ++todos;
      break;
    case TodoScanner::Event::calendar:
      break;
    case TodoScanner::Event::broken:  // the file has changed since it was examined
    case TodoScanner::Event::end:
      state.finished = true;
      state.log.finish();
      break;
    }
  }
  piece.resize(whole);
  piece += pieceEnd;
  const bool worthwhile = todos > 0 || !state.hasPiece;
  state.hasPiece = true;
  return worthwhile;
}

TextReport examineFile(const std::string& path) {
  return GuardedText::fromFile(path, {}).report();
}

TextReport examineText(std::string_view text) {
  return GuardedText::fromMemory(text, {}).report();
}

void keepVObjectLibrary() {
  static std::atomic<bool> kept = false;
  if (kept)
    return;
  void* handle = dlopen("libicalvcal.so", RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
  if (handle == nullptr)
    return;
  kept = true;
  dlclose(handle);
}

}  // namespace ulo
