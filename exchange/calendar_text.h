// A calendar text as a sequence of pieces: its components, and the lines around and between them.
// Without changes, the pieces together are the text, byte for byte.
#pragma once

#include <QByteArray>

#include <cstddef>
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

struct Piece {
  std::size_t begin = 0;  // in the text, unless `isOwn`
  std::size_t size = 0;
  std::size_t line = 0;  // number of its first line in the text; 0 if it was added or replaced
  int calendar = -1;
  PieceKind kind = PieceKind::outside;
  bool isOwn = false;
  QByteArray own;  // replaces the bytes of the text
};

enum class TextFailure { none, notCalendar, truncated, tooLarge };

struct TextFault {
  std::size_t line = 0;
  std::string text;
};
// Faults listed for a text; further ones are only counted.
constexpr std::size_t listedFaults = 100;

class CalendarText {
public:
  // A to-do of the text; numbers are those of pieces.
  struct Todo {
    std::size_t piece = 0;
    std::vector<std::size_t> overrides;
  };
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
  // Those of calendars with version 2.0, in the order of the text. None after a failure.
  [[nodiscard]] const std::vector<Todo>& todos() const { return todos_; }
  [[nodiscard]] const std::vector<Piece>& pieces() const { return pieces_; }
  [[nodiscard]] int otherComponents() const { return otherComponents_; }
  // Returns the piece with the VTIMEZONE of this name that a component of the calendar uses, or
  // null.
  [[nodiscard]] const Piece* zonePiece(int calendar, std::string_view id) const;

  // Valid until the piece is replaced.
  [[nodiscard]] std::string_view bytes(const Piece& piece) const;
  void replace(std::size_t piece, QByteArray bytes);

  [[nodiscard]] QByteArray text() const;
  // Returns a calendar with this to-do, its overrides, and the time zones that these use.
  [[nodiscard]] QByteArray text(const Todo& todo) const;

  // Appends a to-do, the bytes of one or more VTODO components, to the last calendar of
  // version 2.0. Begins a new calendar at the end of the text if there is none.
  void append(const std::vector<QByteArray>& components);
  // Appends a time zone to the same calendar. Returns false if that has one with this name.
  bool appendZone(const std::string& id, const QByteArray& component);

  // The line end of the text: that of its first line.
  [[nodiscard]] const std::string& lineEnd() const { return lineEnd_; }

private:
  class Scan;

  CalendarText() = default;

  // Inserts a component at the end of a calendar; returns the number of its piece.
  std::size_t insert(int calendar, PieceKind kind, const QByteArray& bytes);
  int appendableCalendar();

  QByteArray source_;
  std::vector<Piece> pieces_;
  std::vector<Calendar> calendars_;
  std::vector<Todo> todos_;
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
