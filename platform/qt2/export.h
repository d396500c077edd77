#pragma once

// Marks what a shared library of this project offers to others; everything else is hidden.
#define ULO_EXPORT __attribute__((visibility("default")))
