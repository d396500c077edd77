#include "lock_code.h"

#include <QStringEncoder>

#include <cstring>

namespace ulo {

void wipe(QString& text) {
  if (!text.isEmpty())
    explicit_bzero(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
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
  explicit_bzero(bytes_.data(), bytes_.size());
}

bool operator==(const LockCode& one, const LockCode& other) {
  return one.bytes_ == other.bytes_;
}

}  // namespace ulo
