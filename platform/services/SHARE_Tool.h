// Gives objects to other devices.
#pragma once

#include "export.h"
#include "qt2.h"

#include <QString>

class ULO_EXPORT SHARE_Tool {
public:
  struct OBJECT_INFO {
    QString name;         // as the receiver shall see it: any text, at best with an extension
    QString mimeType;     // of the object, such as "text/x-vCalendar"
    QString description;  // for people; may be empty
  };

  // Lets the user choose a device in reach and pushes the object to it over Bluetooth (OBEX Object
  // Push Profile) through the obexd of BlueZ, on the session's D-Bus. A dialog shows how far it is
  // and can cancel; messages say what went wrong. True once the object has been handed over, or
  // the transfer was under way and the user has been told of its end; false when it did not come to
  // a transfer: no adapter, no obexd, no device chosen, no connection. Each is logged.
  static bool shareByBt(const OBJECT_INFO& info, const QArray<char>& data);
};
