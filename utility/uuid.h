#pragma once

#include <QString>

// A new identity of a task: 36 characters, lower-case hexadecimal digits in groups of 8, 4, 4, 4
// and 12 joined by "-" (the text form of RFC 4122, without its version and variant bits).
QString generateUuid();
