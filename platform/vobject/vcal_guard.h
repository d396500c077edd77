// Guard of the vObject library. The library never ends, crashes or gives up on many ordinary
// texts; the guard reads them by the rules of vCalendar 1.0 and RFC 2045 and offers the library
// only text that it reads right. It changes the form of a text, never the names, values or
// declared character sets of what the text says.
//
// The library keeps one parser state for the whole process: two threads in it crash. Callers see
// to it that one thread at a time parses or writes.
#pragma once

#include "export.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// Why no to-do can be read from a text.
enum class TextProblem {
  none,         // it holds at least one
  unreadable,   // no regular file, or it cannot be opened or read
  notCalendar,  // no VCALENDAR in it
  noTodo,       // a whole calendar without a VTODO
  truncated,    // a BEGIN without its END: the text was cut
  malformed,    // components nested deeper than `nestingLimit`
};

// A property beyond propertyLimit, which is left out.
struct LargeProperty {
  std::string name;
  std::size_t line = 0;  // from 1
};

struct TextReport {
  TextProblem problem = TextProblem::none;
  std::size_t line = 0;   // the line to blame, from 1; 0 when it is not a single line
  std::size_t todos = 0;  // to-dos that can be read; 0 for a text that is not read at all
  std::vector<LargeProperty> tooLarge;  // of the to-dos
};

// Limits of what is read. Texts beyond them are read without the part that is too large.
// A property with everything that belongs to it, as it stands in the text. The longest note that
// is stored needs 36 kB.
constexpr std::size_t propertyLimit = std::size_t{4} << 20;
// The name of a property with its parameters.
constexpr std::size_t headerLimit = 8192;
// All that one to-do hands to the library.
constexpr std::size_t todoLimit = std::size_t{16} << 20;
// Properties of one to-do that are read; the library takes 490 in all.
constexpr std::size_t todoPropertyLimit = 200;
// Components in one another; calendars in use have three.
constexpr std::size_t nestingLimit = 32;
// Bytes outside any calendar, as of a mail around it, until a text counts as noise.
constexpr std::size_t strayLimit = std::size_t{1} << 20;
// Lines of the log that one text may cause; the rest are counted.
constexpr std::size_t loggedLimit = 20;

// What the text of a file, or a text in memory, holds. Nothing is logged.
[[nodiscard]] ULO_EXPORT TextReport examineFile(const std::string& path);
[[nodiscard]] ULO_EXPORT TextReport examineText(std::string_view text);

// One text on its way to the library.
class ULO_EXPORT GuardedText {
public:
  // `properties` names the properties of a to-do that the caller reads: only these are in the
  // pieces. Memory texts must outlive the object.
  static GuardedText fromFile(const std::string& path, std::vector<std::string> properties);
  static GuardedText fromMemory(std::string_view text, std::vector<std::string> properties);
  GuardedText(GuardedText&& other) noexcept;
  ~GuardedText();

  [[nodiscard]] const TextReport& report() const;
  // The library reads the whole text right as it is.
  [[nodiscard]] bool isClean() const;
  // For a text that is not clean: sets `piece` to the next calendar for the library. All pieces
  // together hold every to-do of the text in its order; a calendar without any gives one piece.
  // False at the end, and at once for a text that must not be read at all. What was left out or
  // written anew is logged with its line.
  bool nextPiece(std::string& piece);

private:
  struct State;
  explicit GuardedText(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

// Keeps the vObject library loaded to the end of the process, once somebody has opened it: each
// time it is unloaded it leaves the memory of its name table behind.
ULO_EXPORT void keepVObjectLibrary();

}  // namespace ulo
