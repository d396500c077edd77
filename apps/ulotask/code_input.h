// Reads a secret from the user.
#pragma once

#include "lock_code.h"

#include <memory>

namespace ulotask {

// Reads the next line of standard input; from a terminal, after `prompt` and without echo. No other
// copy of the code stays in memory. Throws a Failure if there is no input, or if it is not UTF-8 or
// longer than a code can be.
std::unique_ptr<ulo::LockCode> readCode(const char* prompt);

// Whether standard input is a terminal, where a new code should be entered twice.
bool isTyped();

}  // namespace ulotask
