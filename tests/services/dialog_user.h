#pragma once

#include <QList>
#include <QObject>
#include <QPixmap>
#include <QStringList>
#include <QTimer>

#include <functional>

namespace ulo {
class DeviceChooser;
class PushProgress;
}  // namespace ulo
class QWidget;
class ZMessageDlg;

// Sits before the screen: looks at the dialog that is up again and again, and does something.
class DialogUser : public QObject {
public:
  DialogUser();

  // "chooser", "progress" and the texts of messages, in the order in which they came up.
  QStringList seen;
  // The icons in their titles, in the same order.
  QList<QPixmap> icons;

  // What to do at each look. At first: take the marked device as soon as there is one, watch the
  // push, confirm messages.
  std::function<void(ulo::DeviceChooser&)> choose;
  std::function<void(ulo::PushProgress&)> watch;
  std::function<void(ZMessageDlg&)> read;

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void look();

  QTimer timer_;
};
