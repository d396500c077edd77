#include "fuzz_support.h"

#include "aplog.h"

#include <unistd.h>

void fuzz::prepare() {
  // Messages are still formatted, so that their arguments are checked too.
  libaplog_to_module_ptr = std::fopen("/dev/null", "w");
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  unsetenv("XDG_RUNTIME_DIR");
  constexpr char memory[] = "/dev/shm";
  if (access(memory, W_OK) == 0)
    setenv("TMPDIR", memory, 0);
}
