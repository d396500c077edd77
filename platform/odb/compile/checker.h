#pragma once

#include "program.h"

namespace ulo::odb {

// Resolves the names of a parsed program to variables, columns and tables, checks its types, and
// determines what each of its cursors does. Throws Failure with the position.
void checkProgram(Program& program, const Catalog& catalog);

}  // namespace ulo::odb
