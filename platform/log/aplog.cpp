#include "aplog.h"

#include <mutex>
#include <new>
#include <set>

FILE* libaplog_to_module_ptr = nullptr;

namespace {

// Open ports, by handle. Never destroyed: static objects may still close ports.
struct Ports {
  std::mutex mutex;
  std::set<int> open;
  int last = 0;
};

Ports& ports() {
  static auto* instance = new Ports;
  return *instance;
}

}  // namespace

int _aplog_port_open_orig(const char*, int) try {
  Ports& all = ports();
  const std::lock_guard<std::mutex> lock(all.mutex);
  all.open.insert(++all.last);
  return all.last;
} catch (const std::bad_alloc&) {
  return 0;
}

void _aplog_port_close_orig(int port) {
  Ports& all = ports();
  const std::lock_guard<std::mutex> lock(all.mutex);
  all.open.erase(port);
}

int ulo_log_open_ports() {
  Ports& all = ports();
  const std::lock_guard<std::mutex> lock(all.mutex);
  return static_cast<int>(all.open.size());
}
