// A private display for a test, with real keys and a real mouse.
//
// Requires Xvfb, xdotool and ImageMagick's import. If one of them is missing or fails, throws
// std::runtime_error with the reason, which fails the test.
#pragma once

#include <QDeadlineTimer>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>
#include <QThread>

#include <csignal>
#include <functional>
#include <stdexcept>
#include <string>

#include <sys/prctl.h>

class Display {
public:
  // The size is in pixels. The display keeps running when its last program exits.
  Display(int width, int height) {
    server_.setStandardErrorFile(QProcess::nullDevice());
    server_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    server_.start("Xvfb", {"-displayfd", "1", "-noreset", "-nolisten", "tcp", "-screen", "0",
                           QStringLiteral("%1x%2x24").arg(width).arg(height)});
    if (!server_.waitForStarted())
      throw missing("Xvfb", server_);
    if (!server_.waitForReadyRead(patience))
      throw std::runtime_error("Xvfb does not get ready");
    name_ = ":" + server_.readLine().trimmed();
  }
  Display(const Display&) = delete;
  Display& operator=(const Display&) = delete;
  ~Display() {
    // On SIGTERM, the server deletes its socket.
    server_.terminate();
    if (!server_.waitForFinished(patience)) {
      server_.kill();
      server_.waitForFinished();
    }
  }

  // The value for $DISPLAY.
  [[nodiscard]] const QByteArray& name() const { return name_; }

  // Polls until the condition holds. Returns false on timeout.
  [[nodiscard]] static bool waitFor(const std::function<bool()>& condition) {
    const QDeadlineTimer end(patience);
    while (!condition()) {
      if (end.hasExpired())
        return false;
      QThread::msleep(10);
    }
    return true;
  }

  // Waits for a window whose title matches the regular expression and focuses it. Returns false on
  // timeout.
  [[nodiscard]] bool focus(const QString& title) const {
    return waitFor([&] {
      return run({"search", "--onlyvisible", "--name", title, "windowfocus", "--sync"});
    });
  }
  // Returns whether a window with a matching title exists now.
  [[nodiscard]] bool hasTitle(const QString& title) const {
    return run({"search", "--onlyvisible", "--name", title});
  }
  // Returns the number of visible windows and menus of a program.
  [[nodiscard]] int windows(const QString& program) const {
    QProcess tool;
    static_cast<void>(
        ends(tool, "xdotool", {"search", "--onlyvisible", "--class", u'^' + program + u'$'}));
    return static_cast<int>(tool.readAllStandardOutput().count('\n'));
  }

  // Presses keys by name (XKeysymDB), or types a text.
  [[nodiscard]] bool press(const QStringList& keys) const { return run(QStringList{"key"} + keys); }
  [[nodiscard]] bool type(const QString& text) const { return run({"type", text}); }

  [[nodiscard]] bool click(const QPoint& at) const {
    return run(to(at) + QStringList{"click", "1"});
  }
  // Presses the button and keeps it down.
  [[nodiscard]] bool hold(const QPoint& at) const {
    return run(to(at) + QStringList{"mousedown", "1"});
  }
  [[nodiscard]] bool moveTo(const QPoint& point) const { return run(to(point)); }
  [[nodiscard]] bool letGo() const { return run({"mouseup", "1"}); }
  // Moves in small steps with the button down, then releases it.
  [[nodiscard]] bool drag(const QPoint& from, const QPoint& end) const {
    constexpr int steps = 10;
    QStringList way = to(from) + QStringList{"mousedown", "1"};
    for (int step = 1; step <= steps; ++step)
      way += to(from + (end - from) * step / steps);
    return run(way + QStringList{"mouseup", "1"});
  }

  // Returns the pixels of a part of the screen, three bytes each; never empty.
  [[nodiscard]] QByteArray picture(const QRect& part) const {
    QProcess tool;
    const bool taken = ends(tool, "import",
                            {"-silent", "-window", "root", "-depth", "8", "-crop",
                             QStringLiteral("%1x%2+%3+%4")
                                 .arg(part.width())
                                 .arg(part.height())
                                 .arg(part.x())
                                 .arg(part.y()),
                             "rgb:-"});
    QByteArray pixels = tool.readAllStandardOutput();
    if (!taken || pixels.size() != qsizetype{3} * part.width() * part.height())
      throw std::runtime_error("cannot take a picture of the display: " +
                               tool.readAllStandardError().toStdString());
    return pixels;
  }

private:
  static constexpr int patience = 30'000;  // milliseconds

  static std::runtime_error missing(const char* program, const QProcess& process) {
    return std::runtime_error(std::string("cannot start ") + program + ": " +
                              process.errorString().toStdString() +
                              " (packaging/install-dependencies test installs it)");
  }

  static QStringList to(const QPoint& point) {
    return {"mousemove", QString::number(point.x()), QString::number(point.y())};
  }

  [[nodiscard]] bool run(const QStringList& arguments) const {
    QProcess tool;
    return ends(tool, "xdotool", arguments);
  }

  // Returns whether the program exits with 0.
  [[nodiscard]] bool ends(QProcess& tool, const char* program, const QStringList& arguments) const {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", QString::fromLatin1(name_));
    tool.setProcessEnvironment(environment);
    tool.start(program, arguments);
    if (!tool.waitForStarted())
      throw missing(program, tool);
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
