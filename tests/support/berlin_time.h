#pragma once

#include <cstdlib>
#include <ctime>

// A test program that includes this runs in the time zone of Berlin.
inline const bool isInBerlin = [] {
  setenv("TZ", "Europe/Berlin", 1);
  tzset();
  return true;
}();
