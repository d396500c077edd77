// Helpers for tests of widgets.
#pragma once

#include "RES_ICON_Reader.h"
#include "ZApplication.h"

#include <QMap>
#include <QString>
#include <QTest>
#include <QTranslator>

#include <ostream>

// Returns the application of a test program built with ulo_gui_test.
inline ZApplication& application() {
  return *qobject_cast<ZApplication*>(qApp);
}

// Prints QStrings in the messages of failed tests.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

// Returns whether a pixmap is the platform's icon of this name, in the size for use beside text.
inline bool isIcon(const QPixmap& pixmap, const char* name) {
  const QPixmap icon = RES_ICON_Reader::getIcon(QLatin1String(name), true);
  return !icon.isNull() && pixmap.toImage() == icon.toImage();
}

// Shows each text as its id during its lifetime.
class TextsAsIds {
  class Translator : public QTranslator {
  public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    QString translate(const char*, const char* id, const char*, int) const override {
      return QStringLiteral("[%1]").arg(QLatin1String(id));
    }
  };
  Translator translator_;

public:
  TextsAsIds() { QCoreApplication::installTranslator(&translator_); }
  TextsAsIds(const TextsAsIds&) = delete;
  TextsAsIds& operator=(const TextsAsIds&) = delete;
  ~TextsAsIds() { QCoreApplication::removeTranslator(&translator_); }
};

// Processes all pending events, including deferred deletions.
inline void finishEvents() {
  QCoreApplication::processEvents();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QCoreApplication::processEvents();
}
