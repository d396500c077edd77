#include "program.h"

#include "checker.h"
#include "loop_planner.h"
#include "script/parser.h"

namespace ulo::odb {

std::unique_ptr<Program> makeProgram(std::string_view text, const Catalog& catalog) {
  auto program = std::make_unique<Program>();
  if (isScript(text))
    program->script = std::make_unique<Script>(parseScript(text));
  else
    program->statement = std::make_unique<Statement>(parseStatement(text));
  checkProgram(*program, catalog);
  if (program->script)
    planLoops(*program);
  return program;
}

}  // namespace ulo::odb
