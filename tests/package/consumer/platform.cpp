// A program that uses the platform alone.
#include <UTIL_TimeConversion.h>
#include <cstdio>
#include <ulo/data_directory.h>

int main() {
  const QDateTime time = UTIL_TimeConversion::fromUTC(86400);
  std::printf("platform: %s, %ld\n", ulo::dataDirectory().c_str(),
              static_cast<long>(UTIL_TimeConversion::toUTC(time)));
}
