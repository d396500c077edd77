// The signals with which a session, a terminal or a user ends a program.
#pragma once

#include <QObject>

#include <array>

#include <csignal>

class QWidget;

namespace tasks {

// Closes the window on SIGHUP, SIGINT and SIGTERM, which saves open edits. Ignored signals stay
// ignored, so nohup works. A second signal of the same kind ends the program immediately. Only one
// object may exist at a time.
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
