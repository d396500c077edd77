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

// Simulates a user: repeatedly looks at the current dialog and acts on it.
class DialogUser : public QObject {
public:
  DialogUser();

  // "chooser", "progress" and the texts of messages, in order of appearance.
  QStringList seen;
  // The icons of their titles, in the same order.
  QList<QPixmap> icons;

  // The actions at each look. By default: choose the selected device as soon as there is one, watch
  // the transfer, confirm messages.
  std::function<void(ulo::DeviceChooser&)> choose;
  std::function<void(ulo::PushProgress&)> watch;
  std::function<void(ZMessageDlg&)> read;

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void look();

  QTimer timer_;
};
