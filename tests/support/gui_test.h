// What tests of widgets share.
#pragma once

#include "RES_ICON_Reader.h"
#include "ZApplication.h"

#include <QMap>
#include <QString>
#include <QTest>
#include <QTranslator>

#include <ostream>

// The application of a program that is tested with ulo_gui_test.
inline ZApplication& application() {
  return *qobject_cast<ZApplication*>(qApp);
}

// Shows strings of Qt in the messages of a failed test.
inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}

// Whether a pixmap is the platform's icon of this name, as it is drawn beside text.
inline bool isIcon(const QPixmap& pixmap, const char* name) {
  const QPixmap icon = RES_ICON_Reader::getIcon(QLatin1String(name), true);
  return !icon.isNull() && pixmap.toImage() == icon.toImage();
}

// While the object lives, each text is shown as its id.
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

// Has everything done that was put off to the event loop, deletions among it.
inline void finishEvents() {
  QCoreApplication::processEvents();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  QCoreApplication::processEvents();
}
