#include "uuid.h"

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <sys/random.h>

// random() starts with the same seed in every process. UUIDs of different processes differ in their
// last 16 digits, which contain random bytes from the kernel.
QString generateUuid() {
  srandom(static_cast<unsigned int>(random()));
  const auto first = static_cast<unsigned long>(random());
  const auto second = static_cast<unsigned long>(random() & 0xffff);
  const auto third = static_cast<unsigned long>(random() & 0xffff);

  unsigned char work[8] = {};
  // Eight bytes are returned completely or, if the kernel lacks the call, not at all.
  static_cast<void>(getrandom(work, sizeof work, 0));
  for (unsigned char& byte : work)
    byte = static_cast<unsigned char>(byte ^ ((random() >> 7) & 0xff));

  char text[37];
  std::snprintf(text, std::size(text), "%08lx-%04lx-%04lx-%02x%02x-%02x%02x%02x%02x%02x%02x", first,
                second, third, work[0], work[1], work[2], work[3], work[4], work[5], work[6],
                work[7]);
  return QString::fromLatin1(text);
}
