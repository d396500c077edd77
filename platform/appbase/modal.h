#pragma once

#include <QDialog>
#include <QPointer>

#include <utility>

namespace ulo {

// Owns a dialog. The dialog's parent may be closed and deleted while the dialog is open, which
// deletes the dialog, too.
template <typename Dialog> class Modal {
public:
  // Passes the arguments to the constructor of Dialog.
  template <typename... Arguments>
  explicit Modal(Arguments&&... arguments)
      : dialog_(new Dialog(std::forward<Arguments>(arguments)...)) {}
  Modal(const Modal&) = delete;
  Modal& operator=(const Modal&) = delete;
  ~Modal() { delete dialog_.data(); }

  // Shows the dialog until the user closes it. Returns false if it was rejected or deleted; if it
  // was deleted, its parent must not be used any more.
  bool exec() { return dialog_->exec() == QDialog::Accepted && isThere(); }
  [[nodiscard]] bool isThere() const { return !dialog_.isNull(); }
  Dialog* operator->() const { return dialog_; }
  // Null if it was deleted.
  [[nodiscard]] Dialog* get() const { return dialog_; }

private:
  QPointer<Dialog> dialog_;
};

}  // namespace ulo
