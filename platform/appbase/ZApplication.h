// An application of the phone: its look, its language, and the wish to return to the idle screen.
#pragma once

#include "export.h"

#include <QApplication>
#include <QTranslator>

namespace ulo {

// Connects the signal askReturnToIdle(int) of the application object to a slot. Any application
// object may have the signal; without it nothing happens. Connecting twice is the same as once.
ULO_EXPORT void connectReturnToIdle(QObject* receiver, const char* slot);

}  // namespace ulo

class ULO_EXPORT ZApplication : public QApplication {
  Q_OBJECT

public:
  // Takes the palette of the preferred theme and the texts of the user's language. The arguments
  // must outlive the object.
  ZApplication(int& count, char** arguments);

  // Uses the first of these languages ("de", "zh-CN", "en-GB") that there are texts for, and its
  // direction; English if there are none. Screens that are already built keep their texts.
  void setLanguages(const QStringList& languages);

  // Asks every screen to give way to the idle screen.
  void returnToIdle(int reason = 0) { Q_EMIT askReturnToIdle(reason); }

Q_SIGNALS:
  void askReturnToIdle(int reason);

private:
  QTranslator translator_;
};
