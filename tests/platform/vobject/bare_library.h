// The vObject library without the guard, linked directly, for comparison.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The properties of a to-do as the library returns them, in order, each as "NAME=value",
// "NAME[charset]=value" or, for an alarm, "DALARM{RUNTIME=..}=value".
using TodoProperties = std::vector<std::string>;

// Returns the to-dos of the calendars in a text, or nothing if the library rejects it. The text
// must not crash the library.
std::optional<std::vector<TodoProperties>> parseBare(std::string_view text);

// Does the same through the guard: parses the text itself if it is clean, and its pieces otherwise.
// Returns nothing if the guard or the library rejects it.
std::optional<std::vector<TodoProperties>> parseGuarded(std::string_view text);

// The names that parseGuarded passes to the guard.
std::vector<std::string> guardedNames();

// Returns only the properties named in guardedNames that have a value.
std::vector<TodoProperties> onlyGuarded(const std::vector<TodoProperties>& todos);
