// A message that the user confirms.
#pragma once

#include "ZPopup.h"

class ULO_EXPORT ZMessageDlg : public ZPopup {
  Q_OBJECT

public:
  enum Type : int {
    message = 2,   // one key, to confirm
    question = 3,  // two keys, yes and no
  };

  // Title and text are plain text of any length.
  ZMessageDlg(const QString& title, const QString& text, int type, QWidget* parent = nullptr);

  [[nodiscard]] QString text() const { return text_; }

private:
  QString text_;
};
