// Starts the programs of others.
#pragma once

#include <QStringList>

#include <functional>

namespace ulo {

// Commands run in a session of their own, without standard input and output, and outlive this
// program. A program is looked for in PATH unless its name has a slash; one that can't be started
// is logged.

// Starts a command and forgets it.
[[nodiscard]] bool startCommand(const QStringList& command);

// Starts a command and returns; `ended` is called from the event loop of the main thread when it
// has ended, and never if there is no such loop or this isn't its thread. A failure of the command
// is logged.
[[nodiscard]] bool followCommand(const QStringList& command, const std::function<void()>& ended);

// Runs a command until it has ended, calls `ended`, and says whether it succeeded, which else is
// logged. In the main thread of an application events go on, but for the user's input; false, with
// the command followed on, when the application quits meanwhile.
[[nodiscard]] bool runCommand(const QStringList& command, const std::function<void()>& ended);

}  // namespace ulo
