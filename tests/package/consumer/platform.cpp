// A program that uses the platform alone.
#include <UTIL_TimeConversion.h>
#include <cstdio>
#include <ulo/data_directory.h>

int main() {
  std::printf("platform: %s, %ld\n", ulo::dataDirectory().c_str(),
              static_cast<long>(UTIL_TimeConversion::fromISO8601("19700101T000001Z")));
}
