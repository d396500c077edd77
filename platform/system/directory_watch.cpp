#include "ulo/directory_watch.h"

#include <string_view>
#include <utility>

#include <sys/inotify.h>
#include <unistd.h>

namespace ulo {

DirectoryWatch::DirectoryWatch(const std::string& directory, std::string prefix)
    : prefix_(std::move(prefix)), files_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
  if (files_.isOpen() && inotify_add_watch(files_.get(), directory.c_str(),
                                           IN_MODIFY | IN_ATTRIB | IN_CREATE | IN_MOVED_TO) < 0)
    files_.reset();
}

bool DirectoryWatch::sawChange() {
  alignas(inotify_event) char events[4096];
  bool changed = false;
  ssize_t size = 0;
  while ((size = read(files_.get(), events, sizeof events)) > 0) {
    for (const char* place = events; place < events + size;) {
      const auto* event = reinterpret_cast<const inotify_event*>(place);
      // An overflow event has no file name.
      changed = changed || event->len == 0 ||
                std::string_view(event->name).substr(0, prefix_.size()) == prefix_;
      place += sizeof(inotify_event) + event->len;
    }
  }
  return changed;
}

}  // namespace ulo
