// Starts external programs.
#pragma once

#include <QStringList>

#include <functional>

namespace ulo {

// Commands run in their own session, without standard input and output, and survive the end of this
// program. A program name without a slash is searched in PATH. A failure to start is logged.

// Starts a command without tracking it. Returns false if it cannot be started.
[[nodiscard]] bool startCommand(const QStringList& command);

// Starts a command and returns. `ended` is called from the main thread's event loop when the
// command exits, and never if there is no such loop or this is not the main thread. A failure of
// the command is logged.
[[nodiscard]] bool followCommand(const QStringList& command, const std::function<void()>& ended);

// Runs a command until it exits, calls `ended`, and returns whether it succeeded; a failure is
// logged. In the main thread of an application it processes all events except user input while
// waiting. If the application quits first, returns false and continues to track the command.
[[nodiscard]] bool runCommand(const QStringList& command, const std::function<void()>& ended);

}  // namespace ulo
