#include "vcal_guard.h"

#include "module_log.h"
#include "vcal_property.h"
#include "vcal_scanner.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <dlfcn.h>
#include <optional>
#include <string>
#include <utility>

namespace ulo {

namespace {

// A piece is complete when it has this many to-dos or bytes.
constexpr std::size_t pieceTodos = 100;
constexpr std::size_t pieceBytes = std::size_t{1} << 20;

constexpr char libraryName[] = "libicalvcal.so";
constexpr char pieceStart[] = "BEGIN:VCALENDAR\r\nVERSION:1.0\r\n";
constexpr char pieceEnd[] = "END:VCALENDAR\r\n";
constexpr char todoStart[] = "BEGIN:VTODO\r\n";
constexpr char todoEnd[] = "END:VTODO\r\n";

struct Verdict {
  TextReport report;
  bool clean = false;
  bool rejected = false;
};

Verdict unreadable() {
  return {{TextProblem::unreadable, 0, 0, {}, {}, 0}, false, true};
}

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

const char* describe(Repair repair) {
  switch (repair) {
  case Repair::rewritten:
    return "written anew";
  case Repair::noValue:
    return "property without a value left out";
  case Repair::noForm:
    return "value that cannot be handed over left out";
  case Repair::propertyTooLong:
    return "property too long, left out";
  case Repair::tooManyProperties:
    return "too many properties in a to-do, left out";
  case Repair::todoTooLarge:
    return "to-do too large, left out";
  case Repair::notProperty:
    return "is no property, left out";
  case Repair::nestedComponent:
    return "component in a to-do left out";
  case Repair::missingEnd:
    return "END of a nested component is missing";
  case Repair::endWithoutBegin:
    return "END without its BEGIN left out";
  case Repair::outsideCalendar:
    return "outside of any calendar, left out";
  }
  return "repaired";
}

// A calendar for the library.
struct Piece {
  std::string text;
  std::size_t repairs = 0;  // of the text so far
  bool isLast = false;
};

// Scans a text and makes its pieces.
class PieceMaker {
public:
  PieceMaker(ByteSource& source, const std::vector<std::string>& properties)
      : properties_(properties), scanner_(source, &repairs_) {}
  PieceMaker(const PieceMaker&) = delete;
  PieceMaker& operator=(const PieceMaker&) = delete;

  // Returns false if there are no more to-dos; a text without any has one piece.
  bool next(Piece& piece);
  [[nodiscard]] const TodoScanner& scanner() const { return scanner_; }
  [[nodiscard]] const RepairList& repairs() const { return repairs_; }

private:
  void append(std::string& text, const Property& property);
  void note(Repair repair, const Property& property) {
    repairs_.add(repair, property.line, property.header.name);
  }

  const std::vector<std::string>& properties_;
  RepairList repairs_;
  TodoScanner scanner_;
  bool hasPiece_ = false;
  std::size_t todoStart_ = 0;       // offset of the to-do's properties in the piece
  std::size_t todoProperties_ = 0;  // properties of the to-do so far
};

void PieceMaker::append(std::string& text, const Property& property) {
  if (std::none_of(properties_.begin(), properties_.end(),
                   [&](const std::string& name) { return sameWord(name, property.header.name); }))
    return;
  if (property.tooLong)
    return note(Repair::propertyTooLong, property);
  if (todoProperties_ == todoPropertyLimit)
    return note(Repair::tooManyProperties, property);
  const std::size_t before = text.size();
  const Written written = appendProperty(text, property);
  if (text.size() - todoStart_ > todoLimit) {
    text.resize(before);
    return note(Repair::todoTooLarge, property);
  }
  switch (written) {
  case Written::asItIs:
    break;
  case Written::anew:
    note(Repair::rewritten, property);
    break;
  case Written::empty:
    return note(Repair::noValue, property);
  case Written::unfit:
    return note(Repair::noForm, property);
  }
  ++todoProperties_;
}

bool PieceMaker::next(Piece& piece) {
  std::string& text = piece.text;
  text = pieceStart;
  std::size_t todos = 0;
  std::size_t whole = text.size();  // size up to the end of the last to-do
  while (!scanner_.isFinished() && todos < pieceTodos && whole < pieceBytes) {
    switch (scanner_.next()) {
    case TodoScanner::Event::beginTodo:
      text += todoStart;
      todoStart_ = text.size();
      todoProperties_ = 0;
      break;
    case TodoScanner::Event::property:
      append(text, scanner_.property());
      break;
    case TodoScanner::Event::endTodo:
      text += todoEnd;
      whole = text.size();
      ++todos;
      break;
    case TodoScanner::Event::calendar:
    case TodoScanner::Event::broken:  // rejected, or a file that has changed since it was scanned
    case TodoScanner::Event::end:
      break;
    }
  }
  text.resize(whole);
  text += pieceEnd;
  piece.repairs = repairs_.count();
  piece.isLast = scanner_.isFinished();
  const bool isPiece = todos > 0 || !hasPiece_;
  hasPiece_ = true;
  return isPiece;
}

}  // namespace

struct GuardedText::State {
  State(ByteSource bytes, std::vector<std::string> names, std::size_t kept)
      : source(std::move(bytes)), properties(std::move(names)) {
    scan(kept);
  }
  explicit State(Verdict without) : source(std::string_view()), verdict(std::move(without)) {}

  bool next(std::string& piece);

  ByteSource source;
  Verdict verdict;
  std::vector<std::string> properties;
  std::deque<Piece> pieces;
  RepairList repairs;               // made for `pieces`
  std::optional<PieceMaker> maker;  // unless the pieces are kept
  bool finished = false;

private:
  void scan(std::size_t most);
  void decide(const TodoScanner& scanner);
  void logRepairs(const RepairList& list, std::size_t count, bool isLast);

  bool kept_ = false;
  std::size_t logged_ = 0;  // repairs
};

void GuardedText::State::scan(std::size_t most) {
  TodoScanner scanner(source);
  while (!scanner.isFinished() && (scanner.isClean() || properties.empty()))
    scanner.next();
  if (scanner.isFinished()) {
    decide(scanner);
    return;
  }
  source.rewind();
  PieceMaker pieceMaker(source, properties);
  std::size_t size = 0;
  for (Piece piece; pieceMaker.next(piece);) {
    size += piece.text.size();
    if (size <= most)
      pieces.push_back(std::move(piece));
    else
      pieces.clear();
  }
  kept_ = size <= most;
  repairs = pieceMaker.repairs();
  decide(pieceMaker.scanner());
  if (verdict.rejected) {
    pieces.clear();
  } else {
    verdict.report.repairs = repairs.first();
    verdict.report.moreRepairs = repairs.count() - repairs.first().size();
  }
}

void GuardedText::State::decide(const TodoScanner& scanner) {
  TextReport& report = verdict.report;
  report = scanner.report();
  const bool isWhole = report.problem != TextProblem::truncated &&
                       report.problem != TextProblem::malformed && !source.failed();
  if (source.failed())
    report = {TextProblem::unreadable, 0, 0, {}, {}, 0};
  verdict.clean = isWhole && scanner.isClean() && scanner.hasObjects();
  verdict.rejected = !verdict.clean && report.problem != TextProblem::none &&
                     report.problem != TextProblem::noTodo;
}

// Logs the repairs up to the number `count`.
void GuardedText::State::logRepairs(const RepairList& list, std::size_t count, bool isLast) {
  for (; logged_ < std::min(count, list.first().size()); ++logged_) {
    const RepairNote& note = list.first()[logged_];
    ULO_LOG_ERROR("vCalendar text, line %zu: %s", note.line, describe(note.repair));
  }
  if (isLast && list.count() > loggedLimit)
    ULO_LOG_ERROR("vCalendar text: %zu more lines left out or written anew",
                  list.count() - loggedLimit);
  finished = isLast;
}

bool GuardedText::State::next(std::string& piece) {
  if (!kept_) {
    if (!maker) {
      source.rewind();
      maker.emplace(source, properties);
    }
    Piece made;
    const bool isPiece = maker->next(made);
    logRepairs(maker->repairs(), maker->repairs().count(), made.isLast);
    piece = std::move(made.text);
    return isPiece;
  }
  if (pieces.empty()) {
    logRepairs(repairs, repairs.count(), true);
    return false;
  }
  Piece& first = pieces.front();
  logRepairs(repairs, first.repairs, first.isLast);
  piece = std::move(first.text);
  pieces.pop_front();
  return true;
}

GuardedText::GuardedText(std::unique_ptr<State> state) : state_(std::move(state)) {}
GuardedText::GuardedText(GuardedText&& other) noexcept = default;
GuardedText::~GuardedText() = default;

GuardedText GuardedText::fromFile(const std::string& path, std::vector<std::string> properties) {
  Descriptor file = openRegularFile(path);
  return GuardedText(!file.isOpen() ? std::make_unique<State>(unreadable())
                                    : std::make_unique<State>(ByteSource(std::move(file)),
                                                              std::move(properties), keptLimit));
}

GuardedText GuardedText::fromMemory(std::string_view text, std::vector<std::string> properties,
                                    std::size_t kept) {
  return GuardedText(std::make_unique<State>(ByteSource(text), std::move(properties), kept));
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
  return state.next(piece);
}

TextReport examineFile(const std::string& path) {
  return GuardedText::fromFile(path, {}).report();
}

TextReport examineText(std::string_view text) {
  return GuardedText::fromMemory(text, {}).report();
}

std::string vObjectLibraryFailure() {
  // It is needed soon after, and loading it twice would take twice the time.
  if (void* handle = dlopen(libraryName, RTLD_LAZY | RTLD_NODELETE); handle != nullptr) {
    dlclose(handle);
    return {};
  }
  const char* reason = dlerror();
  return "vCalendar text needs libical's library " +
         std::string(reason != nullptr ? reason : libraryName) +
         "; install libical 3 (in Debian libical3, or libical-dev for a build of your own)";
}

void keepVObjectLibrary() {
  static std::atomic<bool> kept = false;
  if (kept)
    return;
  void* handle = dlopen(libraryName, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
  if (handle == nullptr)
    return;
  kept = true;
  dlclose(handle);
}

}  // namespace ulo
