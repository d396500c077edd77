// A calendar text as a sequence of pieces: its components, and the lines around and between them.
// Without changes, the pieces together are the text, byte for byte.
#pragma once

#include "zone_names.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ulo {

// Limits of a text. One that exceeds them is kept, but not read.

// Bytes. 100,000 to-dos need less; the records of a larger text would not fit into the memory of a
// handheld.
constexpr std::size_t calendarTextLimit = std::size_t{64} << 20;
// Components of all calendars. Bounds the memory for texts of nothing but empty ones.
constexpr std::size_t componentLimit = 500'000;
// Content lines of a component with those nested in it. Bounds the memory for reading it.
constexpr std::size_t componentLineLimit = 250'000;
// Nesting depth of components. Real calendars have three levels.
constexpr std::size_t calendarNestingLimit = 32;

enum class PieceKind : unsigned char {
  outside,        // lines outside any calendar
  calendarLines,  // BEGIN, END and the properties of a calendar
  blank,          // only blank lines
  todo,
  timeZone,
  other,  // any other component of a calendar
};

// Small, because a text may have hundreds of thousands.
struct Piece {
  std::uint32_t begin = 0;  // in the text, unless it has other bytes
  std::uint32_t size = 0;
  std::uint32_t line = 0;  // number of its first line in the text; 0 if it was added or replaced
  std::int32_t calendar = -1;
  std::uint32_t own = 0;  // number, from 1, of the bytes that replace those of the text; 0 for none
  PieceKind kind = PieceKind::outside;
};
static_assert(calendarTextLimit <= UINT32_MAX);

enum class TextFailure { none, notCalendar, truncated, tooLarge };

struct TextFault {
  std::size_t line = 0;
  std::string text;
};
// Faults listed for a text; further ones are only counted.
constexpr std::size_t listedFaults = 100;

class CalendarText {
public:
  struct TimeZone {
    std::string id;
    std::size_t piece = 0;
  };
  struct Calendar {
    bool isVersion2 = false;
    std::size_t endPiece = 0;             // the line END:VCALENDAR
    std::vector<std::size_t> linePieces;  // of kind calendarLines
    std::vector<TimeZone> zones;          // in the order of the text
  };

  explicit CalendarText(const QByteArray& text);
  // A calendar without components.
  static CalendarText empty();

  static bool isIcalendar(std::string_view text);

  [[nodiscard]] TextFailure failure() const { return failure_; }
  [[nodiscard]] const std::vector<TextFault>& faults() const { return faults_; }
  [[nodiscard]] std::size_t faultCount() const { return faultCount_; }
  // The numbers of the pieces that are to-dos of calendars with version 2.0, in the order of the
  // text. None after a failure.
  [[nodiscard]] const std::vector<std::uint32_t>& todos() const { return todos_; }
  [[nodiscard]] const std::vector<Piece>& pieces() const { return pieces_; }
  // The numbers of the pieces of a to-do: `todo`, which is in todos(), and then its overrides.
  [[nodiscard]] std::vector<std::size_t> piecesOf(std::size_t todo) const;
  [[nodiscard]] int otherComponents() const { return otherComponents_; }
  // Returns the piece with the VTIMEZONE of this name that a component of the calendar uses, or
  // null.
  [[nodiscard]] const Piece* zonePiece(int calendar, std::string_view id) const;

  // Valid until the piece is replaced.
  [[nodiscard]] std::string_view bytes(const Piece& piece) const;
  void replace(std::size_t piece, QByteArray bytes);

  // The components that belong to a to-do.
  struct Parts {
    std::vector<QByteArray> todo;  // of the to-do itself and its overrides
    std::vector<NamedZone> zones;  // that these use
  };
  [[nodiscard]] Parts parts(std::size_t todo) const;

  [[nodiscard]] QByteArray text() const;
  // Returns a calendar with a to-do of todos(), its overrides, and the time zones that these use.
  [[nodiscard]] QByteArray text(std::size_t todo) const;

  // Appends a to-do, the bytes of its VTODO component and of those of its overrides, to the last
  // calendar of version 2.0. Begins a new calendar at the end of the text if there is none.
  void append(const std::vector<QByteArray>& components);
  // Returns which zones of a to-do the same calendar lacks, and under which names it has them.
  ZoneNames::Zones nameZones(const std::vector<NamedZone>& zones);
  // Appends a time zone that nameZones returned to the same calendar.
  void appendZone(const NamedZone& zone);

  // The line end of the text: that of its first line.
  [[nodiscard]] const std::string& lineEnd() const { return lineEnd_; }

private:
  class Scan;

  CalendarText() = default;

  // Inserts a component at the end of a calendar; returns the number of its piece.
  std::size_t insert(int calendar, PieceKind kind, const QByteArray& bytes);
  int appendableCalendar();
  [[nodiscard]] QByteArray copyOf(const Piece& piece) const;
  std::uint32_t keep(QByteArray bytes);

  QByteArray source_;
  std::vector<Piece> pieces_;
  std::vector<Calendar> calendars_;
  std::vector<QByteArray> own_;
  std::vector<std::uint32_t> todos_;
  std::map<std::size_t, std::vector<std::size_t>> overrides_;  // by their to-do
  std::optional<ZoneNames> zoneNames_;                         // of appendableCalendar()
  std::vector<TextFault> faults_;
  std::string lineEnd_ = "\r\n";
  TextFailure failure_ = TextFailure::none;
  std::size_t faultCount_ = 0;
  int otherComponents_ = 0;
  std::size_t components_ = 0;  // pieces that are components of calendars
  bool changed_ = false;
};

// Returns the names of the time zones in the TZID parameters of a component, sorted.
std::vector<std::string> zoneIdsIn(std::string_view component);

}  // namespace ulo
