#pragma once

#include "program.h"

namespace ulo::odb {

// Finds the blocks that output a complete row, the loops whose conditions SQLite can check, and
// what those do. In a program that writes, finds only a loop that empties a table. Requires a
// checked program.
void planLoops(Program& program);

}  // namespace ulo::odb
