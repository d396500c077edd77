// Guard of the vObject library. On many ordinary texts the library hangs, crashes or gives up. The
// guard reads them by the rules of vCalendar 1.0 and RFC 2045 and passes only text to the library
// that the library reads correctly. It changes the form of a text only, never a name, a value or a
// declared character set.
//
// The library has one parser state per process and crashes if two threads use it. Callers must
// ensure that only one thread at a time parses or writes.
#pragma once

#include "ulo/export.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// Why a text has no readable to-do.
enum class TextProblem {
  none,         // at least one to-do is readable
  unreadable,   // not a regular file, or it cannot be opened or read
  notCalendar,  // contains no VCALENDAR
  noTodo,       // a complete calendar without a VTODO
  truncated,    // a BEGIN without its END: the text is truncated
  malformed,    // components nested deeper than `nestingLimit`
};

// A property larger than propertyLimit, which is omitted.
struct LargeProperty {
  std::string name;
  std::size_t line = 0;  // from 1
};

// Why a part of a text is not passed on as it is.
enum class Repair {
  rewritten,   // passed on in another form
  missingEnd,  // a nested component without its END: it ends with the component around it
  // All others are omitted.
  noValue,
  noForm,             // the library has no form for the value
  propertyTooLong,    // exceeds propertyLimit
  tooManyProperties,  // exceeds todoPropertyLimit
  todoTooLarge,       // exceeds todoLimit
  notProperty,        // a line without a colon or a valid name
  nestedComponent,    // within a to-do, with all its lines
  endWithoutBegin,
  outsideCalendar,
};
struct RepairNote {
  Repair repair = Repair::rewritten;
  std::size_t line = 0;  // from 1
  std::string property;  // its name, if the repair concerns one
};

struct TextReport {
  TextProblem problem = TextProblem::none;
  std::size_t line = 0;   // the line with the problem, from 1; 0 if it is not a single line
  std::size_t todos = 0;  // readable to-dos; 0 if the text is not read at all
  std::vector<LargeProperty> tooLarge;  // among the properties of to-dos
  // The first loggedLimit repairs and the number of further ones. None for a text that is clean or
  // rejected, or was only examined.
  std::vector<RepairNote> repairs;
  std::size_t moreRepairs = 0;
};

// Limits. Texts that exceed them are read without the part that is too large.

// Bytes of a property with all of its lines, as they are in the text. A note that the store
// accepts needs far less, in any encoding.
constexpr std::size_t propertyLimit = std::size_t{4} << 20;
// Bytes of a property's name and parameters.
constexpr std::size_t headerLimit = 8192;
// Bytes of one to-do passed to the library.
constexpr std::size_t todoLimit = std::size_t{16} << 20;
// Properties read per to-do; the library accepts 490 in total.
constexpr std::size_t todoPropertyLimit = 200;
// Nesting depth of components; real calendars have three levels.
constexpr std::size_t nestingLimit = 32;
// Bytes outside any calendar, such as those of an enclosing mail, before a text is rejected.
constexpr std::size_t strayLimit = std::size_t{1} << 20;
// Repairs reported and logged per text; further ones are only counted.
constexpr std::size_t loggedLimit = 20;
// Bytes of repaired text kept in memory. If the pieces of a text exceed it, another scan makes them
// when they are requested.
constexpr std::size_t keptLimit = std::size_t{32} << 20;

// Reports what a file, or a text in memory, contains. Logs nothing.
[[nodiscard]] ULO_EXPORT TextReport examineFile(const std::string& path);
[[nodiscard]] ULO_EXPORT TextReport examineText(std::string_view text);

// A text prepared for the library. It is scanned when the object is created. At the first part that
// needs repair, the scan starts over and makes the pieces on the way.
class ULO_EXPORT GuardedText {
public:
  // `properties` lists the to-do properties that the caller reads; the pieces contain no others. A
  // text in memory must outlive the object.
  static GuardedText fromFile(const std::string& path, std::vector<std::string> properties);
  // At most `kept` bytes of pieces are kept; see keptLimit.
  static GuardedText fromMemory(std::string_view text, std::vector<std::string> properties,
                                std::size_t kept = keptLimit);
  GuardedText(GuardedText&& other) noexcept;
  ~GuardedText();

  [[nodiscard]] const TextReport& report() const;
  // Returns true if the library reads the whole text correctly without changes.
  [[nodiscard]] bool isClean() const;
  // For a text that is not clean: sets `piece` to the next calendar for the library. Together the
  // pieces contain every to-do of the text in order; a calendar without to-dos results in one
  // piece. Returns false at the end, and immediately for a text that must not be read. Everything
  // omitted or rewritten is logged with its line number.
  bool nextPiece(std::string& piece);

private:
  struct __attribute__((visibility("hidden"))) State;
  explicit GuardedText(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

// If the vObject library cannot be opened, returns a sentence for users that names the reason and
// the package to install. Otherwise returns an empty text, and the library stays loaded.
[[nodiscard]] ULO_EXPORT std::string vObjectLibraryFailure();

// Keeps the vObject library loaded until the process exits, if it has been loaded: each unload
// leaks its name table.
ULO_EXPORT void keepVObjectLibrary();

}  // namespace ulo
