#include "uuid.h"

#include <QByteArray>
#include <QRandomGenerator>
#include <QtEndian>

#include <cstdlib>
#include <cstring>

// random() starts with the same seed in every process. UUIDs of different processes differ in their
// last 16 digits, which contain random bytes from the system.
QString generateUuid() {
  srandom(static_cast<unsigned int>(random()));
  const auto first = static_cast<quint32>(random());
  const auto second = static_cast<quint16>(random());
  const auto third = static_cast<quint16>(random());

  // Qt has other sources if the kernel's call for random bytes fails.
  const quint64 fromSystem = QRandomGenerator::system()->generate64();
  char bytes[16];
  qToBigEndian(first, bytes);
  qToBigEndian(second, bytes + 4);
  qToBigEndian(third, bytes + 6);
  std::memcpy(bytes + 8, &fromSystem, sizeof fromSystem);
  for (int i = 8; i < 16; ++i)
    bytes[i] = static_cast<char>(bytes[i] ^ ((random() >> 7) & 0xff));

  QByteArray text = QByteArray::fromRawData(bytes, sizeof bytes).toHex();
  for (const int place : {8, 13, 18, 23})
    text.insert(place, '-');
  return QString::fromLatin1(text);
}
