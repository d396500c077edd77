// The signals with which a session, a terminal or a user ends a program.
#pragma once

#include <QObject>

#include <array>

#include <csignal>

class QWidget;

namespace tasks {

// SIGHUP, SIGINT and SIGTERM close the window, which saves what is being edited, unless they are
// ignored, as by nohup. The second signal of a kind ends the program at once. There can be only one
// object at a time.
class EndSignals : public QObject {
public:
  explicit EndSignals(QWidget& window);
  ~EndSignals() override;

  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

private:
  std::array<struct sigaction, 3> former_{};
};

}  // namespace tasks
