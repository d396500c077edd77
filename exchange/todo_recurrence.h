// Moves repeating to-dos.
#pragma once

#include "component_lines.h"
#include "todo_dates.h"

#include <cstddef>

namespace ulo {

// Dates in all EXDATE and RDATE of a to-do. With more, the next date is not computed.
constexpr std::size_t recurrenceDateLimit = 10'000;

// Whether the to-do has a recurrence rule or recurrence dates.
bool hasRecurrence(const ComponentLines& lines);

enum class NextDateResult { moved, lastDate, noRule, notComputed };
// Moves the dates of the to-do to the next one of its rule. Changes nothing unless it returns
// `moved`.
NextDateResult moveToNext(ComponentLines& lines, const DateReader& reader);

}  // namespace ulo
