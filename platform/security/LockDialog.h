// Asks for the application lock's code.
#pragma once

#include "ZPopup.h"
#include "app_lock.h"

#include <QTimer>

class QLineEdit;
class ZWrappedText;

// Accepted when the right code is entered. While the next attempt is delayed after a wrong one, the
// dialog counts down the seconds and its OK key is disabled.
class LockDialog : public ZPopup {
  Q_OBJECT

public:
  // The lock must outlive the dialog.
  explicit LockDialog(ulo::AppLock& lock, QWidget* parent = nullptr);

  // The message above the code field.
  [[nodiscard]] QString message() const;

public Q_SLOTS:
  // Checks the code. The dialog stays open unless the code is right.
  void accept() override;

private:
  void say(const QString& text, std::chrono::milliseconds wait);
  void countDown();

  ulo::AppLock& lock_;
  ZWrappedText* message_;
  QLineEdit* code_;
  QTimer second_;
};
