#pragma once

#include <cstdlib>
#include <ctime>

// Sets the time zone of the test program to Europe/Berlin.
inline const bool isInBerlin = [] {
  setenv("TZ", "Europe/Berlin", 1);
  tzset();
  return true;
}();
