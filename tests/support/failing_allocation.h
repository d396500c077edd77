// Lets allocations fail. Replaces the program's operators new and delete.
#pragma once

#include <functional>

// Counts one allocation of this thread, and returns true if it must fail. For allocators other than
// operator new.
bool allocationFails();

// Runs `work`. The first `number` allocations that this thread makes in it succeed. The next one
// fails, and so do all further ones if `usedUp` is set. Returns true if any has failed.
bool withoutMemory(int number, bool usedUp, const std::function<void()>& work);
