#include "dialog_user.h"

#include "ZMessageDlg.h"
#include "device_chooser.h"
#include "push_progress.h"

#include <QApplication>
#include <QTest>

DialogUser::DialogUser() {
  choose = [](ulo::DeviceChooser& chooser) {
    if (!chooser.chosen().address.isEmpty())
      QTest::keyClick(&chooser, Qt::Key_F1);
  };
  watch = [](ulo::PushProgress&) {};
  read = [](ZMessageDlg& message) { QTest::keyClick(&message, Qt::Key_F1); };
  connect(&timer_, &QTimer::timeout, this, &DialogUser::look);
  timer_.start(5);
  qApp->installEventFilter(this);
}

bool DialogUser::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Show && qobject_cast<QDialog*>(watched) != nullptr) {
    const auto* message = qobject_cast<ZMessageDlg*>(watched);
    seen << (qobject_cast<ulo::DeviceChooser*>(watched) != nullptr  ? QStringLiteral("chooser")
             : qobject_cast<ulo::PushProgress*>(watched) != nullptr ? QStringLiteral("progress")
             : message != nullptr                                   ? message->text()
                                                                    : QStringLiteral("?"));
    const auto* popup = qobject_cast<ZPopup*>(watched);
    icons << (popup != nullptr ? popup->titleIcon() : QPixmap());
  }
  return QObject::eventFilter(watched, event);
}

void DialogUser::look() {
  QWidget* const dialog = QApplication::activeModalWidget();
  if (auto* chooser = qobject_cast<ulo::DeviceChooser*>(dialog))
    choose(*chooser);
  else if (auto* progress = qobject_cast<ulo::PushProgress*>(dialog))
    watch(*progress);
  else if (auto* message = qobject_cast<ZMessageDlg*>(dialog))
    read(*message);
}
