// The platform log: one stream for the whole process, and named ports that programs open to be
// told apart in it.
#pragma once

#include "export.h"

#include <cstdio>

extern "C" {

// Where log messages go. Null until a program opens a sink: messages then go to standard
// output. The stream belongs to whoever set it.
ULO_EXPORT extern FILE* libaplog_to_module_ptr;

// Opens the log port `name`. Gives a handle other than 0; each one is to be closed once.
ULO_EXPORT int _aplog_port_open_orig(const char* name, int flags);

// Closes a port. Closing 0 or a port that is not open does nothing.
ULO_EXPORT void _aplog_port_close_orig(int port);

// How many ports are open in this process.
ULO_EXPORT int ulo_log_open_ports(void);
}
