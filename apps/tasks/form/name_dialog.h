#pragma once

#include "ZPopup.h"

namespace tasks {

class LineField;

// Asks for the name of a new category, which must not be empty.
class NameDialog : public ZPopup {
  Q_OBJECT

public:
  explicit NameDialog(QWidget* parent);

  // Without surrounding blanks.
  [[nodiscard]] QString name() const;

public Q_SLOTS:
  void accept() override;

private:
  LineField* line_;
};

}  // namespace tasks
