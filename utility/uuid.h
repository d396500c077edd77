#pragma once

#include <QString>

// Returns a new UUID for a task: 36 characters, lower-case hexadecimal digits in groups of 8, 4, 4,
// 4 and 12 joined by "-" (the text form of RFC 4122, without its version and variant bits).
//
// A program may define this function itself; see CMakeLists.txt.
QString generateUuid();
