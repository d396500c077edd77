// The application object: its look, its language, and requests to return to the idle screen.
#pragma once

#include "ulo/export.h"

#include <QApplication>
#include <QTranslator>

namespace ulo {

// Connects the signal askReturnToIdle(int) of the application object to a slot. Does nothing if the
// application object has no such signal or is already connected to the slot.
ULO_EXPORT void connectReturnToIdle(QObject* receiver, const char* slot);

}  // namespace ulo

class ULO_EXPORT ZApplication : public QApplication {
  Q_OBJECT

public:
  // Sets the palette of the preferred theme and loads the texts of the user's language. The
  // arguments must outlive the object.
  ZApplication(int& count, char** arguments);

  // Uses the first of these languages ("de", "zh-CN", "en-GB") for which texts exist, and its text
  // direction; English if there are none. Screens that already exist keep their texts.
  void setLanguages(const QStringList& languages);

  // Asks every screen to return to the idle screen.
  void returnToIdle(int reason = 0) { Q_EMIT askReturnToIdle(reason); }

Q_SIGNALS:
  void askReturnToIdle(int reason);

private:
  QTranslator translator_;
};
