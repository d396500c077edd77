#pragma once

#include <string>

namespace ulotask {

// Whether the C library finds a time zone for this value of TZ: a file of the system's table of
// zones, or a rule such as "CET-1CEST,M3.5.0,M10.5.0/3". It takes any other value for UTC and
// doesn't tell. The empty value is UTC.
bool namesTimeZone(const std::string& value);

}  // namespace ulotask
