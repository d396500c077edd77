// Sends objects to other devices.
#pragma once

#include "qt2.h"
#include "ulo/export.h"

#include <QString>

class ULO_EXPORT SHARE_Tool {
public:
  struct OBJECT_INFO {
    QString name;         // shown to the receiver: any text, preferably with an extension
    QString mimeType;     // for example "text/x-vCalendar"
    QString description;  // shown to the user; may be empty
  };

  // Lets the user choose a nearby device and pushes the object to it over Bluetooth (OBEX Object
  // Push Profile) through the obexd of BlueZ, on the D-Bus session bus. A dialog shows the progress
  // and can cancel; messages report errors. Returns true if the object was sent, or if a transfer
  // had started and the user has been told how it ended. Returns false if no transfer took place:
  // no adapter, no obexd, no device chosen, no connection. Each of these is logged.
  static bool shareByBt(const OBJECT_INFO& info, const QArray<char>& data);
};
