// Asks for the code of the application lock.
#pragma once

#include "ZPopup.h"
#include "app_lock.h"

#include <QTimer>

class QLineEdit;
class ZWrappedText;

// Accepted once the right code was given. While a wrong one makes the next wait, the dialog counts
// the seconds and its OK key is dead.
class LockDialog : public ZPopup {
  Q_OBJECT

public:
  // The lock must outlive the dialog.
  explicit LockDialog(ulo::AppLock& lock, QWidget* parent = nullptr);

  // What the dialog says above the code.
  [[nodiscard]] QString message() const;

public Q_SLOTS:
  // Looks at the code; the dialog stays open unless it is the right one.
  void accept() override;

private:
  void say(const QString& text, std::chrono::milliseconds wait);
  void countDown();

  ulo::AppLock& lock_;
  ZWrappedText* message_;
  QLineEdit* code_;
  QTimer second_;
};
