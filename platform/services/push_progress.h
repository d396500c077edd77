#pragma once

#include "ZPopup.h"

class QProgressBar;
class ZWrappedText;

namespace ulo {

// Shows the progress of a push. Its key, and any other way to close a dialog, only requests to
// cancel; the dialog stays open until end() is called.
class PushProgress : public ZPopup {
  Q_OBJECT

public:
  // The names may have any length.
  PushProgress(const QString& object, const QString& device, QWidget* parent = nullptr);

  void showConnecting();
  void showOffering();
  // In bytes. A size of 0 means unknown.
  void showSending(quint64 transferred, quint64 size);
  // The push is ending and can no longer be canceled.
  void showLeaving();

public Q_SLOTS:
  void accept() override {}
  void reject() override { Q_EMIT cancelWanted(); }

  // Closes the dialog.
  void end() { done(Accepted); }

Q_SIGNALS:
  void cancelWanted();

private:
  void showBusy(const QString& phase);

  QProgressBar* bar_;
  ZWrappedText* phase_;
};

}  // namespace ulo
