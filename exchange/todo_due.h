// Replaces the due date of a to-do.
#pragma once

#include "component_lines.h"
#include "todo_dates.h"

#include <cstdint>
#include <optional>

namespace ulo {

// Replaces DUE or DURATION unless they already mean this instant; removes them if there is none.
//
// DUE keeps its form if that can express the instant. It has the value type of DTSTART and is later
// (RFC 5545, section 3.8.2.3): a DTSTART that would not precede it moves as far as DUE. If that is
// not possible, a repeating to-do starts with its due date, and any other one loses DTSTART; alarms
// relative to DTSTART then are relative to DUE.
void replaceDue(ComponentLines& lines, const std::optional<std::int64_t>& due,
                const DateReader& reader);

}  // namespace ulo
