#pragma once

#include <string>

namespace ulotask {

// Whether the C library finds a time zone for this value of TZ: a file of the system's table of
// zones, or a rule such as "CET-1CEST,M3.5.0,M10.5.0/3". It silently uses UTC for any other value.
// The empty value is valid and means UTC.
bool namesTimeZone(const std::string& value);

}  // namespace ulotask
