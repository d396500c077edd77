#include "category_name.h"

#include <QStringDecoder>
#include <QStringView>

#include <algorithm>
#include <string_view>

namespace {

// The first byte of all codes from U+D000 to U+DFFF, and the lowest second byte of a surrogate.
constexpr char leadOfHalf = '\xED';
constexpr unsigned char firstOfHalf = 0xA0;

bool isTrail(char byte, unsigned char first = 0x80) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= first && value < 0xC0;
}

void appendHalf(QByteArray& bytes, char16_t unit) {
  bytes += leadOfHalf;
  bytes += static_cast<char>(0x80U | (unit >> 6U & 0x3FU));
  bytes += static_cast<char>(0x80U | (unit & 0x3FU));
}

bool startsWithHalf(std::string_view bytes) {
  return bytes.size() >= 3 && bytes[0] == leadOfHalf && isTrail(bytes[1], firstOfHalf) &&
         isTrail(bytes[2]);
}

QChar takeHalf(std::string_view& bytes) {
  const unsigned int high = static_cast<unsigned char>(bytes[1]) & 0x3FU;
  const unsigned int low = static_cast<unsigned char>(bytes[2]) & 0x3FU;
  bytes.remove_prefix(3);
  return QChar(static_cast<char16_t>(0xD000U | high << 6U | low));
}

}  // namespace

QByteArray categoryNameBytes(const QString& name) {
  if (name.isValidUtf16())
    return name.toUtf8();
  QByteArray bytes;
  QStringView left(name);
  qsizetype wellFormed = 0;
  while (wellFormed < left.size()) {
    const QChar unit = left[wellFormed];
    if (unit.isHighSurrogate() && wellFormed + 1 < left.size() &&
        left[wellFormed + 1].isLowSurrogate()) {
      wellFormed += 2;
    } else if (unit.isSurrogate()) {
      bytes += left.first(wellFormed).toUtf8();
      appendHalf(bytes, unit.unicode());
      left = left.sliced(wellFormed + 1);
      wellFormed = 0;
    } else {
      ++wellFormed;
    }
  }
  return bytes + left.toUtf8();
}

QString categoryName(const char* bytes) {
  std::string_view left(bytes);
  // Most names.
  if (std::all_of(left.begin(), left.end(),
                  [](char byte) { return static_cast<unsigned char>(byte) < 0x80; }))
    return QString::fromLatin1(left.data(), static_cast<qsizetype>(left.size()));
  QString name("");
  while (!left.empty()) {
    if (startsWithHalf(left)) {
      name += takeHalf(left);
      continue;
    }
    std::size_t size = left.find(leadOfHalf, 1);
    while (size != std::string_view::npos && !startsWithHalf(left.substr(size)))
      size = left.find(leadOfHalf, size + 1);
    const std::string_view run = left.substr(0, size);
    // QString::fromUtf8 would drop a byte order mark at the beginning.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    name += QString(decoder(QByteArrayView(run.data(), static_cast<qsizetype>(run.size()))));
    left.remove_prefix(run.size());
  }
  return name;
}
