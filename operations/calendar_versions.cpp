#include "calendar_versions.h"

#include "TASK_ENG_Ical.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace ulo {
namespace {

std::string_view viewOf(const QByteArray& bytes) {
  return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

bool isLineStart(std::string_view text, std::size_t at) {
  return at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
}

// Returns where the calendars of a text begin.
std::vector<std::size_t> calendarStarts(std::string_view text) {
  constexpr std::string_view begin = "BEGIN:VCALENDAR";
  const auto sameLetter = [](char a, char b) { return (a >= 'a' && a <= 'z' ? a - 32 : a) == b; };
  std::vector<std::size_t> starts;
  for (auto at = text.begin();;) {
    at = std::search(at, text.end(), begin.begin(), begin.end(), sameLetter);
    if (at == text.end())
      return starts;
    const auto position = static_cast<std::size_t>(at - text.begin());
    if (isLineStart(text, position))
      starts.push_back(position);
    at += static_cast<std::ptrdiff_t>(begin.size());
  }
}

// Removes everything but the line ends, so that the lines that follow keep their numbers.
void blank(QByteArray& text, std::size_t begin, std::size_t end) {
  char* const first = text.data() + begin;
  char* const last = text.data() + end;
  char* const kept = std::remove_if(first, last, [](char c) { return c != '\n' && c != '\r'; });
  text.remove(kept - text.data(), last - kept);
}

}  // namespace

std::vector<TextOfVersion> splitVersions(QByteArray text) {
  const auto versionOf = [](std::string_view part) {
    return TASK_ENG_Ical::isIcalendar(
               QByteArray::fromRawData(part.data(), static_cast<qsizetype>(part.size())))
               ? CalendarVersion::icalendar
               : CalendarVersion::vcalendar;
  };
  const std::vector<std::size_t> starts = calendarStarts(viewOf(text));
  std::vector<CalendarVersion> versions;
  versions.reserve(starts.size());
  for (const std::size_t start : starts)
    versions.push_back(versionOf(viewOf(text).substr(start)));
  const CalendarVersion first = versions.empty() ? versionOf(viewOf(text)) : versions.front();
  if (std::all_of(versions.begin(), versions.end(),
                  [=](CalendarVersion version) { return version == first; }))
    return {{first, std::move(text)}};
  const CalendarVersion other =
      first == CalendarVersion::vcalendar ? CalendarVersion::icalendar : CalendarVersion::vcalendar;
  std::vector<TextOfVersion> parts = {{first, text}, {other, std::move(text)}};
  for (TextOfVersion& part : parts) {
    // From the end, because the places of the other calendars must stay valid.
    for (std::size_t i = starts.size(); i-- > 0;) {
      if (versions[i] != part.version)
        blank(part.text, i == 0 ? 0 : starts[i],
              i + 1 < starts.size() ? starts[i + 1] : static_cast<std::size_t>(part.text.size()));
    }
  }
  return parts;
}

}  // namespace ulo
