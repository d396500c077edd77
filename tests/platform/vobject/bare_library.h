// The vObject library without anything in front of it, linked directly: what tests compare with.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// One to-do as the library gives it: its properties in order, each as "NAME=value",
// "NAME[charset]=value" or, for an alarm, "DALARM{RUNTIME=..}=value".
using TodoProperties = std::vector<std::string>;

// The to-dos of the calendars in a text; nothing when the library rejects it. Only for text that
// the library survives.
std::optional<std::vector<TodoProperties>> parseBare(std::string_view text);

// The same through the guard: the text itself when it is clean, else its pieces. Nothing when the
// guard or the library rejects it.
std::optional<std::vector<TodoProperties>> parseGuarded(std::string_view text);

// The properties that parseGuarded asks for.
std::vector<std::string> guardedNames();

// Only the properties that guardedNames has, and of them only those with a value.
std::vector<TodoProperties> onlyGuarded(const std::vector<TodoProperties>& todos);
