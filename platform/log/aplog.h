// The platform log: one stream per process, and named ports that programs open to identify
// themselves.
#pragma once

#include "ulo/export.h"

#include <cstdio>

extern "C" {

// The stream for log messages. Null until a program opens a sink; until then messages go to
// standard output. Owned by whoever set it.
ULO_EXPORT extern FILE* libaplog_to_module_ptr;

// Opens the log port `name`. Returns a handle, which must be closed once; 0 if memory is exhausted.
ULO_EXPORT int _aplog_port_open_orig(const char* name, int flags);

// Closes a port. Ignores 0 and ports that are not open.
ULO_EXPORT void _aplog_port_close_orig(int port);

// Returns the number of open ports in this process.
ULO_EXPORT int ulo_log_open_ports(void);
}
