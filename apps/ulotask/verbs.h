// The verbs of the command line, a source file for each group.
#pragma once

#include <CLI/CLI.hpp>

namespace ulotask {

class Session;

// Each adds its verbs to `app`; a verb works on `session` when the command line names it.
void addListVerbs(CLI::App& app, Session& session);      // list, show
void addEditVerbs(CLI::App& app, Session& session);      // add, done, undone, rm
void addExchangeVerbs(CLI::App& app, Session& session);  // import, export
void addDatabaseVerbs(CLI::App& app, Session& session);  // db explain, db check

}  // namespace ulotask
