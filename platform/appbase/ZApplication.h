// An application of the phone: its look, its language, and the wish to return to the idle screen.
#pragma once

#include "export.h"

#include <QApplication>
#include <QTranslator>

class ULO_EXPORT ZApplication : public QApplication {
  Q_OBJECT

public:
  // Takes the palette of the preferred theme and the texts of the user's language. The arguments
  // must outlive the object.
  ZApplication(int& count, char** arguments);

  // Speaks the first of these languages ("de", "zh-CN", "en-GB") that there are texts for;
  // English when there are none. Screens that stand keep their texts.
  void setLanguages(const QStringList& languages);

  // Asks every screen to give way to the idle screen.
  void returnToIdle(int reason = 0) { Q_EMIT askReturnToIdle(reason); }

Q_SIGNALS:
  void askReturnToIdle(int reason);

private:
  QTranslator translator_;
};
