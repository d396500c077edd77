#include "object_file.h"

#include "foreign_text.h"
#include "module_log.h"
#include "well_formed.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace ulo {

namespace {

constexpr qsizetype fileNameLimit = 255;
// A longer suffix is part of the name, not an extension.
constexpr qsizetype extensionLimit = 32;

// Returns the longest beginning of `text`, which is valid UTF-16, that needs at most `limit` bytes
// of UTF-8 and does not split a letter.
QString beginning(const QString& text, qsizetype limit) {
  qsizetype units = 0;
  qsizetype bytes = 0;
  while (units < text.size()) {
    const bool pair = text[units].isHighSurrogate();
    const char16_t unit = text[units].unicode();
    bytes += pair ? 4 : unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
    if (bytes > limit)
      break;
    units += pair ? 2 : 1;
  }
  return wholeLetters(text, units);
}

std::unique_ptr<QTemporaryDir> makeDirectory() {
  for (const QString& place : {qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath()}) {
    if (!QDir::isAbsolutePath(place))
      continue;
    auto directory = std::make_unique<QTemporaryDir>(place + QStringLiteral("/ulo-push-XXXXXX"));
    if (directory->isValid())
      return directory;
    ULO_LOG_ERROR("No directory can be made in %s: %s", place.toUtf8().constData(),
                  directory->errorString().toUtf8().constData());
  }
  return nullptr;
}

}  // namespace

QString objectFileName(const QString& name) {
  // A file name must not contain an unpaired surrogate.
  QString safe = wellFormed(name, u'?');
  std::replace_if(
      safe.begin(), safe.end(),
      [](QChar c) { return c == u'/' || c.category() == QChar::Other_Control; }, u'_');
  const qsizetype dot = safe.lastIndexOf(u'.');
  QString extension = dot >= 0 ? safe.sliced(dot) : QString();
  if (extension.toUtf8().size() > extensionLimit)
    extension.clear();
  const QString stem = safe.first(safe.size() - extension.size());
  QString result = beginning(stem, fileNameLimit - extension.toUtf8().size()) + extension;
  const bool reserved =
      result.isEmpty() || result == QLatin1String(".") || result == QLatin1String("..");
  return reserved ? QString(std::max<qsizetype>(1, result.size()), u'_') : result;
}

ObjectFile::ObjectFile(const QString& name, QByteArrayView content) : directory_(makeDirectory()) {
  if (directory_ == nullptr)
    return;
  QFile file(directory_->filePath(objectFileName(name)));
  if (file.open(QFile::WriteOnly | QFile::NewOnly, QFile::ReadOwner | QFile::WriteOwner) &&
      file.write(content.data(), content.size()) == content.size() && file.flush())
    path_ = file.fileName();
  else
    ULO_LOG_ERROR("The object can't be written to %s: %s", file.fileName().toUtf8().constData(),
                  file.errorString().toUtf8().constData());
}

}  // namespace ulo
