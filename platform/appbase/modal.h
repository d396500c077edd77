#pragma once

#include <QDialog>
#include <QPointer>

#include <utility>

namespace ulo {

// A dialog that goes with this object, or before with its parent, which may be closed and deleted
// while the dialog is open.
template <typename Dialog> class Modal {
public:
  // Takes what a Dialog is made of.
  template <typename... Arguments>
  explicit Modal(Arguments&&... arguments)
      : dialog_(new Dialog(std::forward<Arguments>(arguments)...)) {}
  Modal(const Modal&) = delete;
  Modal& operator=(const Modal&) = delete;
  ~Modal() { delete dialog_.data(); }

  // Shows the dialog until the user is done. False when it was rejected or is gone; when gone,
  // nothing of its parent may be touched.
  bool exec() { return dialog_->exec() == QDialog::Accepted && isThere(); }
  [[nodiscard]] bool isThere() const { return !dialog_.isNull(); }
  Dialog* operator->() const { return dialog_; }
  // Null when it is gone.
  [[nodiscard]] Dialog* get() const { return dialog_; }

private:
  QPointer<Dialog> dialog_;
};

}  // namespace ulo
