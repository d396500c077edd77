#include "foreign_text.h"

#include <QTextBoundaryFinder>

namespace ulo {

QString wholeLetters(const QString& text, qsizetype units) {
  if (units >= text.size())
    return text;
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  finder.setPosition(units);
  if (!finder.isAtBoundary())
    finder.toPreviousBoundary();
  if (finder.position() > 0)
    return text.first(finder.position());
  const bool insidePair = units > 0 && text[units].isLowSurrogate();
  return text.first(insidePair ? units - 1 : units);
}

QString oneLine(const QString& text, qsizetype limit) {
  QString line = text;
  line.removeIf([](QChar c) {
    const char16_t u = c.unicode();
    const bool turns = (u >= 0x202A && u <= 0x202E) || (u >= 0x2066 && u <= 0x2069) ||
                       u == 0x200E || u == 0x200F || u == 0x061C;
    return turns || (c.category() == QChar::Other_Control && !c.isSpace());
  });
  line = line.simplified();
  return line.size() <= limit ? line : wholeLetters(line, limit) + QChar(0x2026);
}

}  // namespace ulo
