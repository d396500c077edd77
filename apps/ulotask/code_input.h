// Takes a secret from the user.
#pragma once

#include "lock_code.h"

#include <memory>

namespace ulotask {

// From a terminal, after `prompt` and without showing what is typed; from anything else the next
// line of standard input. Nothing of it stays in the program but the code. A Failure when nothing
// comes, it is no UTF-8 or has more characters than a code can have.
std::unique_ptr<ulo::LockCode> readCode(const char* prompt);

// Whether standard input is a terminal, where a code is better asked for twice.
bool isTyped();

}  // namespace ulotask
