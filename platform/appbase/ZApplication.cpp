#include "ZApplication.h"

#include "look.h"

#include <QLocale>
#include <QStyleFactory>

ZApplication::ZApplication(int& count, char** arguments) : QApplication(count, arguments) {
  const ulo::Theme theme = ulo::preferredTheme(palette());
  setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  setPalette(ulo::themePalette(theme));
  setLanguages(QLocale().uiLanguages());
}

void ZApplication::setLanguages(const QStringList& languages) {
  removeTranslator(&translator_);
  for (const QString& language : languages) {
    const QLocale locale(language);
    setLayoutDirection(locale.textDirection());
    // The texts in the sources are English.
    if (locale.language() == QLocale::English || locale.language() == QLocale::C)
      return;
    if (translator_.load(locale, QStringLiteral("ulo"), QStringLiteral("_"),
                         QStringLiteral(":/ulo/translations"))) {
      installTranslator(&translator_);
      return;
    }
  }
}
