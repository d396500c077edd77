#pragma once

#include "ZPopup.h"

class QProgressBar;
class ZWrappedText;

namespace ulo {

// How far a push is. Its one key, and everything else that closes a dialog, asks to cancel; it
// stays until it is told that the push has ended.
class PushProgress : public ZPopup {
  Q_OBJECT

public:
  // Names from outside: of any length.
  PushProgress(const QString& object, const QString& device, QWidget* parent = nullptr);

  void showConnecting();
  void showOffering();
  // Bytes. Where the size is 0 it isn't known.
  void showSending(quint64 transferred, quint64 size);
  // The end is on its way; nothing is left to cancel.
  void showLeaving();

public Q_SLOTS:
  void accept() override {}
  void reject() override { Q_EMIT cancelWanted(); }

  // Closes it.
  void end() { done(Accepted); }

Q_SIGNALS:
  void cancelWanted();

private:
  void showBusy(const QString& phase);

  QProgressBar* bar_;
  ZWrappedText* phase_;
};

}  // namespace ulo
