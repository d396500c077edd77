// The log texts in this file are contracts: see docs/compatibility.md.
#include "log_ports.h"

#include <atomic>

namespace {

struct LogPort {
  const char* name;
  std::atomic<int> handle;  // 0 while closed
};
constinit LogPort logPorts[] = {{"task_eng_port", 0}, {"task_ui_port", 0}};

}  // namespace

void openLogPorts(LogPlace place) {
  for (LogPort& port : logPorts) {
    if (port.handle != 0)
      continue;
    const int opened = _aplog_port_open_orig(port.name, 0);
    int closed = 0;
    if (!port.handle.compare_exchange_strong(closed, opened))
      _aplog_port_close_orig(opened);  // another thread has opened it first
    ULO_LOG_ERROR_AT(place, "After opening %s", port.name);
  }
}

void closeLogPorts(LogPlace place) {
  for (LogPort& port : logPorts) {
    if (const int opened = port.handle.exchange(0); opened != 0) {
      ULO_LOG_ERROR_AT(place, "Before closing %s", port.name);
      _aplog_port_close_orig(opened);
    }
  }
}
