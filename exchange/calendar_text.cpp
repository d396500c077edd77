#include "calendar_text.h"

#include "component_nesting.h"
#include "content_line.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ulo {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view productId = "-//ulotaskengine//ulotaskengine//EN";

bool isBlankText(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string valueOf(const RawLine& line) {
  std::string buffer;
  const std::optional<ContentLine> content = parseContentLine(unfolded(line, buffer));
  return content ? std::string(withoutBlanks(content->value)) : std::string();
}

// RFC 5545, section 3.7.4: the version, or the lowest and the highest one.
bool isVersion2(std::string_view value) {
  return value.substr(value.rfind(';') + 1) == "2.0";
}

std::string identifier(const RawLine& line) {
  bool isLatin1 = false;
  return textOfValue(valueOf(line), isLatin1).toStdString();
}

// Returns the first UID of a to-do that is not empty.
std::string uidOf(std::string_view todo) {
  LineSplitter splitter(todo);
  ComponentNesting nesting;
  RawLine line;
  while (splitter.next(line)) {
    const NestingStep step = nesting.take(line);
    if (step.kind == NestingStep::begins)
      nesting.open(step.value, line.number);
    else if (step.kind == NestingStep::ends)
      nesting.close(step.closes);
    else if (nesting.depth() == 1 && sameName(step.name, "UID"))
      if (std::string uid = identifier(line); !uid.empty())
        return uid;
  }
  return {};
}

}  // namespace

// Splits a text into pieces in one pass.
class CalendarText::Scan {
public:
  explicit Scan(CalendarText& text) : text_(text), source_(viewOf(text.source_)) {}

  void run() {
    if (source_.size() > calendarTextLimit) {
      stop(TextFailure::tooLarge, 0,
           "the text has more than " + std::to_string(calendarTextLimit >> 20) + " MiB");
      return;
    }
    const std::size_t start = source_.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
    LineSplitter splitter(source_.substr(start));
    RawLine line;
    while (text_.failure_ == TextFailure::none && splitter.next(line))
      take(line);
    if (text_.failure_ == TextFailure::none)
      finish();
  }

private:
  std::size_t offsetOf(const RawLine& line) const {
    return static_cast<std::size_t>(line.bytes.data() - source_.data());
  }
  bool isInCalendar() const { return nesting_.depth() > 0; }
  Calendar& calendar() { return text_.calendars_.back(); }

  void fault(std::size_t line, std::string what) {
    if (text_.faultCount_++ < listedFaults)
      text_.faults_.push_back({line, std::move(what)});
  }
  // The reason comes first, whatever else was found.
  void stop(TextFailure failure, std::size_t line, std::string why) {
    text_.failure_ = failure;
    text_.faults_.insert(text_.faults_.begin(), {line, std::move(why)});
    text_.faults_.resize(std::min(text_.faults_.size(), listedFaults));
    ++text_.faultCount_;
  }

  // Ends the current piece at an offset; the next one begins there.
  void cut(std::size_t end, PieceKind kind) {
    if (end == begin_)
      return;
    Piece piece;
    piece.begin = static_cast<std::uint32_t>(begin_);
    piece.size = static_cast<std::uint32_t>(end - begin_);
    piece.line = static_cast<std::uint32_t>(beginLine_);
    piece.kind = kind;
    piece.calendar =
        kind == PieceKind::outside ? -1 : static_cast<int>(text_.calendars_.size()) - 1;
    if (kind == PieceKind::calendarLines) {
      if (isBlankText(source_.substr(begin_, piece.size)))
        piece.kind = PieceKind::blank;
      else
        calendar().linePieces.push_back(text_.pieces_.size());
    }
    if (piece.kind >= PieceKind::todo)
      ++text_.components_;
    text_.pieces_.push_back(piece);
    begin_ = end;
  }

  void take(const RawLine& line) {
    if (nesting_.depth() > 1 && ++lines_ > componentLineLimit) {
      stop(TextFailure::tooLarge, beginLine_,
           "the component has more than " + std::to_string(componentLineLimit) + " lines");
      return;
    }
    const NestingStep step = nesting_.take(line);
    switch (step.kind) {
    case NestingStep::begins:
      begin(line, step);
      return;
    case NestingStep::ends:
      end(line, step);
      return;
    case NestingStep::strayEnd:
      if (isInCalendar())
        fault(line.number, "END without BEGIN is ignored");
      return;
    case NestingStep::property:
      property(line, step.name);
      return;
    }
  }

  void begin(const RawLine& line, const NestingStep& step) {
    if (!isInCalendar() && !sameName(step.value, "VCALENDAR"))
      return;
    if (nesting_.depth() == calendarNestingLimit) {
      stop(TextFailure::tooLarge, line.number,
           "components are nested deeper than " + std::to_string(calendarNestingLimit) + " levels");
      return;
    }
    if (nesting_.depth() == 0) {
      cut(offsetOf(line), PieceKind::outside);
      beginLine_ = line.number;
      text_.calendars_.emplace_back();
      hasVersion_ = false;
      firstPiece_ = text_.pieces_.size();
    } else if (nesting_.depth() == 1) {
      cut(offsetOf(line), PieceKind::calendarLines);
      beginLine_ = line.number;
      lines_ = 1;
      zone_.clear();
      isOverride_ = false;
      kind_ = sameName(step.value, "VTODO")       ? PieceKind::todo
              : sameName(step.value, "VTIMEZONE") ? PieceKind::timeZone
                                                  : PieceKind::other;
    }
    nesting_.open(step.value, line.number);
  }

  void end(const RawLine& line, const NestingStep& step) {
    const std::size_t left = nesting_.depth() - step.closes;
    // A component of a calendar that ends with the calendar is incomplete.
    if (step.closes > 1 && left == 0) {
      stop(TextFailure::truncated, nesting_.lineOf(1), "the component does not end");
      return;
    }
    if (step.closes > 1)
      fault(nesting_.lineOf(left + 1), "the component ends with the one around it");
    nesting_.close(step.closes);
    const std::size_t next = offsetOf(line) + line.bytes.size();
    if (left == 1) {
      finishComponent(next);
      beginLine_ = line.number + 1;
    } else if (left == 0) {
      cut(offsetOf(line), PieceKind::calendarLines);
      beginLine_ = line.number;
      calendar().endPiece = text_.pieces_.size();
      cut(next, PieceKind::calendarLines);
      beginLine_ = line.number + 1;
      finishCalendar();
    }
  }

  void property(const RawLine& line, std::string_view name) {
    if (nesting_.depth() == 1) {
      if (!hasVersion_ && sameName(name, "VERSION")) {
        hasVersion_ = true;
        calendar().isVersion2 = isVersion2(valueOf(line));
      }
    } else if (nesting_.depth() == 2 && kind_ == PieceKind::todo) {
      isOverride_ = isOverride_ || sameName(name, "RECURRENCE-ID");
    } else if (nesting_.depth() == 2 && kind_ == PieceKind::timeZone) {
      if (zone_.empty() && sameName(name, "TZID"))
        zone_ = identifier(line);
    }
  }

  void finishComponent(std::size_t end) {
    if (text_.components_ == componentLimit) {
      stop(TextFailure::tooLarge, beginLine_,
           "the text has more than " + std::to_string(componentLimit) + " components");
      return;
    }
    const std::size_t number = text_.pieces_.size();
    cut(end, kind_);
    if (kind_ == PieceKind::timeZone)
      calendar().zones.push_back({zone_, number});
    else if (kind_ == PieceKind::other)
      ++others_;
    else if (isOverride_)
      overrides_.emplace_back(number, uidOf(text_.bytes(text_.pieces_[number])));
  }

  void finishCalendar() {
    if (calendar().isVersion2)
      collectTodos();
    else
      others_ += static_cast<int>(std::count_if(
          text_.pieces_.begin() + static_cast<std::ptrdiff_t>(firstPiece_), text_.pieces_.end(),
          [](const Piece& piece) { return piece.kind == PieceKind::todo; }));
    std::stable_sort(calendar().zones.begin(), calendar().zones.end(),
                     [](const TimeZone& one, const TimeZone& other) { return one.id < other.id; });
    overrides_.clear();
  }

  // Lists the to-dos of the calendar and assigns its overrides to them.
  void collectTodos() {
    constexpr auto nobody = std::numeric_limits<std::size_t>::max();
    std::map<std::string_view, std::size_t> owners;
    for (const auto& [piece, uid] : overrides_)
      if (!uid.empty())
        owners.emplace(uid, nobody);
    const std::size_t before = text_.todos_.size();
    auto next = overrides_.begin();
    for (std::size_t piece = firstPiece_; piece < text_.pieces_.size(); ++piece) {
      if (text_.pieces_[piece].kind != PieceKind::todo)
        continue;
      if (next != overrides_.end() && next->first == piece) {
        ++next;
        continue;
      }
      text_.todos_.push_back(static_cast<std::uint32_t>(piece));
      if (owners.empty())
        continue;
      const auto owner = owners.find(uidOf(text_.bytes(text_.pieces_[piece])));
      if (owner != owners.end() && owner->second == nobody)
        owner->second = piece;
    }
    for (const auto& [piece, uid] : overrides_) {
      const auto owner = owners.find(uid);
      if (owner == owners.end() || owner->second == nobody)
        text_.todos_.push_back(static_cast<std::uint32_t>(piece));
      else
        text_.overrides_[owner->second].push_back(piece);
    }
    if (!overrides_.empty())
      std::sort(text_.todos_.begin() + static_cast<std::ptrdiff_t>(before), text_.todos_.end());
  }

  void finish() {
    if (isInCalendar()) {
      stop(TextFailure::truncated, nesting_.lineOf(nesting_.depth() - 1),
           "the component does not end");
      return;
    }
    cut(source_.size(), PieceKind::outside);
    text_.otherComponents_ = others_;
    if (std::none_of(text_.calendars_.begin(), text_.calendars_.end(),
                     [](const Calendar& one) { return one.isVersion2; }))
      text_.failure_ = TextFailure::notCalendar;
  }

  CalendarText& text_;
  std::string_view source_;
  ComponentNesting nesting_;
  std::size_t begin_ = 0;      // of the current piece
  std::size_t beginLine_ = 1;  // its number
  std::size_t lines_ = 0;      // of the current component
  bool hasVersion_ = false;    // of the current calendar
  PieceKind kind_ = PieceKind::outside;
  std::string zone_;         // name of the current component, if it is a time zone
  bool isOverride_ = false;  // the current component is one
  // Of the current calendar.
  std::size_t firstPiece_ = 0;
  std::vector<std::pair<std::size_t, std::string>> overrides_;  // with their UIDs
  int others_ = 0;
};

CalendarText::CalendarText(const QByteArray& text) : source_(text) {
  RawLine first;
  if (LineSplitter(viewOf(source_)).next(first) && !lineEndOf(first.bytes).empty())
    lineEnd_ = lineEndOf(first.bytes);
  Scan(*this).run();
  if (failure_ != TextFailure::none) {
    todos_.clear();
    overrides_.clear();
    calendars_.clear();
    pieces_.clear();
    Piece all;
    all.own = keep(source_);
    all.line = 1;
    pieces_.push_back(all);
  }
}

CalendarText CalendarText::empty() {
  CalendarText text;
  text.appendableCalendar();
  return text;
}

bool CalendarText::isIcalendar(std::string_view text) {
  if (text.starts_with(byteOrderMark))
    text.remove_prefix(byteOrderMark.size());
  LineSplitter splitter(text);
  ComponentNesting nesting;
  RawLine line;
  while (splitter.next(line)) {
    const NestingStep step = nesting.take(line);
    const std::size_t depth = nesting.depth();
    if (step.kind == NestingStep::begins) {
      if (depth == calendarNestingLimit || (depth == 0 && !sameName(step.value, "VCALENDAR")))
        return false;
      nesting.open(step.value, line.number);
    } else if (step.kind == NestingStep::ends) {
      if (step.closes == depth)
        return false;
      nesting.close(step.closes);
    } else if (depth == 0 && !isBlankText(line.bytes)) {
      return false;
    } else if (depth == 1 && sameName(step.name, "VERSION")) {
      return isVersion2(valueOf(line));
    }
  }
  return false;
}

const Piece* CalendarText::zonePiece(int calendar, std::string_view id) const {
  if (calendar < 0)
    return nullptr;
  const std::vector<TimeZone>& zones = calendars_[static_cast<std::size_t>(calendar)].zones;
  const auto found = std::lower_bound(
      zones.begin(), zones.end(), id,
      [](const TimeZone& zone, std::string_view wanted) { return zone.id < wanted; });
  return found != zones.end() && found->id == id ? &pieces_[found->piece] : nullptr;
}

std::string_view CalendarText::bytes(const Piece& piece) const {
  return piece.own != 0 ? viewOf(own_[piece.own - 1])
                        : viewOf(source_).substr(piece.begin, piece.size);
}

std::vector<std::size_t> CalendarText::piecesOf(std::size_t todo) const {
  std::vector<std::size_t> result = {todo};
  if (const auto found = overrides_.find(todo); found != overrides_.end())
    result.insert(result.end(), found->second.begin(), found->second.end());
  return result;
}

std::uint32_t CalendarText::keep(QByteArray bytes) {
  own_.push_back(std::move(bytes));
  return static_cast<std::uint32_t>(own_.size());
}

void CalendarText::replace(std::size_t piece, QByteArray bytes) {
  Piece& replaced = pieces_[piece];
  if (replaced.own != 0)
    own_[replaced.own - 1] = std::move(bytes);
  else
    replaced.own = keep(std::move(bytes));
  replaced.line = 0;
  changed_ = true;
}

QByteArray CalendarText::copyOf(const Piece& piece) const {
  const std::string_view view = bytes(piece);
  return {view.data(), static_cast<qsizetype>(view.size())};
}

CalendarText::Parts CalendarText::parts(std::size_t todo) const {
  Parts result;
  for (const std::size_t number : piecesOf(todo)) {
    const Piece& piece = pieces_[number];
    result.todo.push_back(copyOf(piece));
    for (std::string& id : zoneIdsIn(bytes(piece)))
      if (const Piece* zone = zonePiece(piece.calendar, id))
        result.zones.emplace_back(std::move(id), copyOf(*zone));
  }
  return result;
}

QByteArray CalendarText::text() const {
  if (!changed_)
    return source_;
  std::size_t size = 0;
  for (const Piece& piece : pieces_)
    size += bytes(piece).size();
  QByteArray result;
  result.reserve(static_cast<qsizetype>(size));
  for (const Piece& piece : pieces_)
    result.append(bytes(piece).data(), static_cast<qsizetype>(bytes(piece).size()));
  return result;
}

QByteArray CalendarText::text(std::size_t todo) const {
  const int number = pieces_[todo].calendar;
  const Calendar& calendar = calendars_[static_cast<std::size_t>(number)];
  std::vector<std::size_t> parts = piecesOf(todo);
  std::vector<std::string> zones;
  for (const std::size_t part : parts) {
    std::vector<std::string> more = zoneIdsIn(bytes(pieces_[part]));
    zones.insert(zones.end(), std::make_move_iterator(more.begin()),
                 std::make_move_iterator(more.end()));
  }
  std::sort(zones.begin(), zones.end());
  zones.erase(std::unique(zones.begin(), zones.end()), zones.end());
  for (const std::string& id : zones)
    if (const Piece* piece = zonePiece(number, id))
      parts.push_back(static_cast<std::size_t>(piece - pieces_.data()));

  if (calendars_.size() == 1 && parts.size() == components_)
    return text();
  parts.insert(parts.end(), calendar.linePieces.begin(), calendar.linePieces.end());
  std::sort(parts.begin(), parts.end());
  QByteArray result;
  for (const std::size_t part : parts) {
    const std::string_view added = bytes(pieces_[part]);
    result.append(added.data(), static_cast<qsizetype>(added.size()));
  }
  return result;
}

int CalendarText::appendableCalendar() {
  for (std::size_t i = calendars_.size(); i > 0; --i)
    if (calendars_[i - 1].isVersion2)
      return static_cast<int>(i - 1);
  const QByteArray end = QByteArray::fromStdString(lineEnd_);
  const auto addLines = [&](const QByteArray& lines) {
    Piece piece;
    piece.kind = PieceKind::calendarLines;
    piece.calendar = static_cast<int>(calendars_.size());
    piece.own = keep(lines);
    pieces_.push_back(piece);
  };
  const bool needsEnd = !source_.isEmpty() && lineEndOf(viewOf(source_)).empty();
  addLines((needsEnd ? end : QByteArray()) + "BEGIN:VCALENDAR" + end + "VERSION:2.0" + end +
           "PRODID:" + productId.data() + end);
  addLines("END:VCALENDAR" + end);
  Calendar calendar;
  calendar.isVersion2 = true;
  calendar.endPiece = pieces_.size() - 1;
  calendar.linePieces = {pieces_.size() - 2, pieces_.size() - 1};
  calendars_.push_back(std::move(calendar));
  changed_ = true;
  return static_cast<int>(calendars_.size()) - 1;
}

std::size_t CalendarText::insert(int calendar, PieceKind kind, const QByteArray& bytes) {
  Calendar& target = calendars_[static_cast<std::size_t>(calendar)];
  Piece piece;
  piece.kind = kind;
  piece.calendar = calendar;
  piece.own = keep(bytes);
  const std::size_t place = target.endPiece;
  pieces_.insert(pieces_.begin() + static_cast<std::ptrdiff_t>(place), piece);
  // Calendars that follow are of another version; nothing refers to their pieces.
  target.endPiece = target.linePieces.back() = place + 1;
  ++components_;
  changed_ = true;
  return place;
}

void CalendarText::append(const std::vector<QByteArray>& components) {
  const int calendar = appendableCalendar();
  const std::size_t todo = insert(calendar, PieceKind::todo, components.front());
  for (std::size_t i = 1; i < components.size(); ++i)
    overrides_[todo].push_back(insert(calendar, PieceKind::todo, components[i]));
  todos_.push_back(static_cast<std::uint32_t>(todo));
}

ZoneNames::Zones CalendarText::nameZones(const std::vector<NamedZone>& zones) {
  if (!zoneNames_) {
    zoneNames_.emplace();
    for (const TimeZone& zone : calendars_[static_cast<std::size_t>(appendableCalendar())].zones)
      zoneNames_->add({zone.id, copyOf(pieces_[zone.piece])});
  }
  return zoneNames_->take(zones);
}

void CalendarText::appendZone(const NamedZone& zone) {
  const auto& [id, component] = zone;
  const int calendar = appendableCalendar();
  const std::size_t piece = insert(calendar, PieceKind::timeZone, component);
  std::vector<TimeZone>& zones = calendars_[static_cast<std::size_t>(calendar)].zones;
  const auto place = std::upper_bound(
      zones.begin(), zones.end(), id,
      [](const std::string& one, const TimeZone& other) { return one < other.id; });
  zones.insert(place, {id, piece});
}

std::vector<std::string> zoneIdsIn(std::string_view component) {
  std::vector<std::string> result;
  LineSplitter splitter(component);
  RawLine line;
  std::string buffer;
  while (splitter.next(line)) {
    const std::string_view name = nameOf(line.bytes);
    if (!line.folded && (name.size() == line.bytes.size() || line.bytes[name.size()] == ':'))
      continue;  // without parameters
    const std::optional<ContentLine> content = parseContentLine(unfolded(line, buffer));
    if (!content || content->parameters.empty())
      continue;
    if (std::optional<std::string> id = parameter(content->parameters, "TZID"))
      result.push_back(std::move(*id));
  }
  std::sort(result.begin(), result.end());
  result.erase(std::unique(result.begin(), result.end()), result.end());
  return result;
}

}  // namespace ulo
