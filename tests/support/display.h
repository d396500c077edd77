// A display of the test's own, with real keys.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <csignal>

#include <sys/prctl.h>

class Display {
public:
  // So many pixels wide and high.
  Display(int width, int height) {
    server_.setStandardErrorFile(QProcess::nullDevice());
    server_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    server_.start("Xvfb", {"-displayfd", "1", "-nolisten", "tcp", "-screen", "0",
                           QStringLiteral("%1x%2x24").arg(width).arg(height)});
    if (server_.waitForStarted() && server_.waitForReadyRead(patience))
      name_ = ":" + server_.readLine().trimmed();
  }
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  ~Display() {
    server_.kill();
    server_.waitForFinished();
  }

  // For $DISPLAY; empty when it did not start.
  [[nodiscard]] const QByteArray& name() const { return name_; }

  // Waits for a window whose title matches the regular expression and gives it the focus. False
  // when none comes up.
  [[nodiscard]] bool focus(const QString& title) const {
    return run({"search", "--sync", "--onlyvisible", "--name", title, "windowfocus", "--sync"});
  }
  // Presses keys of these names (XKeysymDB), or types a text.
  [[nodiscard]] bool press(const QStringList& keys) const { return run(QStringList{"key"} + keys); }
  [[nodiscard]] bool type(const QString& text) const { return run({"type", text}); }

private:
  static constexpr int patience = 30'000;  // milliseconds

  [[nodiscard]] bool run(const QStringList& arguments) const {
    QProcess tool;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", QString::fromLatin1(name_));
    tool.setProcessEnvironment(environment);
    tool.start("xdotool", arguments);
    if (!tool.waitForFinished(patience)) {
      tool.kill();
      tool.waitForFinished();
      return false;
    }
    return tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0;
  }

  QProcess server_;
  QByteArray name_;
};
