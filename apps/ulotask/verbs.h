// The verbs of the command line, a source file for each group.
#pragma once

#include "verb.h"

namespace ulotask {

class Session;

// Each adds its verbs to `program`; a verb works on `session` when the command line names it.
void addListVerb(Verb& program, Session& session);       // list
void addSearchVerb(Verb& program, Session& session);     // search
void addShowVerb(Verb& program, Session& session);       // show
void addEditVerbs(Verb& program, Session& session);      // add, edit, done, undone, rm
void addExchangeVerbs(Verb& program, Session& session);  // import, export
void addIcalVerbs(Verb& program, Session& session);      // ical merge
void addCategoryVerbs(Verb& program, Session& session);  // category list, add, rename, rm
void addStatsVerb(Verb& program, Session& session);      // stats
void addChangeVerbs(Verb& program, Session& session);    // changes
void addSyncVerbs(Verb& program, Session& session);      // sync-item get, put, replace, rm, ids
void addWatchVerb(Verb& program, Session& session);      // watch
void addLockVerbs(Verb& program, Session& session);      // lock set, clear, status
void addDatabaseVerbs(Verb& program, Session& session);  // db explain, check, backup, ...

}  // namespace ulotask
