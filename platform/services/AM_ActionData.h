// Asks another application to do something.
#pragma once

#include "export.h"

#include <QMap>
#include <QString>

// A request: which application, what it is to do, and named values for that.
//
// Applications are known by UUID. The launch table is $XDG_CONFIG_HOME/ulo/applications.conf, in
// the form of desktop entries (Desktop Entry Specification 1.5):
//
//   [{220072c6-9008-468e-9968-11f3c50fa95e}]
//   Exec=thunderbird -compose attachment=%f
//   Wait=true
//
// In Exec, %f stands for the path in the value "Files" and %s for the value "Subject", each one
// argument whatever is in it; %% for %. No shell is involved. Wait says that the command runs until
// the user has done with the request. The message composer is known without an entry: it is
// `xdg-email --utf8 --attach %f`, which does not wait. The synchroniser, which brings the tasks in
// line with those of other devices when it is started, is there only with an entry.
//
// A command has a session of its own, without standard input and output, and lives on when this
// program ends.
//
// With the value "AutoDelete" set to "Yes" the file of "Files" is temporary. It goes when a command
// with Wait has ended and the event loop of this program's main thread, which asked, sees it;
// otherwise, since the application may still read it, with the first request of any program that
// comes a day or more later.
class ULO_EXPORT AM_ActionData {
public:
  // The message composer.
  static constexpr char composer[] = "{220072c6-9008-468e-9968-11f3c50fa95e}";
  // The sync engine.
  static constexpr char synchroniser[] = "{1e18dc2d-f4f1-4653-bec5-fd4591927127}";

  void setOpenAppUuid(const QString& uuid) { application_ = uuid; }
  void setAction(const QString& action) { action_ = action; }
  void setValue(const QString& name, const QString& value) { values_[name] = value; }
  [[nodiscard]] QString openAppUuid() const { return application_; }
  [[nodiscard]] QString action() const { return action_; }
  // Null for a name without a value.
  [[nodiscard]] QString value(const QString& name) const { return values_.value(name); }

  // Whether there is such an application: a well-formed entry of the launch table, or one that is
  // known without. Of a wrong entry the log says why it doesn't count. Whether its program can be
  // started shows when it is.
  [[nodiscard]] bool isAvailable() const;

  // Starts the application; with `wait`, returns when its command has ended, and until then takes
  // no input in the main thread. False when there is no such application, it can't be started, or,
  // after waiting, it failed; the log says which.
  bool invoke(bool wait);

private:
  QString application_;
  QString action_;
  QMap<QString, QString> values_;
};
