// The verbs of the command line, a source file for each group.
#pragma once

#include <CLI/CLI.hpp>

namespace ulotask {

class Session;

// Each adds its verbs to `app`; a verb works on `session` when the command line names it.
void addListVerbs(CLI::App& app, Session& session);      // list, search, show
void addEditVerbs(CLI::App& app, Session& session);      // add, edit, done, undone, rm
void addExchangeVerbs(CLI::App& app, Session& session);  // import, export
void addCategoryVerbs(CLI::App& app, Session& session);  // category list, add, rename, rm
void addStatsVerb(CLI::App& app, Session& session);      // stats
void addChangeVerbs(CLI::App& app, Session& session);    // changes
void addSyncVerbs(CLI::App& app, Session& session);      // sync-item get, put, replace, rm, ids
void addWatchVerb(CLI::App& app, Session& session);      // watch
void addLockVerbs(CLI::App& app, Session& session);      // lock set, clear, status
void addDatabaseVerbs(CLI::App& app, Session& session);  // db explain, check, backup, ...

}  // namespace ulotask
