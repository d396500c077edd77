#include "uuid.h"

#include <QRandomGenerator>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

// random() starts with the same seed in every process. UUIDs of different processes differ in their
// last 16 digits, which contain random bytes from the system.
QString generateUuid() {
  srandom(static_cast<unsigned int>(random()));
  const auto first = static_cast<unsigned long>(random());
  const auto second = static_cast<unsigned long>(random() & 0xffff);
  const auto third = static_cast<unsigned long>(random() & 0xffff);

  // Qt has other sources if the kernel's call for random bytes fails.
  const quint64 fromSystem = QRandomGenerator::system()->generate64();
  unsigned char work[8];
  static_assert(sizeof work == sizeof fromSystem);
  std::memcpy(work, &fromSystem, sizeof work);
  for (unsigned char& byte : work)
    byte = static_cast<unsigned char>(byte ^ ((random() >> 7) & 0xff));

  char text[37];
  std::snprintf(text, std::size(text), "%08lx-%04lx-%04lx-%02x%02x-%02x%02x%02x%02x%02x%02x", first,
                second, third, work[0], work[1], work[2], work[3], work[4], work[5], work[6],
                work[7]);
  return QString::fromLatin1(text);
}
