// Tests of modal dialogs.
#pragma once

#include "gui_test.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QTimer>

// Runs `open`, which opens a dialog of this class, and `work` on the dialog, which must close it.
template <typename Dialog, typename Open, typename Work> void inDialog(Open open, Work work) {
  bool came = false;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
    QWidget* const opened = QApplication::activeModalWidget();
    if (opened == nullptr)
      return;
    timer.stop();
    auto* dialog = qobject_cast<Dialog*>(opened);
    came = dialog != nullptr;
    if (came)
      work(*dialog);
    if (auto* left = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
      ADD_FAILURE() << "a dialog is still open";
      left->reject();
    }
  });
  timer.start(0);
  open();
  EXPECT_TRUE(came) << "no such dialog";
}

// Presses this key in the widget with the focus in the dialog.
inline auto pressing(Qt::Key key) {
  return [key](QDialog& dialog) {
    QWidget* focus = dialog.focusWidget();
    QTest::keyClick(focus != nullptr ? focus : &dialog, key);
  };
}
