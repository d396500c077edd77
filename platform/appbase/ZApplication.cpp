#include "ZApplication.h"

#include "ulo/look.h"

#include <QLocale>
#include <QStyleFactory>

void ulo::connectReturnToIdle(QObject* receiver, const char* slot) {
  const QCoreApplication* application = QCoreApplication::instance();
  if (application != nullptr &&
      application->metaObject()->indexOfSignal("askReturnToIdle(int)") >= 0)
    QObject::connect(application, SIGNAL(askReturnToIdle(int)), receiver, slot,
                     Qt::UniqueConnection);
}

ZApplication::ZApplication(int& count, char** arguments) : QApplication(count, arguments) {
  const ulo::Theme theme = ulo::preferredTheme(palette());
  setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  setPalette(ulo::themePalette(theme));
  setLanguages(QLocale().uiLanguages());
}

void ZApplication::setLanguages(const QStringList& languages) {
  removeTranslator(&translator_);
  // The texts in the sources are in English.
  setLayoutDirection(Qt::LeftToRight);
  for (const QString& language : languages) {
    const QLocale locale(language);
    if (locale.language() == QLocale::English || locale.language() == QLocale::C)
      return;
    if (translator_.load(locale, QStringLiteral("ulo"), QStringLiteral("_"),
                         QStringLiteral(":/ulo/translations"))) {
      installTranslator(&translator_);
      setLayoutDirection(locale.textDirection());
      return;
    }
  }
}
