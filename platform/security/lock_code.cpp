#include "lock_code.h"

#include <QStringEncoder>

#include <sodium.h>

namespace ulo {

void wipe(QString& text) {
  if (!text.isEmpty())
    sodium_memzero(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
  text.resize(0);
}

LockCode::LockCode(QString& text) {
  QString normal = text.normalized(QString::NormalizationForm_C);
  wipe(text);
  if (normal.size() <= most) {
    characters_ = static_cast<int>(normal.size());
    QStringEncoder encoder(QStringEncoder::Utf8, QStringEncoder::Flag::Stateless);
    size_ = static_cast<std::size_t>(encoder.appendToBuffer(bytes_.data(), normal) - bytes_.data());
  }
  wipe(normal);
}

LockCode::~LockCode() {
  sodium_memzero(bytes_.data(), bytes_.size());
}

bool operator==(const LockCode& one, const LockCode& other) {
  return sodium_memcmp(one.bytes_.data(), other.bytes_.data(), one.bytes_.size()) == 0;
}

}  // namespace ulo
