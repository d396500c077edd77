#pragma once

// Marks the exported symbols of a shared library; all others are hidden.
#define ULO_EXPORT __attribute__((visibility("default")))
