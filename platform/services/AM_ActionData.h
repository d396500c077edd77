// Requests to other applications.
#pragma once

#include "ulo/export.h"

#include <QMap>
#include <QString>

// A request: the application to start, the action, and named values for it.
//
// Applications are identified by UUID. The launch table maps them to commands. It is the file
// ulo/applications.conf in $XDG_CONFIG_HOME and in the directories of $XDG_CONFIG_DIRS, in desktop
// entry format (Desktop Entry Specification 1.5). Of several groups with the same UUID, the first
// one of the first file counts:
//
//   [{220072c6-9008-468e-9968-11f3c50fa95e}]
//   Exec=mailer --compose --attach=%f
//   Wait=true
//
// In Exec, %f is replaced with the path in the value "Files", %s with the value "Subject", each
// within a single argument whatever it contains, and %% with %. No shell is involved. Wait=true
// means that the command runs until the user has finished with the request. The message composer
// needs no entry: its default is `xdg-email --utf8 --attach %f`, which does not wait. The sync
// engine, which synchronizes the tasks with other devices when it is started, is available only
// with an entry.
//
// A command runs in its own session, without standard input and output, and survives the end of
// this program.
//
// If "AutoDelete" is "Yes", the file named by "Files" is temporary. It is deleted when a command
// with Wait exits, provided that this program sees it: invoke() is waiting for it, or was called in
// the main thread, whose event loop is running. Otherwise the application may still be reading the
// file, so it is deleted by the first request made at least a day later, from any program.
class ULO_EXPORT AM_ActionData {
public:
  // The message composer.
  static constexpr char composer[] = "{220072c6-9008-468e-9968-11f3c50fa95e}";
  // The sync engine.
  static constexpr char synchronizer[] = "{1e18dc2d-f4f1-4653-bec5-fd4591927127}";

  void setOpenAppUuid(const QString& uuid) { application_ = uuid; }
  void setAction(const QString& action) { action_ = action; }
  void setValue(const QString& name, const QString& value) { values_[name] = value; }
  [[nodiscard]] QString openAppUuid() const { return application_; }
  [[nodiscard]] QString action() const { return action_; }
  // Returns null for a name without a value.
  [[nodiscard]] QString value(const QString& name) const { return values_.value(name); }

  // Returns true if the application has a well-formed entry in the launch table or is known without
  // one. The defect of a malformed entry is logged. Does not check that the program can be started.
  [[nodiscard]] bool isAvailable() const;

  // Starts the application. If `wait` is set, blocks until its command exits, during which the main
  // thread ignores user input. Returns false if the application is unknown, cannot be started, or,
  // when waiting, failed; the log says which.
  bool invoke(bool wait);

private:
  QString application_;
  QString action_;
  QMap<QString, QString> values_;
};
